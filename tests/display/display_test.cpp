// The display on a window: its start, its failures, and what of it is seen where.
#include <gtest/gtest.h>

#include "display/ddraw.h"
#include "platform/graphics/gdi.h"
#include "platform/timer.h"
#include "platform/window/window.h"
#include "playback/layout.h"
#include "support/calls.h"
#include "support/program.h"

namespace {

class Display : public testing::Test {
protected:
    static constexpr int kWidth = 452, kHeight = 280;
    static constexpr int kDesktopWidth = 1024, kDesktopHeight = 768;

    void SetUp() override {
        test::ResetProgram();
        headless::SetDesktop(kDesktopWidth, kDesktopHeight);
        WNDCLASSEXA windowClass = {};
        windowClass.cbSize = 48;
        windowClass.lpfnWndProc = DefWindowProcA;
        windowClass.lpszClassName = "display test";
        ASSERT_NE(RegisterClassExA(&windowClass), 0);
        m_hWnd = CreateWindowExA(WS_EX_TOPMOST, "display test", "", WS_CAPTION | WS_VISIBLE, 300, 200, kWidth,
                                 kHeight, nullptr, nullptr, nullptr, nullptr);
        ASSERT_NE(m_hWnd, nullptr);
    }
    void TearDown() override {
        test::ForgetCalls();
        DestroyWindow(m_hWnd);
        test::ResetProgram();
    }

    // A back surface of which each pixel is its own number.
    static void Number(IDirectDrawSurface7* pSurface) {
        for (int y = 0; y < kHeight; ++y) {
            for (int x = 0; x < kWidth; ++x) {
                DDBLTFX fx = {sizeof(DDBLTFX), static_cast<DWORD>(1 + x + 1000 * y)};
                const RECT rect = {x, y, x + 1, y + 1};
                pSurface->Blt(&rect, nullptr, nullptr, DDBLT_COLORFILL, &fx);
            }
        }
    }
    // There, with a new size on the way, which forgets what was shown.
    void PlaceAnew(CDDraw* pDisplay, int x, int y) {
        pDisplay->FitWindow(m_hWnd, x, y, kWidth, kHeight - 1);
        pDisplay->FitWindow(m_hWnd, x, y, kWidth, kHeight);
    }
    // The part of the window that lies on the desktop shows its own part of the back surface, the rest stays
    // black.
    static void ExpectShown(const RECT& seen) {
        const headless::Picture& picture = headless::ShownPicture();
        ASSERT_EQ(picture.width, kWidth);
        ASSERT_EQ(picture.height, kHeight);
        for (int y = 0; y < kHeight; ++y) {
            for (int x = 0; x < kWidth; ++x) {
                const bool bSeen = x >= seen.left && x < seen.right && y >= seen.top && y < seen.bottom;
                ASSERT_EQ(picture.pixels[static_cast<size_t>(y * kWidth + x)],
                          bSeen ? static_cast<uint32_t>(1 + x + 1000 * y) : 0u)
                    << x << " " << y;
            }
        }
    }

    HWND m_hWnd = nullptr;
};

TEST_F(Display, EachFailureOfTheStartHasItsBox) {
    const struct {
        test::Call eStep;
        int nPasses;
        const char* pszText;
    } rows[] = {
        {test::Call::kDirectDrawCreate, 0, "DirectDrawInitError."},
        {test::Call::kDisplayLevel, 0, "DirectDrawSetCoopError."},
        {test::Call::kCreatePrimary, 0, "CreateFrontError"},
        {test::Call::kSurfaceDesc, 0, "GetFrontDescError"},
        {test::Call::kCreateSurface, 0, "CreateBackError"},
        {test::Call::kSurfaceDesc, 1, "GetBackDescError"},
    };
    for (const auto& row : rows) {
        const size_t nBoxes = headless::Boxes().size();
        const int nLive = test::LiveSurfaces();
        {
            CDDraw display;
            test::Order(row.eStep, E_FAIL, row.nPasses);
            EXPECT_EQ(display.Init(m_hWnd, 10, 20, kWidth, kHeight), 1);
        }
        EXPECT_EQ(test::LiveSurfaces(), nLive) << row.pszText;
        ASSERT_EQ(headless::Boxes().size(), nBoxes + 1) << row.pszText;
        EXPECT_EQ(headless::Boxes().back().text, row.pszText);
        EXPECT_EQ(headless::Boxes().back().caption, "ERROR!");
        EXPECT_EQ(headless::Boxes().back().icon, host::BoxIcon::kWarning);
    }
    CDDraw display;
    EXPECT_EQ(display.Init(m_hWnd, 10, 20, kWidth, kHeight), 0);
    test::Order(test::Call::kCreateSurface, E_FAIL);
    EXPECT_EQ(display.CreateParts(4, 256, 256), 1);
    EXPECT_EQ(headless::Boxes().back().text, "CreatePartsError");
    EXPECT_EQ(headless::Boxes().back().caption, "ERROR!");
    EXPECT_EQ(display.m_apParts[4], nullptr);
}

TEST_F(Display, InitPlacesTheWindowAndReadsTheSizesBack) {
    CDDraw display;
    EXPECT_EQ(display.m_nWidth, 640);
    EXPECT_EQ(display.m_nHeight, 480);
    ASSERT_EQ(display.Init(m_hWnd, 50, 60, kWidth, kHeight), 0);
    EXPECT_EQ(headless::TheWindow().client.left, 50);
    EXPECT_EQ(headless::TheWindow().client.top, 60);
    EXPECT_TRUE(headless::TheWindow().topmost);
    EXPECT_EQ(display.m_nFrontW, kDesktopWidth);
    EXPECT_EQ(display.m_nFrontH, kDesktopHeight);
    EXPECT_EQ(display.m_nBackW, kWidth);
    EXPECT_EQ(display.m_nBackH, kHeight);
    EXPECT_EQ(display.m_nWidth, kWidth);
    EXPECT_EQ(display.m_nHeight, kHeight);
    EXPECT_NE(display.FitWindow(m_hWnd, -1, 7, kWidth, kHeight), 0);  // -1 alone is a place
    EXPECT_EQ(headless::TheWindow().client.left, -1);
    EXPECT_EQ(headless::TheWindow().client.top, 7);
}

TEST_F(Display, PartsAreReplacedFilledAndMissing) {
    CDDraw display;
    ASSERT_EQ(display.Init(m_hWnd, 50, 60, kWidth, kHeight), 0);
    EXPECT_EQ(display.ClearParts(4, 0), 1);
    EXPECT_EQ(display.LoadParts(nullptr, 1, 1, 4), 1);
    EXPECT_LT(display.BltBack(0, 0, nullptr, 4), 0);
    EXPECT_EQ(display.ClearParts(8, 0), 1);
    ASSERT_EQ(display.CreateParts(4, 30, 20), 0);
    EXPECT_EQ(display.ClearParts(4, 0x00010203), DD_OK);
    EXPECT_EQ(display.BltBack(11, 12, nullptr, 4), DD_OK);
    EXPECT_EQ(test::PixelAt(display.m_pBack, 40, 31), 0x010203u);
    EXPECT_EQ(test::PixelAt(display.m_pBack, 41, 31), 0u);
    ASSERT_EQ(display.CreateParts(4, 30, 20), 0);  // blank again
    EXPECT_EQ(display.BltBackKey(11, 12, nullptr, 4), DD_OK);
    EXPECT_EQ(test::PixelAt(display.m_pBack, 11, 12), 0x010203u);
    EXPECT_EQ(display.BltBack(11, 12, nullptr, 4), DD_OK);
    EXPECT_EQ(test::PixelAt(display.m_pBack, 11, 12), 0u);

    ASSERT_EQ(display.CreateParts(PARTS_SPRITES, SPRITES_WIDTH, SPRITES_HEIGHT), 0);
    const HBITMAP hBitmap = LoadBitmapA(GetProgramModule(), BITMAP_SPRITES);
    ASSERT_NE(hBitmap, nullptr);
    EXPECT_EQ(display.LoadParts(hBitmap, SPRITES_WIDTH, SPRITES_HEIGHT, PARTS_SPRITES), 0);
    EXPECT_EQ(DeleteObject(hBitmap), 1);  // nothing holds it any more
    EXPECT_EQ(test::PixelAt(display.m_apParts[PARTS_SPRITES], 2, 27), 0xFFFFFFu);
    EXPECT_EQ(test::PixelAt(display.m_apParts[PARTS_SPRITES], 63, 47), 0xFF00FFu);
}

TEST_F(Display, PresentShowsWhatLiesOnTheDesktop) {
    CDDraw display;
    ASSERT_EQ(display.Init(m_hWnd, 300, 200, kWidth, kHeight), 0);
    Number(display.m_pBack);
    const struct {
        int x, y;
        RECT seen;  // of the window
    } rows[] = {
        {300, 200, {0, 0, 452, 280}},   {0, 0, {0, 0, 452, 280}},      {-100, 200, {100, 0, 452, 280}},
        {672, 200, {0, 0, 352, 280}},   {300, -50, {0, 50, 452, 280}}, {300, 600, {0, 0, 452, 168}},
        {-10, -20, {10, 20, 452, 280}}, {1000, 700, {0, 0, 24, 68}},   {572, 488, {0, 0, 452, 280}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.x << ", " << row.y);
        PlaceAnew(&display, row.x, row.y);
        EXPECT_EQ(display.Present(), 0);
        ExpectShown(row.seen);
    }
    for (const POINT& place :
         {POINT{1024, 0}, POINT{5000, 10}, POINT{-452, 0}, POINT{0, 768}, POINT{0, -280}}) {
        display.FitWindow(m_hWnd, place.x, place.y, kWidth, kHeight);
        const uint64_t nFrames = headless::FrameCount();
        display.m_dwThisPresent = 0;
        EXPECT_EQ(display.Present(), 1);
        EXPECT_EQ(headless::FrameCount(), nFrames);
        EXPECT_EQ(display.m_dwLastPresent, display.m_dwThisPresent);
        EXPECT_NE(display.m_dwThisPresent, 0u);  // paced all the same
    }
}

TEST_F(Display, PresentPutsTheWindowBackToItsSizeAndFollowsTheDesktop) {
    CDDraw display;
    ASSERT_EQ(display.Init(m_hWnd, 300, 200, kWidth, kHeight), 0);
    Number(display.m_pBack);
    host::PlaceWindow(280, 190, 700, 500);
    EXPECT_EQ(display.Present(), 0);
    ExpectShown({0, 0, 452, 280});
    EXPECT_EQ(headless::TheWindow().client.left, 280);
    host::PlaceWindow(1500, 900, kWidth, kHeight);
    EXPECT_EQ(display.Present(), 1);
    headless::SetDesktop(3000, 2000);  // another monitor
    EXPECT_EQ(display.Present(), 0);
    ExpectShown({0, 0, 452, 280});
    headless::SetDesktop(400, 300);  // narrower than the window: the left edge's rule comes first
    PlaceAnew(&display, -30, 5);
    EXPECT_EQ(display.Present(), 0);
    EXPECT_EQ(headless::ShownPicture().pixels[30], 1u + 52u);
    EXPECT_EQ(headless::ShownPicture().pixels[29], 0u);
}

TEST_F(Display, Pacing) {
    CDDraw display;
    ASSERT_EQ(display.Init(m_hWnd, 300, 200, kWidth, kHeight), 0);
    const struct {
        // ms: since the last present; of the clock; the stamp kept, after the last
        DWORD nPassed, nSlept, nStamp;
    } rows[] = {{0, 15, 0},
                {1, 14, 1},
                {5, 10, 5},
                {10, 5, 10},
                {11, 4, 11},
                {12, 4, 16},
                {13, 3, 16},
                {14, 2, 16},
                {15, 0, 15},
                {16, 0, 16},
                {17, 0, 17},
                {1000, 0, 1000},
                {0x80000000u, 0, 0x80000000u},
                {0xFFFFFFF0u, 0, 0xFFFFFFF0u}};
    for (const auto& row : rows) {
        headless::AdvanceClock(10'000'000);  // whole milliseconds, and no readings yet
        const uint64_t nBefore = headless::Clock();
        const auto nNow = static_cast<DWORD>(nBefore / 1'000'000);
        const DWORD nLast = nNow - row.nPassed;
        display.m_dwLastPresent = nLast;
        EXPECT_EQ(display.Present(), 0);
        EXPECT_EQ((headless::Clock() - nBefore) / 1'000'000, row.nSlept) << row.nPassed;
        EXPECT_EQ(display.m_dwLastPresent - nLast, row.nStamp) << row.nPassed;
        EXPECT_EQ(display.m_dwThisPresent, display.m_dwLastPresent);
    }
}

}  // namespace
