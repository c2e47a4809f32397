// The main loop: the frame rate's digits, messages before frames, and frames in every state.
#include "shell/framerate.h"
#include "shell_test.h"

namespace {

using headless::At;
using headless::Frame;
using headless::Key;

// One of the program's bitmaps.
struct Bitmap {
    Bitmap(void (*draw)(uint32_t*), int across, int down)
        : width(across), pixels(static_cast<size_t>(across) * down) {
        draw(pixels.data());
    }
    // Whether the frame shows at x, y what the bitmap has in the rectangle.
    bool ShowsAt(const Frame& frame, int x, int y, const RECT& r) const {
        for (int i = r.top; i < r.bottom; ++i) {
            const uint32_t* const shown = frame.pixels + (y + i - r.top) * frame.stride + x;
            if (!std::equal(shown, shown + r.right - r.left, &pixels[i * width + r.left])) return false;
        }
        return true;
    }
    int width;
    std::vector<uint32_t> pixels;
};

// The three places of the rate: digits, blanks where the skin shows, `?` for anything else.
std::string ShownRate(const Frame& frame) {
    static const Bitmap atlas(DrawSpriteAtlas, SPRITES_WIDTH, SPRITES_HEIGHT);
    static const Bitmap skin(DrawSkin, SCREEN_WIDTH, SCREEN_HEIGHT);
    std::string text = "???";
    for (int place = 0; place < 3; ++place) {
        const int x = 433 + 6 * place, y = 270;
        for (int digit = 0; digit < 10; ++digit)
            if (atlas.ShowsAt(frame, x, y, SPRITE_DIGIT[digit])) text[place] = "0123456789"[digit];
        const RECT digit = {x, y, x + 6, y + 9};
        if (skin.ShowsAt(frame, x, y, digit)) text[place] = ' ';
    }
    return text;
}

class Loop : public test::ShellTest {};

TEST_F(Loop, TheRateShowsFromThe256thFrameOn) {
    std::vector<std::string> rates;
    std::vector<uint64_t> times;
    headless::OnFrame([&](const Frame& frame) {
        rates.push_back(ShownRate(frame));
        times.push_back(frame.time / 1'000'000);
    });
    At(8000, Key(test::kEscape));
    EXPECT_EQ(Run(), 0);
    ASSERT_GT(rates.size(), 300u);
    for (size_t i = 0; i < 255; ++i) ASSERT_EQ(rates[i], "  0") << i;
    // A frame's stamp is taken when the one before it has been shown.
    for (size_t i = 256; i < 300; ++i) {
        const double rate = 255000.0 / static_cast<double>(times[i - 1] - times[i - 256]);
        EXPECT_NEAR(std::stoi(rates[i]), rate, 1.0) << i;
    }
}

TEST_F(Loop, AllMessagesAreServedBeforeTheNextFrame) {
    headless::OnFrame([](const Frame&) { EXPECT_NE(g_fSpeed, 300 * 0.01f); });
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
    EXPECT_EQ(g_dwStartTime, g_dwNowTime);
}

// ---- the rate itself ----

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
