#include <algorithm>

#include "platform/graphics/dib_format.h"
#include "platform/graphics/gdi_object.h"
#include "platform/watch.h"

namespace {

// Edges beyond 32 bits wrap, as they do in the caller's own rectangles.
RECT RectAt(int x, int y, int nWidth, int nHeight) {
    return {x, y, static_cast<LONG>(static_cast<DWORD>(x) + static_cast<DWORD>(nWidth)),
            static_cast<LONG>(static_cast<DWORD>(y) + static_cast<DWORD>(nHeight))};
}

}  // namespace

int StretchDIBits(HDC hDC, int nDestX, int nDestY, int nDestWidth, int nDestHeight, int nSourceX,
                  int nSourceY, int nSourceWidth, int nSourceHeight, const void* pBits,
                  const BITMAPINFOHEADER* pInfo, UINT nUsage, DWORD dwRop) {
    if (!hDC || !hDC->view.pPixels || !pBits || !pInfo || nUsage != DIB_RGB_COLORS || dwRop != SRCCOPY)
        return GDI_ERROR;
    if (nDestWidth != nSourceWidth || nDestHeight != nSourceHeight || nDestWidth < 0 || nDestHeight < 0)
        return GDI_ERROR;
    const RECT dest = RectAt(nDestX, nDestY, nDestWidth, nDestHeight),
               source = RectAt(nSourceX, nSourceY, nSourceWidth, nSourceHeight);
    if (int nRows; Hooked(&nRows, PlatformCall::kStretchDIBits, hDC, 0, pBits, dest, source)) return nRows;
    DibPicture picture;
    if (!ReadDibPicture(pInfo, pBits, &picture)) return GDI_ERROR;

    // The picture's position in the destination, then the intersection of all three rectangles.
    const PixelView& view = hDC->view;
    const int64_t nPictureX = int64_t{nDestX} - nSourceX;
    const int64_t nPictureY = int64_t{nDestY} - (picture.nHeight - nSourceY - nSourceHeight);
    const int64_t nLeft = std::max({int64_t{0}, int64_t{nDestX}, nPictureX});
    const int64_t nTop = std::max({int64_t{0}, int64_t{nDestY}, nPictureY});
    const int64_t nRight =
        std::min({int64_t{view.nWidth}, int64_t{nDestX} + nDestWidth, nPictureX + picture.nWidth});
    const int64_t nBottom =
        std::min({int64_t{view.nHeight}, int64_t{nDestY} + nDestHeight, nPictureY + picture.nHeight});
    if (nLeft >= nRight || nTop >= nBottom) return 0;

    const DibWindow window = {view.pPixels + static_cast<size_t>(nTop) * view.nStride + nLeft,
                              view.nStride,
                              nLeft - nPictureX,
                              nTop - nPictureY,
                              nRight - nLeft,
                              nBottom - nTop};
    if (picture.nCompression == BI_RLE8 || picture.nCompression == BI_RLE4)
        DrawDibRuns(picture, window);
    else
        DrawDibRows(picture, window);
    return static_cast<int>(window.nHeight);
}
