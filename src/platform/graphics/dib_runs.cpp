// Run-length bitmaps: byte pairs, whose first byte is a count, or 0 for an escape.
#include <algorithm>

#include "platform/graphics/dib_format.h"

namespace {

constexpr BYTE kEndOfLine = 0, kEndOfBitmap = 1, kDelta = 2;

struct RunReader {
    const DibPicture& picture;
    const DibWindow& window;
    const BYTE* p;
    int64_t x = 0, nRow = 0;  // position of the next pixel; rows in storage order
    DWORD* pLine = nullptr;   // the window's row at nRow; null outside it

    RunReader(const DibPicture& thePicture, const DibWindow& theWindow)
        : picture(thePicture), window(theWindow), p(thePicture.pBits) {
        FindLine();
    }

    int64_t Seen() const { return picture.bTopDown ? nRow : picture.nHeight - 1 - nRow; }
    void FindLine() {
        const int64_t y = Seen() - window.nTop;
        pLine = y >= 0 && y < window.nHeight ? window.pDest + static_cast<size_t>(y) * window.nDestStride
                                             : nullptr;
    }
    // Rows only advance, so nothing is visible after the window's last one.
    bool IsPast() const {
        return picture.bTopDown ? Seen() >= window.nTop + window.nHeight : Seen() < window.nTop;
    }
    void Move(int64_t nRight, int64_t nRows) {
        x += nRight;
        nRow += nRows;
        FindLine();
    }

    // Draws nCount pixels; pfnColor returns the index of the i-th.
    template <class Index>
    void Put(int64_t nCount, Index pfnIndex) {
        const int64_t nFirst = std::max(int64_t{0}, window.nLeft - x);
        const int64_t nEnd = std::min(nCount, window.nLeft + window.nWidth - x);
        if (pLine) {
            for (int64_t i = nFirst; i < nEnd; ++i)
                pLine[x + i - window.nLeft] = picture.anPalette[pfnIndex(i)];
        }
        x += nCount;
    }

    void PutRun(int64_t nCount, BYTE nValue) {
        if (picture.nBits == 8)
            Put(nCount, [=](int64_t) { return nValue; });
        else
            Put(nCount, [=](int64_t i) { return i & 1 ? nValue & 15 : nValue >> 4; });
    }

    // Draws literal pixels, padded to an even number of bytes. False when the memory ends.
    bool PutPlain(int64_t nCount) {
        const int64_t nPerByte = 8 / picture.nBits;
        const int64_t nBytes = (nCount + nPerByte - 1) / nPerByte;
        const int64_t nRoom = picture.pEnd - p;
        const int64_t nHave = std::min(nCount, nRoom * nPerByte);
        const BYTE* pData = p;
        if (picture.nBits == 8)
            Put(nHave, [=](int64_t i) { return pData[i]; });
        else
            Put(nHave, [=](int64_t i) { return i & 1 ? pData[i / 2] & 15 : pData[i / 2] >> 4; });
        const int64_t nPadded = (nBytes + 1) / 2 * 2;
        if (nRoom < nPadded) return false;
        p += nPadded;
        return true;
    }

    // Handles the byte after a count of 0. False at the end.
    bool Escape(BYTE nCode) {
        if (nCode == kEndOfBitmap) return false;
        if (nCode == kEndOfLine) {
            Move(-x, 1);
            return true;
        }
        if (nCode != kDelta) return PutPlain(nCode);
        if (picture.pEnd - p < 2) return false;
        Move(p[0], p[1]);
        p += 2;
        return true;
    }
};

}  // namespace

void DrawDibRuns(const DibPicture& picture, const DibWindow& window) {
    RunReader reader(picture, window);
    while (!reader.IsPast() && picture.pEnd - reader.p >= 2) {
        const BYTE nCount = reader.p[0], nCode = reader.p[1];
        reader.p += 2;
        if (nCount)
            reader.PutRun(nCount, nCode);
        else if (!reader.Escape(nCode))
            return;
    }
}
