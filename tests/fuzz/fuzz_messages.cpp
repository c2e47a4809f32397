// Takes any bytes as a sequence of user input, messages from other instances and dialog answers for a running
// program: four bytes each, after one byte that chooses how the program starts.
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>

#include "fuzz_support.h"
#include "host/headless/headless.h"
#include "host/headless/sound.h"
#include "playback/layout.h"
#include "shell/shell.h"
#include "support/program.h"

namespace {

using headless::Action;

constexpr uint64_t kRest = 40;  // ms of virtual time after the last action

constexpr UINT kMessages[] = {1125, 1126, 1127, 1128, 1129, 1130, 1134, 1224, 2, 16,   70,
                              161,  256,  274,  515,  529,  530,  562,  18,   1, 1024, 65535};

void PostHere(UINT message, int16_t value) {
    PostMessageA(g_hWnd, message, static_cast<WPARAM>(static_cast<int32_t>(value)), 0);
}

Action ActionOf(const fuzz::Charts& charts, uint8_t kind, uint8_t choice, int16_t value) {
    const UINT message = kMessages[choice % std::size(kMessages)];
    switch (kind % 12) {
        case 0:
            return headless::Remote(message, value);
        case 1:
            return headless::Remote(choice & 0x80 ? message : static_cast<uint16_t>(value), choice, value);
        case 2:
            return headless::Key("\r\x1b  A"[choice % 5]);
        case 3:
            return headless::DoubleClick(value, choice);
        case 4:
            return headless::WantMenu(value, choice);
        case 5:
            return choice == 7 ? headless::Close() : headless::MoveWindow(value, choice);
        case 6:
            return headless::Drop(charts.Path(choice));
        case 7:
            return headless::AnswerBox();
        case 8:
            return headless::ChooseFile(choice & 8 ? "" : charts.Path(choice));
        case 9:
            return headless::ChooseMenu(choice & 1 ? IDM_ABOUT : choice & 2 ? IDM_LOAD : value);
        case 10:
            return headless::Call([message, value] { PostHere(message, value); });
        default:
            return headless::ResizeWindow(value, choice);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const fuzz::Charts charts;
    if (size == 0 || size > 1 + 4 * 200) return 0;
    test::ResetProgram();
    headless::KeepPicture(false);
    headless::RefuseSound(data[0] & 4 && data[0] & 8);
    uint64_t ms = 0;
    for (size_t at = 1; at + 4 <= size; at += 4) {
        ms += data[at + 3] >> 4;
        const int16_t value = static_cast<int16_t>(data[at + 2] | (data[at + 3] & 15) << 12);
        headless::At(ms, ActionOf(charts, data[at], data[at + 1], value));
    }
    headless::EndAt(ms + kRest);
    std::string line = std::string(data[0] & 1 ? "-P " : "") + (data[0] & 2 ? "-N1 " : "") +
                       (data[0] & 16 ? "" : charts.Word(data[0] >> 5));
    WinMain(GetProgramModule(), nullptr, line.data(), 1);
    return 0;
}
