// The main loop: the frame rate's digits, and messages before frames.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "fresh.h"
#include "playback/playback.h"
#include "small_chart.h"

namespace {

using headless::At;
using headless::Call;

std::vector<uint32_t> Drawn(void (*draw)(uint32_t*), int width, int height) {
    std::vector<uint32_t> pixels(static_cast<size_t>(width) * height);
    draw(pixels.data());
    return pixels;
}

bool SamePixels(const headless::Frame& frame, int x, int y, const uint32_t* pixels, int stride, int width,
                int height) {
    for (int row = 0; row < height; ++row) {
        for (int column = 0; column < width && x + column < SCREEN_WIDTH; ++column) {
            if (frame.pixels[(y + row) * frame.stride + x + column] != pixels[row * stride + column])
                return false;
        }
    }
    return true;
}

// The three places of the rate: digits, blanks where the skin shows, `?` for anything else.
std::string ShownRate(const headless::Frame& frame) {
    static const std::vector<uint32_t> atlas = Drawn(DrawSpriteAtlas, SPRITES_WIDTH, SPRITES_HEIGHT);
    static const std::vector<uint32_t> skin = Drawn(DrawSkin, SCREEN_WIDTH, SCREEN_HEIGHT);
    std::string text;
    for (int place = 0; place < 3; ++place) {
        const int x = RATE_X + CHAR_STEP * place;
        char shown = '?';
        for (int digit = 0; digit < 10; ++digit) {
            const RECT& r = SPRITE_DIGIT[digit];
            const int width = r.right - r.left, height = r.bottom - r.top;
            if (SamePixels(frame, x, RATE_Y, &atlas[r.top * SPRITES_WIDTH + r.left], SPRITES_WIDTH, width,
                           height))
                shown = static_cast<char>('0' + digit);
            if (SamePixels(frame, x, RATE_Y, &skin[RATE_Y * SCREEN_WIDTH + x], SCREEN_WIDTH, width, height))
                shown = ' ';
        }
        text += shown;
    }
    return text;
}

TEST(Loop, TheRateShowsFromThe256thFrameOn) {
    test::TempFolder folder;
    const std::string chart = test::WriteChart(folder);
    test::FreshProgram();
    std::vector<std::string> rates;
    std::vector<uint64_t> times;
    headless::OnFrame([&](const headless::Frame& frame) {
        rates.push_back(ShownRate(frame));
        times.push_back(frame.time / 1'000'000);
    });
    At(8000, headless::Key(27));
    EXPECT_EQ(test::RunLine(chart), 0);
    ASSERT_GT(rates.size(), 300u);
    for (size_t i = 0; i < 255; ++i) ASSERT_EQ(rates[i], "  0") << i;
    // A frame's stamp is taken when the one before it has been shown.
    for (size_t i = 256; i < 300; ++i) {
        const double rate = 255000.0 / static_cast<double>(times[i - 1] - times[i - 256]);
        EXPECT_NEAR(std::stoi(rates[i]), rate, 1.0) << i;
    }
}

TEST(Loop, AllMessagesAreServedBeforeTheNextFrame) {
    test::TempFolder folder;
    const std::string chart = test::WriteChart(folder);
    test::FreshProgram();
    for (int measure = 0; measure <= 2; ++measure) At(500, headless::Remote(WM_REMOTE_SEEK, measure));
    At(500, headless::Remote(WM_REMOTE_SPEED, 300));
    At(500, headless::Remote(WM_REMOTE_STOP));
    At(550, Call([] {
           EXPECT_EQ(g_nStartMeasure, 2);
           EXPECT_EQ(g_dwSeekTime, 4999);
           EXPECT_EQ(g_fSpeed, 300 * 0.01f);
           EXPECT_EQ(g_bPaused, 1);
       }));
    At(600, headless::Key(27));
    EXPECT_EQ(test::RunLine("-P " + chart), 0);
    EXPECT_EQ(headless::Faults(), std::vector<std::string>{});
}

TEST(Loop, RunsFramesInEveryState) {
    test::TempFolder folder;
    const std::string chart = test::WriteChart(folder);
    test::FreshProgram();
    std::vector<uint64_t> counts;
    const auto count = [&counts] { counts.push_back(headless::FrameCount()); };
    for (const uint64_t ms : {100, 1100, 2100, 12000, 13000}) At(ms, Call(count));
    At(1100, headless::Key(13));
    At(2000, headless::Key(32));
    At(2100, headless::Key(32));
    At(13000, headless::Key(27));
    EXPECT_EQ(test::RunLine(chart), 0);
    ASSERT_EQ(counts.size(), 5u);
    EXPECT_GT(counts[1], counts[0] + 50);  // idle
    EXPECT_GT(counts[4], counts[3] + 50);  // ended
    EXPECT_EQ(g_dwStartTime, g_dwNowTime);
}

}  // namespace
