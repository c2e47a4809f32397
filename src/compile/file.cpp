#include "compile/file.h"

#include <unistd.h>

#include "platform/files/handle.h"
#include "platform/files/lookup.h"
#include "platform/substitutes/substitute.h"

namespace compile {
namespace {

using MaySpend = std::function<bool(size_t bytes)>;

SharedBytes ReadWhole(const std::string& path, size_t most, const MayHold& may_hold,
                      const MaySpend& may_spend) {
    int64_t size = 0;
    const int file = OpenRegularFile(path.c_str(), &size);
    if (file < 0) return nullptr;
    const auto wanted = static_cast<size_t>(size);
    const auto bytes = std::make_shared<ByteBlock>();
    const bool read = wanted <= most && may_spend(wanted) && (!may_hold || may_hold(wanted)) &&
                      bytes->Resize(wanted) && ReadFileAt(file, bytes->Data(), wanted, 0) == wanted;
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

Substitute Costs::Make(const std::vector<std::string>& paths, MediaKind kind, const MayHold& may_hold) {
    Substitute file = MakeSubstitute(paths, kind, {may_hold, &budget_});
    const std::lock_guard lock(mutex_);
    if (file.pBytes && !budget_.Spend(kind, file.path, file.nWork, file.bDecoded)) {
        file.pBytes = nullptr;
        file.bOverBudget = true;
    }
    return file;
}

bool Costs::SpendReading(MediaKind kind, const std::string& path, uint64_t bytes) {
    const std::lock_guard lock(mutex_);
    return budget_.Spend(kind, path, bytes, true);
}

SharedBytes LoadFile(const std::string& name, MediaKind kind, size_t most, const MayHold& may_hold,
                     Costs* costs) {
    const auto read = [&](const std::string& path) {
        return ReadWhole(path, most, may_hold,
                         [&](size_t bytes) { return !costs || costs->SpendReading(kind, path, bytes); });
    };
    const std::string found = FindNamed(name);
    if (!found.empty() && !IsForeign(found, name, kind)) return read(found);
    const std::vector<std::string> paths =
        found.empty() ? SubstitutePaths(name, kind) : std::vector<std::string>{found};
    const Substitute file =
        costs ? costs->Make(paths, kind, may_hold) : MakeSubstitute(paths, kind, {may_hold});
    return file.pBytes || file.path.empty() || file.bOverBudget ? file.pBytes : read(file.path);
}

}  // namespace compile
