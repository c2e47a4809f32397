// Takes any bytes as lines of the second channel to a running program. In them $0 to $3 stand for charts; a
// line w0 to w3 says that one was written.
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

namespace {

void Say(const fuzz::Charts& charts, std::string line) {
    if (line.size() == 2 && line[0] == 'w') return headless::WriteEvent(charts.Path(line[1] & 3));
    for (size_t at = 0; (at = line.find('$', at)) < line.size() - 1;)
        line.replace(at, 2, charts.Path(line[at + 1] & 3));
    headless::ReceiveLine(1, line);
}

}  // namespace

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
        headless::At(ms += 60, headless::Call([line = bytes.substr(at, end - at)] { Say(charts, line); }));
        at = end + 1;
    }
    headless::EndAt(ms + 60);
    std::string line = "-P " + charts.Word(0);
    WinMain(GetProgramModule(), nullptr, line.data(), 1);
    return 0;
}
