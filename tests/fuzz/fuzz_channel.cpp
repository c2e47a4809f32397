// Takes any bytes as lines of the second channel to a running program.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

#include "app/channel.h"
#include "fuzz_support.h"
#include "host/headless/headless.h"
#include "playback/layout.h"
#include "shell/shell.h"
#include "support/program.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const fuzz::Charts charts;
    if (size > 4096) return 0;
    test::ResetProgram();
    headless::KeepPicture(false);
    app::ResetChannel();
    app::ServeChannel(nullptr);
    uint64_t ms = 0;
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    for (size_t at = 0; at < bytes.size();) {
        const size_t end = std::min(bytes.find('\n', at), bytes.size());
        headless::At(ms += 20,
                     headless::Call([line = bytes.substr(at, end - at)] { headless::ReceiveLine(1, line); }));
        at = end + 1;
    }
    headless::EndAt(ms + 40);
    std::string line = "-P " + charts.Word(0);
    WinMain(GetProgramModule(), nullptr, line.data(), 1);
    return 0;
}
