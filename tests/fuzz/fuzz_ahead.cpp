// Takes any bytes as files of other kinds in a package, and reads them alone and ahead: both must give the
// same. After one byte that chooses how they are named and opened, each file is a byte for its ending, two
// for its length, and its bytes.
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <string>
#include <vector>

#include "host/headless/headless.h"
#include "platform/files/files.h"
#include "platform/open.h"
#include "support/tempfolder.h"

extern "C" const char* __lsan_default_suppressions() {
    return "leak:libvorbis\nleak:libsndfile\n";
}

namespace {

constexpr const char* kEndings[] = {".ogg", ".flac", ".mp3", ".opus", ".wav", ".png", ".jpg", ".gif", ".bmp"};
constexpr int kMostFiles = 8;
constexpr size_t kMostBytes = size_t{4} << 20;  // of converted files; more takes long and finds nothing

struct Package {
    test::TempFolder folder;
    std::vector<std::string> names;
};

void Unpack(const uint8_t* data, size_t size, Package* package) {
    for (size_t at = 1; at + 3 <= size && package->names.size() < kMostFiles;) {
        const std::string stem = "f" + std::to_string(package->names.size());
        const std::string ending = kEndings[data[at] % std::size(kEndings)];
        const size_t length = std::min<size_t>(data[at + 1] | data[at + 2] << 8, size - at - 3);
        package->folder.Write(stem + ending, {reinterpret_cast<const char*>(data) + at + 3, length});
        package->names.push_back(package->folder.Path(stem + (data[0] & 8   ? ending
                                                              : data[0] & 1 ? ".bmp"
                                                                            : ".wav")));
        at += 3 + length;
    }
    package->names.push_back(package->folder.Path("missing.wav"));
}

std::string Content(const std::string& name) {
    FileStream* file = FileOpen(name.c_str(), "rb");
    if (!file) return "none";
    std::string bytes(kMostBytes, '\0');
    bytes.resize(FileRead(bytes.data(), 1, bytes.size(), file));
    FileClose(file);
    return bytes;
}

// Each name found, and opened twice, as a loader does it; some again, some never.
std::string ReadAll(const Package& package, uint8_t order) {
    std::string all;
    for (size_t i = 0; i < package.names.size(); ++i) {
        if (order >> 1 & 1 && i % 3 == 1) continue;
        all += FileFind(package.names[i].c_str()) + Content(package.names[i]) + Content(package.names[i]);
        if (order >> 2 & 1) all += Content(package.names[i / 2]);
    }
    return all + headless::Log();
}

void RegisterMissing(const Package& package, uint8_t choice) {
    if (choice & 16) {
        RegisterFile(package.names.back(), [](const MayHold& may_hold, ByteBlock* block) {
            return (!may_hold || may_hold(1)) && block->Resize(1) && (*block->Data() = 'x', true);
        });
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 4 || size > 32768) return 0;
    Package package;
    Unpack(data, size, &package);
    headless::Reset();
    FileForgetListings();
    RegisterMissing(package, data[0]);
    const std::string alone = ReadAll(package, data[0]);
    if (alone.size() > kMostBytes) return 0;
    headless::Reset();
    FileForgetListings();
    RegisterMissing(package, data[0]);
    std::vector<const char*> list;
    for (const std::string& name : package.names) list.push_back(name.c_str());
    FilesExpect(data[0] & 1 ? FILES_PICTURES : FILES_SOUNDS, list.data(), static_cast<int>(list.size()));
    const std::string ahead = ReadAll(package, data[0]);
    FilesExpectNoMore();
    return ahead != alone ? std::abort(), 0 : 0;
}
