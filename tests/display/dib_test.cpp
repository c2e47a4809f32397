// What is read of a file, and what is refused.
#include <climits>

#include "display/dib_support.h"
#include "platform/graphics/gdi.h"
#include "support/calls.h"

namespace {

using test::BmpSpec;
using test::MakeBmp;

class Dib : public test::PictureTest {
protected:
    // Offset of the pixels in a file of that kind, -1 when it is refused.
    int64_t PixelsAt(const std::string& bytes) {
        CDib dib;
        if (dib.Load(m_folder.Write("offsets.bmp", bytes).c_str()) != 0) return -1;
        EXPECT_EQ(dib.m_pInfoHeader, reinterpret_cast<BITMAPINFOHEADER*>(dib.m_pData + 14));
        EXPECT_EQ(static_cast<void*>(dib.m_pCoreHeader), dib.m_pData + 14);
        EXPECT_EQ(dib.m_nDataSize, static_cast<int32_t>(bytes.size()));
        return dib.m_pBits - dib.m_pData;
    }
    static std::string File(int nBits, uint32_t nHeader, uint32_t nUsed) {
        return test::BmpHead({.bits = nBits, .header_size = nHeader, .colors_used = nUsed}) +
               std::string(2000, 'x');
    }
};

// Where the pixels lie in files that can be drawn is seen in what is drawn of them.
TEST_F(Dib, PixelsOfOddHeaders) {
    EXPECT_EQ(PixelsAt(File(24, 40, 77)), 54);
    EXPECT_EQ(PixelsAt(File(8, 39, 9)), 26 + 768);
    EXPECT_EQ(PixelsAt(File(8, 0xFFFFFFFF, 2)), 54 + 8);
    for (uint32_t nUsed : {100000u, 0xFFFFFFFFu})  // behind the file: at its end
        EXPECT_EQ(PixelsAt(File(8, 40, nUsed)), 14 + 40 + 2000);
    CDib dib;
    dib.Load(m_folder.Write("true.bmp", File(24, 40, 0)).c_str());
    EXPECT_EQ(dib.m_pPalette, nullptr);
    dib.Load(m_folder.Write("core.bmp", File(4, 12, 0)).c_str());
    EXPECT_EQ(dib.m_pPalette, dib.m_pData + 26);
}

TEST_F(Dib, TheCountOfColoursIsWrittenBack) {
    CDib dib;
    ASSERT_EQ(dib.Load(m_folder.Write("a.bmp", File(8, 40, 0)).c_str()), 0);
    EXPECT_EQ(DWORD{dib.m_pInfoHeader->biClrUsed}, 256u);
    ASSERT_EQ(dib.Load(m_folder.Write("b.bmp", File(24, 40, 0)).c_str()), 0);
    EXPECT_EQ(DWORD{dib.m_pInfoHeader->biClrUsed}, 0u);
}

TEST_F(Dib, Refusals) {
    const std::string good = File(24, 40, 0).substr(0, 54);
    EXPECT_EQ(PixelsAt(good), 54);
    EXPECT_EQ(PixelsAt(good.substr(0, 53)), -1);
    EXPECT_EQ(PixelsAt(File(24, 12, 0).substr(0, 53)), -1);
    EXPECT_EQ(PixelsAt(""), -1);
    EXPECT_EQ(PixelsAt("BN" + good.substr(2)), -1);
    EXPECT_EQ(PixelsAt(File(24, 11, 0)), -1);
    EXPECT_EQ(PixelsAt(File(24, 12, 0)), 26);
    EXPECT_EQ(CDib().Load(m_folder.Path("missing.bmp").c_str()), 1);
    EXPECT_EQ(CDib().Load(m_folder.Path().c_str()), 1);
}

TEST_F(Dib, SlotsFillEmptyAndReplace) {
    ASSERT_EQ(Load(File(24, 40, 0)), 0);
    ASSERT_NE(m_display.m_apDib[1], nullptr);
    EXPECT_EQ(m_display.LoadDib(m_folder.Path("missing.bmp").c_str(), 1), 1);
    EXPECT_EQ(m_display.m_apDib[1], nullptr);
    EXPECT_EQ(Load(File(24, 11, 0)), 1);
    EXPECT_EQ(m_display.m_apDib[1], nullptr);
    ASSERT_EQ(Load(File(24, 40, 0), 575), 0);
    EXPECT_EQ(m_display.FreeDib(575), 0);
    EXPECT_EQ(m_display.m_apDib[575], nullptr);
    EXPECT_EQ(m_display.FreeDib(575), 0);
    EXPECT_EQ(Load(File(24, 40, 0), 576), 1);
    EXPECT_EQ(Load(File(24, 40, 0), -1), 1);
}

TEST_F(Dib, FieldsOfALoadedPictureAndOfAFreedOne) {
    const std::string path = m_folder.Write("name.bmp", File(24, 40, 0));
    CDib dib;
    ASSERT_EQ(dib.Load(path.c_str()), 0);
    EXPECT_STREQ(dib.m_szFile, path.c_str());
    EXPECT_EQ(dib.GetWidth(), 1);
    EXPECT_EQ(dib.GetHeight(), 1);
    dib.Free();
    EXPECT_EQ(dib.m_szFile[0], 0);
    EXPECT_EQ(dib.m_pData, nullptr);
    const RECT rect = {0, 0, 1, 1};
    EXPECT_EQ(dib.Draw(nullptr, &rect, &rect), 1);
}

TEST_F(Dib, DrawsReportWhatStoppedThem) {
    const RECT rect = {0, 0, 1, 1}, twice = {0, 0, 2, 2};
    EXPECT_EQ(m_display.DrawDib(nullptr, &rect, &rect, 5), 1);  // no such surface
    EXPECT_EQ(m_display.DrawDibSlot(1, &rect, &rect, 4), 0);    // an empty slot blanks
    ASSERT_EQ(Load(MakeBmp(BmpSpec(), [](int, int) { return 0x123456u; })), 0);
    EXPECT_EQ(m_display.DrawDibSlot(1, &rect, &rect, 4), 0);
    EXPECT_EQ(At(0, 0), 0x123456u);
    test::Order(test::Call::kSurfaceDC, E_FAIL);
    EXPECT_EQ(m_display.DrawDibSlot(1, &rect, &rect, 4), 1);
    EXPECT_EQ(At(0, 0), 0u);
    HDC hDC = nullptr;
    ASSERT_EQ(m_display.m_apParts[4]->GetDC(&hDC), DD_OK);
    CDib& dib = *m_display.m_apDib[1];
    EXPECT_EQ(dib.Draw(hDC, nullptr, &rect), 1);
    EXPECT_EQ(dib.Draw(hDC, &rect, nullptr), 1);
    EXPECT_EQ(dib.Draw(hDC, &twice, &rect), 1);  // nothing is stretched
    EXPECT_EQ(dib.Draw(nullptr, &rect, &rect), 1);
    EXPECT_EQ(dib.Draw(hDC, &rect), 0);
    EXPECT_EQ(dib.Draw(hDC, 7, 8, 1, 1), 0);
    m_display.m_apParts[4]->ReleaseDC(hDC);
    EXPECT_EQ(At(7, 8), 0x123456u);
}

TEST_F(Dib, MemoryThatNobodyRegisteredIsNeverRead) {
    BITMAPINFOHEADER header = {};
    header.biSize = 40;
    header.biWidth = header.biHeight = 1;
    header.biBitCount = 32;
    uint32_t nPixel = 5;
    HDC hDC = nullptr;
    ASSERT_EQ(m_display.m_apParts[4]->GetDC(&hDC), DD_OK);
    EXPECT_EQ(StretchDIBits(hDC, 0, 0, 1, 1, 0, 0, 1, 1, &nPixel, &header, DIB_RGB_COLORS, SRCCOPY),
              GDI_ERROR);
    m_display.m_apParts[4]->ReleaseDC(hDC);
    EXPECT_EQ(At(0, 0), 0u);
}

// Files that promise more than they hold: never a read outside their bytes, and all that is there shows.
class HostileDib : public test::PictureTest {};

TEST_F(HostileDib, TruncatedAtEveryLength) {
    const BmpSpec kinds[] = {{.bits = 1},
                             {.bits = 4},
                             {.bits = 8},
                             {.bits = 16},
                             {.bits = 24},
                             {.bits = 32},
                             {.bits = 24, .header_size = 12},
                             {.bits = 4, .header_size = 12},
                             {.bits = 16, .compression = 3, .masks = {0xF800, 0x07E0, 0x001F}}};
    for (BmpSpec spec : kinds) {
        spec.width = 9;
        spec.height = 6;
        for (uint32_t i = 0; spec.bits <= 8 && i < 1u << spec.bits; ++i) spec.palette.push_back(0xFFFFFF - i);
        const std::string whole =
            MakeBmp(spec, [&](int, int) { return spec.bits == 32 ? ~0u : (1u << spec.bits) - 1; });
        const size_t nHead = test::BmpHead(spec).size(), nRow = (whole.size() - nHead) / 6;
        ASSERT_EQ(Load(whole), 0);
        ASSERT_EQ(Draw(0, 0, 0, 0, 9, 6), 0);
        const uint32_t nFull = At(0, 0);
        ASSERT_NE(nFull, 0u);
        for (size_t nLength = 54; nLength <= whole.size(); ++nLength) {
            ASSERT_EQ(Load(whole.substr(0, nLength)), 0);
            ASSERT_EQ(Draw(0, 0, 0, 0, 9, 6), 0);
            for (int i = 0; i < 9 * 6; ++i) {
                const int x = i % 9, y = i / 9;
                const size_t nEnd = nHead + nRow * static_cast<size_t>(5 - y) +
                                    (static_cast<size_t>(x + 1) * static_cast<size_t>(spec.bits) + 7) / 8;
                ASSERT_EQ(At(x, y), nEnd <= nLength ? nFull : 0u)
                    << spec.bits << " bits cut at " << nLength << ": " << x << " " << y;
            }
        }
    }
}

TEST_F(HostileDib, SizesThatTheFileCannotHold) {
    const int sizes[] = {0, 1, -1, 257, 2000000000, -2000000000, INT_MAX, INT_MIN};
    for (int nBits : {1, 4, 8, 16, 24, 32}) {
        for (uint32_t nUsed : {0u, 0x3FFFFFFFu}) {
            for (int nWidth : sizes) {
                for (int nHeight : sizes) {
                    const BmpSpec spec{
                        .width = nWidth, .height = nHeight, .bits = nBits, .colors_used = nUsed};
                    ASSERT_EQ(Load(test::BmpHead(spec) + std::string(60, '\x77')), 0);
                    const RECT near = {0, 0, 256, 256};
                    const RECT far = {INT_MIN, INT_MIN, INT_MIN + 256, INT_MIN + 256};
                    const RECT end = {INT_MAX - 256, INT_MAX - 256, INT_MAX, INT_MAX};
                    const RECT all = {INT_MIN, INT_MIN, INT_MAX, INT_MAX};
                    for (const RECT& source : {near, far, end})
                        EXPECT_EQ(m_display.DrawDibSlot(1, &near, &source, 4), 0);
                    EXPECT_EQ(m_display.DrawDibSlot(1, &all, &all, 4), 0);
                    if (nWidth > 0 && nHeight != 0) continue;
                    EXPECT_EQ(m_display.DrawDibSlot(1, &near, &near, 4), 0);
                    EXPECT_EQ(At(0, 255), 0u);
                }
            }
        }
    }
}

TEST_F(HostileDib, ATallPictureOfWhichTheFileHoldsTheLastRows) {
    // Stored from the bottom, so what is there is the picture's lower end.
    const BmpSpec spec{.width = 4, .height = 2000000000, .bits = 32};
    ASSERT_EQ(Load(test::BmpHead(spec) + std::string(4 * 4 * 3, '\x11')), 0);
    const RECT rect = {0, 0, 4, 5};
    ASSERT_EQ(m_display.DrawDibSlot(1, &rect, &rect, 4), 0);
    EXPECT_EQ(At(0, 1), 0u);
    EXPECT_EQ(At(0, 2), 0x111111u);
    EXPECT_EQ(At(3, 4), 0x111111u);
}

TEST_F(HostileDib, NegativeRectanglesDrawNothing) {
    ASSERT_EQ(Load(MakeBmp(BmpSpec(), [](int, int) { return 0xFFFFFFu; })), 0);
    const RECT rects[] = {{1, 1, 0, 0}, {0, 1, 1, 0}, {1, 0, 0, 1}, {0, 0, 0, 1}, {INT_MAX, 0, INT_MIN, 1}};
    for (const RECT& rect : rects) {
        EXPECT_EQ(m_display.DrawDibSlot(1, &rect, &rect, 4), 0);
        EXPECT_EQ(At(0, 0), 0u);
    }
}

}  // namespace
