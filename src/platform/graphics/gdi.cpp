#include "platform/graphics/gdi.h"

#include <algorithm>
#include <new>

#include "platform/graphics/gdi_object.h"
#include "platform/graphics/surface_copy.h"

namespace {

GdiObject* BlackBrush() {
    static GdiObject brush = [] {
        GdiObject object;
        object.eKind = GdiKind::kBrush;
        object.nId = BLACK_BRUSH;
        object.bShared = true;
        return object;
    }();
    return &brush;
}

// The initial object of a memory context.
GdiObject* EmptyBitmap() {
    static GdiObject bitmap = [] {
        GdiObject object;
        object.bShared = true;
        return object;
    }();
    return &bitmap;
}

DeviceContext* DesktopContext() {
    static DeviceContext context;
    return &context;
}

PixelView ViewOf(GdiObject* pBitmap) {
    return {pBitmap->pixels.data(), pBitmap->nWidth, pBitmap->nHeight, static_cast<size_t>(pBitmap->nWidth)};
}

void Hold(DeviceContext* pContext, GdiObject* pBitmap) {
    if (pContext->pSelected) --pContext->pSelected->nSelected;
    ++pBitmap->nSelected;
    pContext->pSelected = pBitmap;
    pContext->view = ViewOf(pBitmap);
}

// Clips a blit to both pictures along one axis. False when nothing is left.
bool CutSpan(int64_t* pnDest, int64_t* pnSource, int64_t* pnLength, int nDestSize, int nSourceSize) {
    const int64_t nBefore = std::max({int64_t{0}, -*pnDest, -*pnSource});
    *pnDest += nBefore;
    *pnSource += nBefore;
    *pnLength = std::min({*pnLength - nBefore, nDestSize - *pnDest, nSourceSize - *pnSource});
    return *pnLength > 0;
}

}  // namespace

HGDIOBJ GetStockObject(int nObject) {
    return nObject == BLACK_BRUSH ? BlackBrush() : nullptr;
}

HBITMAP LoadBitmapA(HINSTANCE hInstance, int nId) {
    if (!hInstance) return nullptr;
    for (int i = 0; i < hInstance->nBitmaps; ++i) {
        const BitmapResource& resource = hInstance->pBitmaps[i];
        if (resource.nId != nId) continue;
        auto* pBitmap = new GdiObject;
        pBitmap->nId = nId;
        pBitmap->nWidth = resource.nWidth;
        pBitmap->nHeight = resource.nHeight;
        pBitmap->pixels.resize(static_cast<size_t>(resource.nWidth) * static_cast<size_t>(resource.nHeight));
        resource.pfnDraw(pBitmap->pixels.data());
        return pBitmap;
    }
    return nullptr;
}

BOOL DeleteObject(HGDIOBJ hObject) {
    if (!hObject || hObject->nSelected > 0) return 0;
    if (!hObject->bShared) delete hObject;
    return 1;
}

HDC GetDC(HWND hWnd) {
    return hWnd ? nullptr : DesktopContext();
}

int ReleaseDC(HWND hWnd, HDC hDC) {
    return !hWnd && hDC == DesktopContext();
}

HDC CreateCompatibleDC(HDC hDC) {
    auto* pContext = new (std::nothrow) DeviceContext;
    if (!pContext) return nullptr;
    pContext->eKind = DeviceContext::Kind::kMemory;
    Hold(pContext, EmptyBitmap());
    return pContext;
}

BOOL DeleteDC(HDC hDC) {
    if (!hDC || hDC->eKind != DeviceContext::Kind::kMemory) return 0;
    --hDC->pSelected->nSelected;
    delete hDC;
    return 1;
}

HGDIOBJ SelectObject(HDC hDC, HGDIOBJ hObject) {
    if (!hDC || hDC->eKind != DeviceContext::Kind::kMemory) return nullptr;
    if (!hObject || hObject->eKind != GdiKind::kBitmap) return nullptr;
    GdiObject* pBefore = hDC->pSelected;
    Hold(hDC, hObject);
    return pBefore;
}

BOOL BitBlt(HDC hDest, int x, int y, int nWidth, int nHeight, HDC hSource, int nSourceX, int nSourceY,
            DWORD dwRop) {
    if (!hDest || !hSource || dwRop != SRCCOPY) return 0;
    const PixelView &to = hDest->view, &from = hSource->view;
    if (!to.pPixels || !from.pPixels || to.pPixels == from.pPixels) return 0;
    int64_t nToX = x, nToY = y, nFromX = nSourceX, nFromY = nSourceY, nColumns = nWidth, nRows = nHeight;
    if (!CutSpan(&nToX, &nFromX, &nColumns, to.nWidth, from.nWidth)) return 1;
    if (!CutSpan(&nToY, &nFromY, &nRows, to.nHeight, from.nHeight)) return 1;
    CopyPixels(to.pPixels + static_cast<size_t>(nToY) * to.nStride + nToX, to.nStride,
               from.pPixels + static_cast<size_t>(nFromY) * from.nStride + nFromX, from.nStride,
               static_cast<size_t>(nColumns), static_cast<size_t>(nRows));
    return 1;
}
