#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "platform/graphics/directdraw.h"
#include "platform/graphics/gdi.h"
#include "platform/graphics/gdi_object.h"
#include "platform/graphics/surface_copy.h"
#include "support/calls.h"

namespace {

using test::PixelAt;
constexpr DWORD kPlain = DDBLTFAST_WAIT, kKeyed = DDBLTFAST_WAIT | DDBLTFAST_SRCCOLORKEY;

class Surfaces : public testing::Test {
protected:
    void SetUp() override {
        m_nLive = test::LiveSurfaces();
        ASSERT_EQ(DirectDrawCreateEx(nullptr, &m_pDD, IID_IDirectDraw7, nullptr), DD_OK);
        ASSERT_EQ(m_pDD->SetCooperativeLevel(nullptr, DDSCL_NORMAL), DD_OK);
    }
    void TearDown() override {
        for (IDirectDrawSurface7* pSurface : m_surfaces) pSurface->Release();
        m_pDD->Release();
        EXPECT_EQ(test::LiveSurfaces(), m_nLive);
    }
    static DDSURFACEDESC2 Offscreen(DWORD nWidth, DWORD nHeight) {
        DDSURFACEDESC2 desc = {};
        desc.dwSize = sizeof desc;
        desc.dwFlags = DDSD_CAPS | DDSD_WIDTH | DDSD_HEIGHT;
        desc.ddsCaps.dwCaps = DDSCAPS_OFFSCREENPLAIN;
        desc.dwWidth = nWidth;
        desc.dwHeight = nHeight;
        return desc;
    }
    // Pixel x, y has the value 1 + x + 256 * y, or 0 where it is left out.
    IDirectDrawSurface7* Make(DWORD nWidth, DWORD nHeight, bool bFilled, int nLeaveOut = 0) {
        const DDSURFACEDESC2 desc = Offscreen(nWidth, nHeight);
        IDirectDrawSurface7* pSurface = nullptr;
        EXPECT_EQ(m_pDD->CreateSurface(&desc, &pSurface, nullptr), DD_OK);
        m_surfaces.push_back(pSurface);
        HDC hDC = nullptr;
        EXPECT_EQ(pSurface->GetDC(&hDC), DD_OK);
        for (DWORD y = 0; bFilled && y < nHeight; ++y)
            for (DWORD x = 0; x < nWidth; ++x)
                if (!nLeaveOut || (x + y) % nLeaveOut)
                    hDC->view.pPixels[y * hDC->view.nStride + x] = 1 + x + 256 * y;
        EXPECT_EQ(pSurface->ReleaseDC(hDC), DD_OK);
        return pSurface;
    }

    static void Expect(IDirectDrawSurface7* pSurface, int nWidth, int nHeight,
                       const std::function<uint32_t(int, int)>& color) {
        for (int y = 0; y < nHeight; ++y)
            for (int x = 0; x < nWidth; ++x) ASSERT_EQ(PixelAt(pSurface, x, y), color(x, y)) << x << " " << y;
    }
    static HRESULT Fill(IDirectDrawSurface7* pSurface, const RECT* pRect, DWORD dwColor) {
        DDBLTFX fx = {sizeof(DDBLTFX), dwColor};
        return pSurface->Blt(pRect, nullptr, nullptr, DDBLT_COLORFILL | DDBLT_WAIT, &fx);
    }

    int m_nLive = 0;  // objects of others
    IDirectDraw7* m_pDD = nullptr;
    std::vector<IDirectDrawSurface7*> m_surfaces;
};

TEST_F(Surfaces, WhatSticksOutOrIsEmptyIsRefusedWhole) {
    IDirectDrawSurface7* pTo = Make(40, 30, false);
    IDirectDrawSurface7* pFrom = Make(20, 20, true);
    const struct {
        DWORD x, y;
        RECT rect;
    } rows[] = {
        {21, 0, {0, 0, 20, 20}},
        {0, 11, {0, 0, 20, 20}},
        {0xFFFFFFFF, 0, {0, 0, 1, 1}},
        {0, 0xFFFFFFFF, {0, 0, 1, 1}},
        {0xFFFFFFF0, 0, {0, 0, 20, 20}},
        {0, 0, {-1, 0, 5, 5}},
        {0, 0, {0, -1, 5, 5}},
        {0, 0, {0, 0, 21, 5}},
        {0, 0, {0, 0, 5, 21}},
        {0, 0, {5, 0, 5, 5}},
        {0, 0, {6, 0, 5, 5}},
        {0, 0, {0, 5, 5, 4}},
        {0, 0, {INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX}},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(pTo->BltFast(row.x, row.y, pFrom, &row.rect, kPlain), DDERR_INVALIDRECT);
        EXPECT_EQ(PixelAt(pTo, 0, 0), 0u);
        EXPECT_EQ(PixelAt(pTo, 39, 29), 0u);
    }
    EXPECT_EQ(pTo->BltFast(20, 10, pFrom, nullptr, kPlain), DD_OK);
    EXPECT_EQ(pTo->BltFast(0, 0, nullptr, nullptr, kPlain), DDERR_INVALIDPARAMS);
    EXPECT_EQ(pTo->BltFast(0, 0, pFrom, nullptr, kPlain | 2), DDERR_INVALIDPARAMS);
    EXPECT_EQ(pTo->BltFast(0, 0, pTo, nullptr, kPlain), DDERR_UNSUPPORTED);
}

TEST_F(Surfaces, KeyedCopyLeavesTheKeyOut) {
    IDirectDrawSurface7* pTo = Make(64, 20, false);
    IDirectDrawSurface7* pFrom = Make(64, 20, true, 3);
    EXPECT_EQ(pTo->BltFast(0, 0, pFrom, nullptr, kKeyed), DDERR_NOCOLORKEY);
    const DDCOLORKEY black = {0, 0}, other = {1 + 5 + 256 * 2, 1 + 5 + 256 * 2}, range = {0, 7};
    EXPECT_EQ(pFrom->SetColorKey(DDCKEY_SRCBLT, &range), DDERR_UNSUPPORTED);
    EXPECT_EQ(pFrom->SetColorKey(DDCKEY_SRCBLT, &black), DD_OK);
    EXPECT_EQ(Fill(pTo, nullptr, 0xFF777777), DD_OK);
    EXPECT_EQ(pTo->BltFast(0, 0, pFrom, nullptr, kKeyed), DD_OK);
    Expect(pTo, 64, 20,
           [](int x, int y) { return (x + y) % 3 ? static_cast<uint32_t>(1 + x + 256 * y) : 0x777777u; });
    EXPECT_EQ(pFrom->SetColorKey(DDCKEY_SRCBLT, &other), DD_OK);
    EXPECT_EQ(pTo->BltFast(0, 0, pFrom, nullptr, kKeyed), DD_OK);
    EXPECT_EQ(PixelAt(pTo, 5, 2), 0x000206u);  // kept from before
    EXPECT_EQ(PixelAt(pTo, 0, 0), 0u);         // black now counts as a colour
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

TEST_F(Surfaces, FillsARectangleAndRefusesOtherBlts) {
    IDirectDrawSurface7* pTo = Make(10, 10, false);
    const RECT rect = {2, 3, 4, 5}, outside = {2, 3, 4, 11};
    EXPECT_EQ(Fill(pTo, &rect, 0x12345678), DD_OK);
    Expect(pTo, 10, 10, [](int x, int y) {  // the fourth byte is no colour
        return (x == 2 || x == 3) && (y == 3 || y == 4) ? 0x345678u : 0u;
    });
    EXPECT_EQ(Fill(pTo, &outside, 0x12345678), DDERR_INVALIDRECT);
    DDBLTFX fx = {sizeof(DDBLTFX), 0};
    EXPECT_EQ(pTo->Blt(nullptr, nullptr, nullptr, DDBLT_WAIT, &fx), DDERR_UNSUPPORTED);
    EXPECT_EQ(pTo->Blt(nullptr, Make(2, 2, true), nullptr, DDBLT_COLORFILL, &fx), DDERR_UNSUPPORTED);
    EXPECT_EQ(pTo->Blt(nullptr, nullptr, nullptr, DDBLT_COLORFILL, nullptr), DDERR_INVALIDPARAMS);
}

TEST_F(Surfaces, SizesAreBoundedAndDescribed) {
    IDirectDrawSurface7* pSurface = nullptr;
    for (const auto& [nWidth, nHeight] :
         {std::pair<DWORD, DWORD>{0, 5}, {5, 0}, {8193, 1}, {1, 8193}, {0xFFFFFFFF, 0xFFFFFFFF}}) {
        const DDSURFACEDESC2 desc = Offscreen(nWidth, nHeight);
        EXPECT_EQ(m_pDD->CreateSurface(&desc, &pSurface, nullptr), DDERR_INVALIDPARAMS);
        EXPECT_EQ(pSurface, nullptr);
    }
    DDSURFACEDESC2 desc = {};
    desc.dwSize = sizeof desc;
    EXPECT_EQ(Make(123, 45, false)->GetSurfaceDesc(&desc), DD_OK);
    EXPECT_EQ(desc.dwWidth, 123u);
    EXPECT_EQ(desc.dwHeight, 45u);
    desc.dwSize = 3;
    EXPECT_EQ(m_surfaces[0]->GetSurfaceDesc(&desc), DDERR_INVALIDPARAMS);
}

TEST_F(Surfaces, OnePrimarySurfaceAndOneContextAtATime) {
    DDSURFACEDESC2 desc = {};
    desc.dwSize = sizeof desc;
    desc.dwFlags = DDSD_CAPS;
    desc.ddsCaps.dwCaps = DDSCAPS_PRIMARYSURFACE;
    IDirectDrawSurface7 *pFirst = nullptr, *pSecond = nullptr;
    EXPECT_EQ(m_pDD->CreateSurface(&desc, &pFirst, nullptr), DD_OK);
    EXPECT_EQ(m_pDD->CreateSurface(&desc, &pSecond, nullptr), DDERR_PRIMARYSURFACEALREADYEXISTS);
    pFirst->Release();
    EXPECT_EQ(m_pDD->CreateSurface(&desc, &pFirst, nullptr), DD_OK);
    pFirst->Release();

    IDirectDrawSurface7* pSurface = Make(4, 4, false);
    HDC hFirst = nullptr, hSecond = nullptr;
    EXPECT_EQ(pSurface->GetDC(&hFirst), DD_OK);
    EXPECT_EQ(pSurface->GetDC(&hSecond), DDERR_DCALREADYCREATED);
    EXPECT_EQ(hSecond, nullptr);
    EXPECT_EQ(pSurface->ReleaseDC(nullptr), DDERR_NODC);
    EXPECT_EQ(pSurface->ReleaseDC(hFirst), DD_OK);
    EXPECT_EQ(pSurface->ReleaseDC(hFirst), DDERR_NODC);
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
    ASSERT_NE(hBitmap, nullptr);
    IDirectDrawSurface7* pTo = Make(5, 5, false);
    HDC hDest = nullptr;
    pTo->GetDC(&hDest);
    const HDC hMemory = CreateCompatibleDC(GetDC(nullptr));
    const HGDIOBJ hBefore = SelectObject(hMemory, hBitmap);
    EXPECT_NE(hBefore, nullptr);
    EXPECT_EQ(SelectObject(hMemory, GetStockObject(BLACK_BRUSH)), nullptr);
    EXPECT_EQ(DeleteObject(hBitmap), 0);  // still selected
    EXPECT_EQ(BitBlt(hDest, -1, 1, 6, 100, hMemory, 1, 1, SRCCOPY), 1);
    EXPECT_EQ(BitBlt(hDest, 0, 0, 6, 100, hMemory, 0, 0, SRCCOPY + 1), 0);
    EXPECT_EQ(BitBlt(hDest, INT32_MIN, INT32_MAX, INT32_MAX, INT32_MAX, hMemory, INT32_MIN, 0, SRCCOPY), 1);
    SelectObject(hMemory, hBefore);
    EXPECT_EQ(DeleteDC(hMemory), 1);
    pTo->ReleaseDC(hDest);
    EXPECT_EQ(DeleteObject(hBitmap), 1);
    Expect(pTo, 5, 5, [](int x, int y) {  // source columns 2..5, rows 1..3
        return x < 4 && y >= 1 && y < 4 ? static_cast<uint32_t>(0x100 + y * 6 + x + 2) : 0u;
    });
}

}  // namespace
