// The display on a window: its start, its failures, what of it is seen where, and how long a frame takes.
#include <gtest/gtest.h>

#include "display/ddraw.h"
#include "platform/graphics/gdi.h"
#include "platform/window/window.h"
#include "playback/layout.h"
#include "support/calls.h"
#include "support/program.h"
#include "support/stored.h"

namespace {

class Display : public testing::Test {
protected:
    static constexpr int kWidth = 452, kHeight = 280;

    void SetUp() override {
        test::ResetProgram();
        headless::SetDesktop(1024, 768);
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
        DestroyWindow(m_hWnd);
        test::ResetProgram();
    }

    // Each pixel of the back surface becomes its own number.
    static void Number(IDirectDrawSurface7* pBack) {
        const PixelView view = test::Pixels(pBack);
        for (int y = 0; y < kHeight; ++y)
            for (int x = 0; x < kWidth; ++x)
                view.pPixels[static_cast<size_t>(y) * view.nStride + x] =
                    static_cast<uint32_t>(1 + x + 1000 * y);
    }
    // The part of the window that is not black; each pixel of it must be that of the back surface.
    static std::string Shown() {
        const headless::Picture& picture = headless::ShownPicture();
        RECT part = {kWidth, kHeight, 0, 0};
        int count = 0;
        for (int y = 0; y < picture.height; ++y) {
            for (int x = 0; x < picture.width; ++x) {
                const uint32_t pixel = picture.pixels[static_cast<size_t>(y * picture.width + x)];
                if (pixel == 0) continue;
                EXPECT_EQ(pixel, static_cast<uint32_t>(1 + x + 1000 * y));
                part = {std::min(part.left, x), std::min(part.top, y), std::max(part.right, x + 1),
                        std::max(part.bottom, y + 1)};
                ++count;
            }
        }
        EXPECT_EQ(count, std::max(part.right - part.left, 0) * std::max(part.bottom - part.top, 0));
        std::ostringstream text;
        text << part.left << "," << part.top << " to " << part.right << "," << part.bottom;
        return count ? text.str() : "nothing";
    }
    std::string PresentAt(CDDraw* pDisplay, int x, int y) {
        pDisplay->FitWindow(m_hWnd, x, y, kWidth, kHeight - 1);  // a new size forgets what was shown
        pDisplay->FitWindow(m_hWnd, x, y, kWidth, kHeight);
        const int nResult = pDisplay->Present();
        EXPECT_EQ(pDisplay->m_dwLastPresent, pDisplay->m_dwThisPresent);  // paced in any case
        return std::to_string(x) + "," + std::to_string(y) + ": " + std::to_string(nResult) + " " + Shown() +
               "\n";
    }

    HWND m_hWnd = nullptr;
};

TEST_F(Display, EachFailureOfTheStartHasItsBox) {
    const struct {
        test::Call eCall;
        int nSkip;
        const char* pszText;
    } rows[] = {
        {test::Call::kDirectDrawCreate, 0, "DirectDrawInitError."},
        {test::Call::kDisplayLevel, 0, "DirectDrawSetCoopError."},
        {test::Call::kCreatePrimary, 0, "CreateFrontError"},
        {test::Call::kSurfaceDesc, 0, "GetFrontDescError"},
        {test::Call::kCreateSurface, 0, "CreateBackError"},
        {test::Call::kSurfaceDesc, 1, "GetBackDescError"},
        {test::Call::kCreateSurface, 1, "CreatePartsError"},
    };
    for (const auto& row : rows) {
        const int nLive = test::LiveSurfaces();
        {
            CDDraw display;
            test::Order(row.eCall, E_FAIL, row.nSkip);
            EXPECT_EQ(display.Init(m_hWnd, 10, 20, kWidth, kHeight) || display.CreateParts(4, 256, 256), 1);
            EXPECT_EQ(display.m_apParts[4], nullptr);
        }
        EXPECT_EQ(test::LiveSurfaces(), nLive) << row.pszText;
        const headless::Box& box = headless::Boxes().back();
        EXPECT_EQ(box.text + box.caption, std::string(row.pszText) + "ERROR!");
        EXPECT_EQ(box.icon, host::BoxIcon::kWarning);
    }
    EXPECT_EQ(headless::Boxes().size(), std::size(rows));
}

TEST_F(Display, PartsAreReplacedFilledAndMissing) {
    CDDraw display;
    ASSERT_EQ(display.Init(m_hWnd, 50, 60, kWidth, kHeight), 0);
    EXPECT_EQ(headless::TheWindow().client.left, 50);
    EXPECT_EQ(headless::TheWindow().client.top, 60);
    EXPECT_TRUE(headless::TheWindow().topmost);
    for (const int nParts : {4, 8, -1}) {
        EXPECT_EQ(display.ClearParts(nParts, 0) + display.LoadParts(nullptr, 1, 1, nParts), 2);
        EXPECT_LT(display.BltBack(0, 0, nullptr, nParts), 0);
    }
    ASSERT_EQ(display.CreateParts(4, 30, 20), 0);
    EXPECT_EQ(display.ClearParts(4, 0x00010203), DD_OK);
    EXPECT_EQ(display.BltBack(11, 12, nullptr, 4), DD_OK);
    EXPECT_EQ(test::PixelAt(display.m_pBack, 40, 31), 0x010203u);
    EXPECT_EQ(test::PixelAt(display.m_pBack, 41, 31), 0u);
    ASSERT_EQ(display.CreateParts(4, 30, 20), 0);  // black again, which is the key
    EXPECT_EQ(display.BltBackKey(11, 12, nullptr, 4), DD_OK);
    EXPECT_EQ(test::PixelAt(display.m_pBack, 11, 12), 0x010203u);
    EXPECT_EQ(display.BltBack(11, 12, nullptr, 4), DD_OK);
    EXPECT_EQ(test::PixelAt(display.m_pBack, 11, 12), 0u);
    ASSERT_EQ(display.CreateParts(0, SPRITES_WIDTH, SPRITES_HEIGHT), 0);
    const HBITMAP hBitmap = LoadBitmapA(GetProgramModule(), BITMAP_SPRITES);
    EXPECT_EQ(display.LoadParts(hBitmap, SPRITES_WIDTH, SPRITES_HEIGHT, 0), 0);
    EXPECT_EQ(DeleteObject(hBitmap), 1);  // nothing holds it any more
    EXPECT_EQ(test::PixelAt(display.m_apParts[0], 63, 47), 0xFF00FFu);
}

TEST_F(Display, PresentShowsWhatLiesOnTheDesktop) {
    CDDraw display;
    ASSERT_EQ(display.Init(m_hWnd, 300, 200, kWidth, kHeight), 0);
    Number(display.m_pBack);
    std::string text = "== a desktop of 1024 by 768\n";
    for (const int x : {-452, -451, -100, -1, 0, 300, 572, 573, 1023, 1024, 5000})
        text += PresentAt(&display, x, 200);
    for (const int y : {-280, -279, -50, 0, 488, 489, 767, 768}) text += PresentAt(&display, 300, y);
    text += PresentAt(&display, -10, -20) + PresentAt(&display, 1000, 700);
    text += "== another monitor\n";
    headless::SetDesktop(3000, 2000);
    text += PresentAt(&display, 1500, 900) + PresentAt(&display, -1, 7) + PresentAt(&display, -1, -1);
    headless::SetDesktop(400, 300);
    display.Present();
    host::PlaceWindow(-30, 5, 700, 500);  // gets its size back
    EXPECT_EQ(display.Present(), 0);
    EXPECT_EQ(headless::TheWindow().client.right, -30 + kWidth);
    EXPECT_EQ(headless::ShownPicture().pixels[30], 1u + 52u);  // the left edge's rule comes first
    EXPECT_EQ(headless::ShownPicture().pixels[29], 0u);
    test::ExpectStored(text, DISPLAY_DATA "/present.txt");
}

TEST_F(Display, Pacing) {
    CDDraw display;
    ASSERT_EQ(display.Init(m_hWnd, 300, 200, kWidth, kHeight), 0);
    std::ostringstream text;
    text << "ms since the last present: ms that this one takes, stamp kept\n";
    for (const DWORD nPassed :
         {0u, 1u, 5u, 10u, 11u, 12u, 13u, 14u, 15u, 16u, 1000u, 0x80000000u, 0xFFFFFFF0u}) {
        headless::AdvanceClock(10'000'000);  // whole milliseconds, and no readings yet
        const uint64_t nBefore = headless::Clock();
        const DWORD nLast = static_cast<DWORD>(nBefore / 1'000'000) - nPassed;
        display.m_dwLastPresent = nLast;
        EXPECT_EQ(display.Present(), 0);
        text << nPassed << ": " << (headless::Clock() - nBefore) / 1'000'000 << ", "
             << display.m_dwLastPresent - nLast << '\n';
    }
    test::ExpectStored(text.str(), DISPLAY_DATA "/pacing.txt");
}

}  // namespace
