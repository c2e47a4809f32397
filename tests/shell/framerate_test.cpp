#include "shell/framerate.h"

#include <gtest/gtest.h>

#include "host/headless/headless.h"

namespace {

void Stamps(CFrameRate* rate, int count, uint64_t milliseconds) {
    for (int i = 0; i < count; ++i) {
        rate->Stamp();
        headless::AdvanceClock(milliseconds * 1'000'000);
    }
}

TEST(FrameRate, ShowsOnceTheRingIsFullAndStaysRightAcrossItsTurn) {
    headless::Reset();
    CFrameRate rate;
    Stamps(&rate, 255, 16);
    EXPECT_EQ(rate.GetRate(), 0u);
    Stamps(&rate, 1, 16);
    EXPECT_EQ(rate.GetRate(), 62u);  // 255 intervals in 4080 ms
    Stamps(&rate, 1000, 16);
    EXPECT_EQ(rate.GetRate(), 62u);
    EXPECT_GE(rate.m_nCount, 256u);
    EXPECT_LT(rate.m_nCount, 512u);
}

TEST(FrameRate, OneSlowIntervalCountsUntilItHasLeftTheRing) {
    headless::Reset();
    CFrameRate rate;
    Stamps(&rate, 300, 10);
    EXPECT_EQ(rate.GetRate(), 100u);
    headless::AdvanceClock(2'550'000'000);
    Stamps(&rate, 1, 10);
    EXPECT_EQ(rate.GetRate(), 50u);
    Stamps(&rate, 254, 10);
    EXPECT_EQ(rate.GetRate(), 50u);
    Stamps(&rate, 1, 10);
    EXPECT_EQ(rate.GetRate(), 100u);
}

TEST(FrameRate, SurvivesTheClocksWrapAndAClockThatStands) {
    headless::Reset();
    headless::SetClock((uint64_t{1} << 32) * 1'000'000 - 1'000'000'000);
    CFrameRate rate;
    Stamps(&rate, 256, 10);
    EXPECT_EQ(rate.GetRate(), 100u);
    CFrameRate standing;
    for (int i = 0; i < 256; ++i) standing.m_adwStamp[i] = 5;
    standing.m_nCount = 256;
    EXPECT_EQ(standing.GetRate(), 0u);
}

}  // namespace
