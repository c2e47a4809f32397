// Takes any bytes as a file name and as a text to display. Whatever opens must be one of the folder's files.
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "platform/files/files.h"
#include "platform/files/namefold.h"
#include "platform/files/text.h"

namespace {

void MakeFolder() {
    std::string folder = "/tmp/lumetra-fuzz-XXXXXX";
    if (!mkdtemp(folder.data())) std::abort();
    std::filesystem::current_path(folder);
    for (const char* name : {"a.wav", "A.WAV", "sub/b.wav", "\xE8\xA1\xA8.wav", "\x83\x5C.wav",
                             "\xE3\x81\x8B\xE3\x82\x99", "Sub/C.ogg", "sub/c.WAV.OGG"}) {
        std::filesystem::create_directories(std::filesystem::absolute(name).parent_path());
        std::ofstream(name) << "inside";
    }
}

// Or does not open.
bool OpensInside(const std::string& name) {
    FileStream* pFile = FileOpen(name.c_str(), "rb");
    if (!pFile) return true;
    char abBytes[6];
    const bool bInside = FileRead(abBytes, 1, 6, pFile) == 6 && std::string(abBytes, 6) == "inside";
    FileClose(pFile);
    return bInside;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    MakeFolder();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    if (!IsUtf8(DisplayText(text)) || !IsUtf8(FoldName(text))) std::abort();
    FileForgetListings();
    // As it stands, and as a sound that may have substitutes. Two dots lead out of the folder, as the name
    // says.
    for (const std::string& name : {".\\" + text, ".\\" + text + ".wav"}) {
        if (!OpensInside(name) && text.find("..") == text.npos) std::abort();
    }
    return 0;
}
