// A display with one layer of 256 by 256 on which pictures are drawn and looked at.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "display/ddraw.h"
#include "display/dib.h"
#include "support/bmp_writer.h"
#include "support/calls.h"
#include "support/tempfolder.h"

namespace test {

constexpr int kLayerSide = 256;

class PictureTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(m_display.Init(nullptr, 0, 0, 452, 280), 0);
        ASSERT_EQ(m_display.CreateParts(4, kLayerSide, kLayerSide), 0);
    }
    int Load(const std::string& bytes, int nSlot = 1) {
        // A new file each time: some file systems write an overwritten one to the disk at once.
        std::filesystem::remove(m_folder.Path("picture.bmp"));
        const std::string path = m_folder.Write("picture.bmp", bytes);
        return m_display.LoadDib(TempFolder::Backslashes(path).c_str(), nSlot);
    }
    // The rectangle of the picture from its top left, at x, y of the layer.
    int Draw(int x, int y, int nLeft, int nTop, int nWidth, int nHeight) {
        CDib* pDib = m_display.m_apDib[1];
        const int nRows = pDib ? std::abs(pDib->GetHeight()) : 0;
        const RECT dest = {x, y, x + nWidth, y + nHeight};
        const RECT source = {nLeft, nRows - nTop - nHeight, nLeft + nWidth, nRows - nTop};
        return m_display.DrawDibSlot(1, &dest, &source, 4);
    }
    void ExpectLayer(const PixelValue& color) const {
        const PixelView layer = Pixels(m_display.m_apParts[4]);
        for (int y = 0; y < kLayerSide; ++y) {
            const uint32_t* row = layer.pPixels + static_cast<size_t>(y) * layer.nStride;
            for (int x = 0; x < kLayerSide; ++x) ASSERT_EQ(row[x], color(x, y)) << x << " " << y;
        }
    }
    uint32_t At(int x, int y) const { return test::PixelAt(m_display.m_apParts[4], x, y); }

    TempFolder m_folder;
    CDDraw m_display;
};

}  // namespace test
