// The main loop: the frame rate's digits, messages before frames, and frames in every state.
#include "shell/framerate.h"
#include "shell_test.h"

namespace {

using headless::At;
using headless::Key;

class Loop : public test::ShellTest {};

TEST_F(Loop, AllMessagesAreServedBeforeTheNextFrame) {
    headless::OnFrame([](const headless::Frame&) { EXPECT_NE(g_fSpeed, 300 * 0.01f); });
    At(500, headless::Remote(WM_REMOTE_SPEED, 300));
    At(500, headless::Remote(WM_REMOTE_SPEED, 400));
    At(600, Key(test::kEscape));
    EXPECT_EQ(Run("-P "), 0);
    EXPECT_EQ(g_fSpeed, 400 * 0.01f);
}

TEST_F(Loop, RunsFramesInEveryState) {
    std::vector<uint64_t> counts;
    for (const uint64_t ms : {100, 1100, 2000, 2100, 12000, 13000})
        At(ms, headless::Call([&counts] { counts.push_back(headless::FrameCount()); }));
    At(1100, Key(test::kEnter));
    At(2000, Key(test::kSpace));
    At(2100, Key(test::kSpace));
    At(13000, Key(test::kEscape));
    EXPECT_EQ(Run(), 0);
    ASSERT_EQ(counts.size(), 6u);
    EXPECT_GT(counts[1], counts[0] + 50);  // idle
    EXPECT_GT(counts[3], counts[2] + 5);   // paused
    EXPECT_GT(counts[5], counts[4] + 50);  // ended
}

// ---- the rate itself ----

uint32_t RateAfter(CFrameRate* rate, int count, uint64_t milliseconds) {
    for (int i = 0; i < count; ++i) {
        rate->Stamp();
        headless::AdvanceClock(milliseconds * 1'000'000);
    }
    return rate->GetRate();
}

TEST(FrameRate, CountsTheIntervalsOfTheLast256Frames) {
    headless::Reset();
    headless::SetClock((uint64_t{1} << 32) * 1'000'000 - 100'000'000);  // its wrap lies ahead
    CFrameRate rate;
    EXPECT_EQ(RateAfter(&rate, 255, 1), 0u);
    EXPECT_EQ(RateAfter(&rate, 1, 1), 1000u);  // 255 intervals in 255 ms
    EXPECT_EQ(RateAfter(&rate, 1000, 10), 100u);
    EXPECT_LT(rate.m_nCount, 512u);
    headless::AdvanceClock(2'550'000'000);
    EXPECT_EQ(RateAfter(&rate, 255, 10), 50u);  // one slow interval counts until it leaves the ring
    EXPECT_EQ(RateAfter(&rate, 1, 10), 100u);
    EXPECT_EQ(RateAfter(&rate, 256, 0), 0u);  // a clock that stands still
}

}  // namespace
