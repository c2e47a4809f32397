// Surfaces: copies with and without a key, and drawing of the program's bitmaps.
#include "platform/graphics/directdraw.h"

#include <gtest/gtest.h>

#include "platform/graphics/gdi.h"
#include "platform/graphics/surface_copy.h"
#include "support/calls.h"

namespace {

using test::PixelAt;
constexpr DWORD kPlain = DDBLTFAST_WAIT, kKeyed = DDBLTFAST_WAIT | DDBLTFAST_SRCCOLORKEY;

class Surfaces : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(DirectDrawCreateEx(nullptr, &m_pDD, IID_IDirectDraw7, nullptr), DD_OK);
        ASSERT_EQ(m_pDD->SetCooperativeLevel(nullptr, DDSCL_NORMAL), DD_OK);
    }
    void TearDown() override {
        for (IDirectDrawSurface7* pSurface : m_surfaces) pSurface->Release();
        m_pDD->Release();
    }
    // Pixel x, y has the value 1 + x + 256 * y, or 0 where x + y is a multiple of nLeaveOut.
    IDirectDrawSurface7* Make(int nWidth, int nHeight, int nLeaveOut = 1) {
        DDSURFACEDESC2 desc = {sizeof desc,
                               DDSD_CAPS | DDSD_WIDTH | DDSD_HEIGHT,
                               static_cast<DWORD>(nHeight),
                               static_cast<DWORD>(nWidth),
                               {DDSCAPS_OFFSCREENPLAIN}};
        IDirectDrawSurface7* pSurface = nullptr;
        EXPECT_EQ(m_pDD->CreateSurface(&desc, &pSurface, nullptr), DD_OK);
        m_surfaces.push_back(pSurface);
        const PixelView view = test::Pixels(pSurface);
        for (int y = 0; y < nHeight; ++y)
            for (int x = 0; x < nWidth; ++x)
                view.pPixels[static_cast<size_t>(y) * view.nStride + x] =
                    (x + y) % nLeaveOut ? static_cast<uint32_t>(1 + x + 256 * y) : 0;
        return pSurface;
    }

    IDirectDraw7* m_pDD = nullptr;
    std::vector<IDirectDrawSurface7*> m_surfaces;
};

TEST_F(Surfaces, CopiesThatStickOutOrAreEmptyAreRefusedWhole) {
    IDirectDrawSurface7 *pTo = Make(40, 30), *pFrom = Make(20, 20, 1000);
    const struct {
        DWORD x, y;
        RECT rect;
    } rows[] = {{21, 0, {0, 0, 20, 20}},       {0, 11, {0, 0, 20, 20}}, {0xFFFFFFFF, 0, {0, 0, 1, 1}},
                {0, 0xFFFFFFFF, {0, 0, 1, 1}}, {0, 0, {-1, 0, 5, 5}},   {0, 0, {0, -1, 5, 5}},
                {0, 0, {0, 0, 21, 5}},         {0, 0, {0, 0, 5, 21}},   {0, 0, {5, 0, 5, 5}},
                {0, 0, {0, 5, 5, 4}}};
    for (const auto& row : rows) {
        EXPECT_EQ(pTo->BltFast(row.x, row.y, pFrom, &row.rect, kPlain), DDERR_INVALIDRECT);
        EXPECT_EQ(PixelAt(pTo, 0, 0) + PixelAt(pTo, 39, 29), 0u);
    }
    EXPECT_EQ(pTo->BltFast(20, 10, pFrom, nullptr, kPlain), DD_OK);
    EXPECT_EQ(PixelAt(pTo, 39, 29), 1u + 19 + 256 * 19);
    EXPECT_EQ(pTo->BltFast(0, 0, nullptr, nullptr, kPlain), DDERR_INVALIDPARAMS);  // a part that is missing
}

TEST_F(Surfaces, KeyedCopiesLeaveTheKeyOut) {
    IDirectDrawSurface7 *pTo = Make(64, 20, 1000), *pFrom = Make(64, 20, 3);
    EXPECT_EQ(pTo->BltFast(0, 0, pFrom, nullptr, kKeyed), DDERR_NOCOLORKEY);
    const DDCOLORKEY black = {0, 0};
    EXPECT_EQ(pFrom->SetColorKey(DDCKEY_SRCBLT, &black), DD_OK);
    DDBLTFX fx = {sizeof(DDBLTFX), 0xFF777777};  // the fourth byte is no colour
    EXPECT_EQ(pTo->Blt(nullptr, nullptr, nullptr, DDBLT_COLORFILL | DDBLT_WAIT, &fx), DD_OK);
    EXPECT_EQ(pTo->BltFast(0, 0, pFrom, nullptr, kKeyed), DD_OK);
    for (int y = 0; y < 20; ++y)
        for (int x = 0; x < 64; ++x)
            ASSERT_EQ(PixelAt(pTo, x, y), (x + y) % 3 ? static_cast<uint32_t>(1 + x + 256 * y) : 0x777777u)
                << x;
}

TEST(SurfaceCopy, EveryWidthAndOffsetOfAKeyedCopy) {
    for (size_t nWidth = 1; nWidth < 70; ++nWidth) {
        std::vector<uint32_t> from(3 * 80), to(3 * 80), expected;
        for (size_t i = 0; i < from.size(); ++i) {
            from[i] = i * 2654435761u >> 29 & 1 ? static_cast<uint32_t>(i) : 0x00ABCDEF;
            to[i] = static_cast<uint32_t>(0x100000 + i);
        }
        expected = to;
        const size_t nAt = nWidth % 9;
        for (size_t y = 0; y < 3; ++y)
            for (size_t x = 0; x < nWidth; ++x)
                if (from[y * 80 + x + 1] != 0x00ABCDEF) expected[y * 80 + nAt + x] = from[y * 80 + x + 1];
        CopyPixelsKeyed(&to[nAt], 80, &from[1], 80, nWidth, 3, 0x00ABCDEF);
        ASSERT_EQ(to, expected) << nWidth;
    }
}

void DrawStripes(uint32_t* pPixels) {
    for (uint32_t i = 0; i < 6 * 4; ++i) pPixels[i] = 0x100 + i;
}
constexpr BitmapResource kStripes = {7, 6, 4, DrawStripes};
constexpr ModuleResources kModule = {&kStripes, 1, nullptr, 0};

TEST_F(Surfaces, ABitmapOfTheProgramComesThroughAMemoryContext) {
    EXPECT_EQ(LoadBitmapA(&kModule, 8), nullptr);
    EXPECT_EQ(LoadBitmapA(nullptr, 7), nullptr);
    const HBITMAP hBitmap = LoadBitmapA(&kModule, 7);
    IDirectDrawSurface7* pTo = Make(5, 5);
    HDC hDest = nullptr;
    pTo->GetDC(&hDest);
    const HDC hMemory = CreateCompatibleDC(GetDC(nullptr));
    const HGDIOBJ hBefore = SelectObject(hMemory, hBitmap);
    EXPECT_EQ(DeleteObject(hBitmap), 0);  // still selected
    EXPECT_EQ(BitBlt(hDest, -1, 1, 6, 100, hMemory, 1, 1, SRCCOPY), 1);
    EXPECT_EQ(BitBlt(hDest, INT32_MIN, INT32_MAX, INT32_MAX, INT32_MAX, hMemory, INT32_MIN, 0, SRCCOPY), 1);
    SelectObject(hMemory, hBefore);
    EXPECT_EQ(DeleteDC(hMemory), 1);
    pTo->ReleaseDC(hDest);
    EXPECT_EQ(DeleteObject(hBitmap), 1);
    for (int y = 0; y < 5; ++y)  // source columns 2 to 5, rows 1 to 3
        for (int x = 0; x < 5; ++x)
            EXPECT_EQ(PixelAt(pTo, x, y),
                      x < 4 && y >= 1 && y < 4 ? static_cast<uint32_t>(0x100 + y * 6 + x + 2) : 0u);
}

}  // namespace
