// What happens when there is no memory for one of the three objects.
#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

#include "chart/bms.h"
#include "display/ddraw.h"
#include "fresh.h"
#include "small_chart.h"
#include "sound/dsound.h"

namespace {
size_t g_refused = 0;  // blocks of this size are refused
}

// Only the objects that may be missing are asked for in this way.
void* operator new(size_t size, const std::nothrow_t&) noexcept {
    if (size == g_refused) return nullptr;
    return ::operator new(size);
}

namespace {

using headless::At;

TEST(Memory, AStartEndsWithABox) {
    test::TempFolder folder;
    const std::string chart = test::WriteChart(folder);
    for (const size_t size : {sizeof(CDSound), sizeof(CDDraw), sizeof(CBMS)}) {
        test::FreshProgram();
        At(10, headless::Remote(WM_REMOTE_RESTART));
        At(20, headless::AnswerBox());
        g_refused = size;
        EXPECT_EQ(test::RunLine("-P " + chart), -1);
        g_refused = 0;
        ASSERT_EQ(headless::Boxes().size(), 1u);
        EXPECT_EQ(headless::Boxes()[0].text, "OutOfMemoryError");
        EXPECT_EQ(headless::Boxes()[0].caption, "Error!");
        EXPECT_EQ(headless::FrameCount(), 0u);
    }
}

TEST(Memory, AChangeOfChartEndsTheProgram) {
    test::TempFolder folder;
    const std::string chart = test::WriteChart(folder);
    test::FreshProgram();
    At(1000, headless::DoubleClick());
    At(1100, headless::Call([] { g_refused = sizeof(CBMS); }));
    At(1100, headless::ChooseFile(folder.Path("song.bms")));
    At(1200, headless::Remote(WM_REMOTE_RESTART));
    At(1300, headless::AnswerBox());
    EXPECT_EQ(test::RunLine("-P " + chart), 0);
    g_refused = 0;
    ASSERT_EQ(headless::Boxes().size(), 1u);
    EXPECT_EQ(headless::Boxes()[0].text, "OutOfMemoryError");
    EXPECT_EQ(headless::Now(), 1300u);
    EXPECT_EQ(headless::Faults(), std::vector<std::string>{});
}

}  // namespace
