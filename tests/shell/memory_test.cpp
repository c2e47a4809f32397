// What happens when there is no memory for one of the three objects.
#include <new>

#include "chart/bms.h"
#include "display/ddraw.h"
#include "shell_test.h"
#include "sound/dsound.h"

namespace {
size_t g_refused = 0;  // blocks of this size are refused
}

// Only the objects that may be missing are asked for in this way.
void* operator new(size_t size, const std::nothrow_t&) noexcept {
    return size == g_refused ? nullptr : ::operator new(size);
}

namespace {

using headless::At;

class Memory : public test::ShellTest {};

TEST_F(Memory, AStartEndsWithABox) {
    for (const size_t size : {sizeof(CDSound), sizeof(CDDraw), sizeof(CBMS)}) {
        Fresh();
        At(10, headless::Remote(WM_REMOTE_RESTART));
        At(20, headless::AnswerBox());
        g_refused = size;
        EXPECT_EQ(Run("-P "), -1);
        g_refused = 0;
        ExpectOneBox("OutOfMemoryError", "Error!");
        EXPECT_EQ(headless::FrameCount(), 0u);
    }
}

TEST_F(Memory, AChangeOfChartEndsTheProgram) {
    At(1000, headless::DoubleClick());
    At(1100, headless::Call([] { g_refused = sizeof(CBMS); }));
    At(1100, headless::ChooseFile(folder_.Path("song.bms")));
    At(1200, headless::Remote(WM_REMOTE_RESTART));
    At(1300, headless::AnswerBox());
    EXPECT_EQ(Run("-P "), 0);
    g_refused = 0;
    ExpectOneBox("OutOfMemoryError", "Error!");
    EXPECT_EQ(headless::Now(), 1300u);
}

}  // namespace
