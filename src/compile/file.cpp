#include "compile/file.h"

#include <unistd.h>

#include "platform/files/handle.h"
#include "platform/files/lookup.h"
#include "platform/substitutes/substitute.h"

namespace compile {
namespace {

SharedBytes ReadWhole(const std::string& path, size_t most, const MayHold& may_hold) {
    int64_t size = 0;
    const int file = OpenRegularFile(path.c_str(), &size);
    if (file < 0) return nullptr;
    const auto wanted = static_cast<size_t>(size);
    const auto bytes = std::make_shared<ByteBlock>();
    const bool read = wanted <= most && (!may_hold || may_hold(wanted)) && bytes->Resize(wanted) &&
                      ReadFileAt(file, bytes->Data(), wanted, 0) == wanted;
    close(file);
    return read ? bytes : nullptr;
}

// Whether the file of that name is converted when it is opened.
bool IsForeign(const std::string& path, const std::string& name, MediaKind kind) {
    int64_t size = 0;
    const int file = OpenRegularFile(path.c_str(), &size);
    if (file < 0) return false;
    BYTE head[kForeignHead];
    const size_t count = ReadFileAt(file, head, sizeof head, 0);
    close(file);
    return ForeignKind(head, count, name) == kind;
}

}  // namespace

SharedBytes LoadFile(const std::string& name, MediaKind kind, size_t most, const MayHold& may_hold) {
    const std::string found = FindNamed(name);
    if (!found.empty() && !IsForeign(found, name, kind)) return ReadWhole(found, most, may_hold);
    const std::vector<std::string> paths =
        found.empty() ? SubstitutePaths(name, kind) : std::vector<std::string>{found};
    const Substitute file = MakeSubstitute(paths, kind, {may_hold});
    return file.pBytes || file.path.empty() ? file.pBytes : ReadWhole(file.path, most, may_hold);
}

}  // namespace compile
