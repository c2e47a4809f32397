// Uncompressed bitmaps. Compiled with -O3.
#include <algorithm>
#include <cstring>

#include "platform/graphics/dib_format.h"

namespace {

using RowReader = void (*)(const DibPicture&, const BYTE* pRow, size_t nLeft, size_t nWidth, DWORD* pDest);

template <int kBits>
void ReadIndexed(const DibPicture& picture, const BYTE* pRow, size_t nLeft, size_t nWidth, DWORD* pDest) {
    constexpr size_t kPerByte = 8 / kBits;
    constexpr unsigned kMask = (1u << kBits) - 1;
    for (size_t i = 0; i < nWidth; ++i) {
        const size_t x = nLeft + i;
        const unsigned nShift = static_cast<unsigned>((kPerByte - 1 - x % kPerByte) * kBits);
        pDest[i] = picture.anPalette[(pRow[x / kPerByte] >> nShift) & kMask];
    }
}

DWORD FromMasks(const DibPicture& picture, DWORD nPixel) {
    DWORD nColor = 0;
    for (const DibChannel& c : picture.aChannel)
        nColor = nColor << 8 | c.abExpand[((nPixel & c.nMask) >> c.nShift) & 0xFF];
    return nColor;
}

template <class Pixel>
void ReadMasked(const DibPicture& picture, const BYTE* pRow, size_t nLeft, size_t nWidth, DWORD* pDest) {
    const BYTE* p = pRow + nLeft * sizeof(Pixel);
    for (size_t i = 0; i < nWidth; ++i, p += sizeof(Pixel)) {
        Pixel pixel;
        std::memcpy(&pixel, p, sizeof pixel);
        pDest[i] = FromMasks(picture, pixel);
    }
}

void Read24(const DibPicture&, const BYTE* pRow, size_t nLeft, size_t nWidth, DWORD* pDest) {
    const BYTE* p = pRow + nLeft * 3;
    // Reads four bytes at once. The last pixel has only three bytes that are sure to exist.
    for (size_t i = 0; i + 1 < nWidth; ++i) {
        DWORD nFour;
        std::memcpy(&nFour, p + i * 3, sizeof nFour);
        pDest[i] = nFour & 0xFFFFFF;
    }
    p += (nWidth - 1) * 3;
    pDest[nWidth - 1] = static_cast<DWORD>(p[2] << 16 | p[1] << 8 | p[0]);
}

void Read32(const DibPicture&, const BYTE* pRow, size_t nLeft, size_t nWidth, DWORD* pDest) {
    const BYTE* p = pRow + nLeft * 4;
    for (size_t i = 0; i < nWidth; ++i) {
        DWORD nPixel;
        std::memcpy(&nPixel, p + i * 4, sizeof nPixel);
        pDest[i] = nPixel & 0xFFFFFF;
    }
}

RowReader ChooseReader(const DibPicture& picture) {
    switch (picture.nBits) {
        case 1:
            return ReadIndexed<1>;
        case 4:
            return ReadIndexed<4>;
        case 8:
            return ReadIndexed<8>;
        case 16:
            return ReadMasked<uint16_t>;
        case 24:
            return Read24;
        default:
            return picture.bMasked ? ReadMasked<uint32_t> : Read32;
    }
}

}  // namespace

void DrawDibRows(const DibPicture& picture, const DibWindow& window) {
    const RowReader pfnRead = ChooseReader(picture);
    const auto nRoom = static_cast<uint64_t>(picture.pEnd - picture.pBits);
    for (int64_t y = 0; y < window.nHeight; ++y) {
        const int64_t nSeen = window.nTop + y;
        const auto nStored = static_cast<uint64_t>(picture.bTopDown ? nSeen : picture.nHeight - 1 - nSeen);
        // At most 2^31 rows of 2^33 bytes, so this cannot overflow.
        const uint64_t nOffset = nStored * picture.nRowBytes;
        if (nOffset >= nRoom) continue;
        const uint64_t nPixels = (nRoom - nOffset) * 8 / static_cast<uint64_t>(picture.nBits);
        if (nPixels <= static_cast<uint64_t>(window.nLeft)) continue;
        const auto nWidth = static_cast<size_t>(
            std::min(static_cast<uint64_t>(window.nWidth), nPixels - static_cast<uint64_t>(window.nLeft)));
        pfnRead(picture, picture.pBits + nOffset, static_cast<size_t>(window.nLeft), nWidth,
                window.pDest + static_cast<size_t>(y) * window.nDestStride);
    }
}
