// Takes any bytes as a sound and a picture of a chart that the checker reads. The first byte chooses the
// file's ending, whether the chart names it so, and the report.
#include <cstdint>
#include <iterator>

#include "check_reports.h"
#include "host/headless/headless.h"
#include "support/tempfolder.h"

// The libraries leak their own state on damaged heads.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libvorbis\nleak:libsndfile\n";
}

namespace {

constexpr const char* kEndings[] = {".wav", ".bmp", ".xa",  ".ogg", ".flac", ".mp3",
                                    ".png", ".jpg", ".gif", ".avi", ""};

// Seconds of silence and empty surfaces cost much and find nothing.
bool IsLarge(const std::string& bytes) {
    return bytes.size() > 8192;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const test::TempFolder folder;
    const std::string bytes(reinterpret_cast<const char*>(data) + (size > 0), size > 0 ? size - 1 : 0);
    if (size == 0 || IsLarge(bytes)) return 0;
    headless::Reset();
    const std::string name = std::string("m") + kEndings[data[0] % std::size(kEndings)];
    const bool substitute = data[0] & 0x80;
    const std::string path = folder.Write(name, bytes);
    const std::string chart = folder.Write(
        "c.bms", "#WAV01 " + (substitute ? "m.wav" : name) + "\r\n#BMP01 " + (substitute ? "m.bmp" : name) +
                     "\r\n#BGA01 01 0 0 9 9 0 0\r\n#00101:01\r\n#00104:01\r\n#00111:0101\r\n");
    fuzz::CheckReports(chart, data[0] >> 4);
    std::filesystem::remove(path);
    return 0;
}
