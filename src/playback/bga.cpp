// Picture events: which rectangle of which picture is drawn where in its layer.
#include <cstdlib>

#include "display/ddraw.h"
#include "display/dib.h"
#include "playback/bga.h"
#include "playback/layout.h"
#include "playback/playback.h"
#include "system/globals.h"

namespace {

bool FitsLong(int64_t n) {
    return n >= INT32_MIN && n <= INT32_MAX;
}

// A rectangle that does not fit 32 bits lies outside every picture.
bool SetRect(RECT* pRect, int64_t nLeft, int64_t nTop, int64_t nRight, int64_t nBottom) {
    if (!FitsLong(nLeft) || !FitsLong(nTop) || !FitsLong(nRight) || !FitsLong(nBottom)) return false;
    if (nLeft >= nRight || nTop >= nBottom) return false;
    *pRect = {static_cast<LONG>(nLeft), static_cast<LONG>(nTop), static_cast<LONG>(nRight),
              static_cast<LONG>(nBottom)};
    return true;
}

// Number of rows. The height of a top-down picture is negative.
int64_t RowsOf(const CDib* pDib) {
    return pDib ? std::llabs(int64_t{pDib->GetHeight()}) : 0;
}

// Clips one axis of a definition to both edges of the layer.
void ClipToLayer(int64_t* pnFirst, int64_t* pnEnd, int64_t* pnDest) {
    if (*pnDest < 0) {
        *pnFirst -= *pnDest;
        *pnDest = 0;
    }
    const int64_t nLength = *pnEnd - *pnFirst;
    if (*pnDest + nLength > LAYER_SIZE) *pnEnd += LAYER_SIZE - *pnDest - nLength;
}

void FirePicture(CDib* pDib, int nLayer) {
    BgaRects rects;
    const bool bSeen = pDib && PlaceWholePicture(pDib->GetWidth(), RowsOf(pDib), &rects);
    g_pDDraw->DrawDib(bSeen ? pDib : nullptr, &rects.dest, &rects.source, nLayer);
}

void FireDefinition(const BgaDef* pDef, int nLayer) {
    BgaRects rects;
    const bool bSlot = pDef && pDef->nBmp >= 0 && pDef->nBmp < DDRAW_SLOTS;
    const bool bSeen = bSlot && PlaceDefinition(*pDef, RowsOf(g_pDDraw->m_apDib[pDef->nBmp]), &rects);
    if (bSeen)
        g_pDDraw->DrawDibSlot(pDef->nBmp, &rects.dest, &rects.source, nLayer);
    else
        g_pDDraw->DrawDib(nullptr, nullptr, nullptr, nLayer);
}

}  // namespace

bool PlaceWholePicture(int64_t nWidth, int64_t nRows, BgaRects* pRects) {
    const bool bWide = nWidth > LAYER_SIZE, bTall = nRows > LAYER_SIZE;
    const int64_t nLeft = bWide ? 0 : LAYER_SIZE / 2 - nWidth / 2;
    const int64_t nRight = bWide ? LAYER_SIZE : nLeft + nWidth;
    return SetRect(&pRects->dest, nLeft, 0, nRight, bTall ? LAYER_SIZE : nRows) &&
           SetRect(&pRects->source, 0, bTall ? nRows - LAYER_SIZE : 0, bWide ? LAYER_SIZE : nWidth, nRows);
}

bool PlaceDefinition(const BgaDef& def, int64_t nRows, BgaRects* pRects) {
    if (def.nX2 < def.nX1 || def.nY2 < def.nY1) return false;
    int64_t nLeft = def.nX1, nTop = def.nY1, nRight = def.nX2, nBottom = def.nY2;
    int64_t nDestX = def.nDX, nDestY = def.nDY;
    ClipToLayer(&nLeft, &nRight, &nDestX);
    ClipToLayer(&nTop, &nBottom, &nDestY);
    const int64_t nWidth = nRight - nLeft, nHeight = nBottom - nTop;
    return SetRect(&pRects->dest, nDestX, nDestY, nDestX + nWidth, nDestY + nHeight) &&
           SetRect(&pRects->source, nLeft, nRows - nTop - nHeight, nRight, nRows - nTop);
}

void FireBga(const BmsEvent* pEvent) {
    if (!g_pDDraw) return;
    const int32_t nChannel = pEvent->nChannel;
    if (IsLayer(nChannel))
        FirePicture(static_cast<CDib*>(pEvent->pObject), nChannel);
    else if (nChannel > BGADEF_CHANNEL_BASE && IsLayer(nChannel - BGADEF_CHANNEL_BASE))
        FireDefinition(static_cast<const BgaDef*>(pEvent->pObject), nChannel - BGADEF_CHANNEL_BASE);
}
