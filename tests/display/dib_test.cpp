// What is read of a file, and what is refused.
#include "display/dib_support.h"
#include "platform/gdi.h"

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
    directdraw_test::FailNext(directdraw_test::Step::kGetDC);
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
    EXPECT_EQ(At(7, 8), 0x123456u);
    m_display.m_apParts[4]->ReleaseDC(hDC);
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

}  // namespace
