// The 576 image slots, and drawing pictures into parts surfaces.
#include <new>

#include "display/ddraw.h"
#include "display/dib.h"

namespace {

bool IsSlot(int nSlot) {
    return nSlot >= 0 && nSlot < DDRAW_SLOTS;
}

}  // namespace

int CDDraw::LoadDib(const char* pszFile, int nSlot) {
    if (!IsSlot(nSlot)) return 1;
    FreeDib(nSlot);
    m_apDib[nSlot] = new (std::nothrow) CDib;
    if (!m_apDib[nSlot]) return 1;
    if (m_apDib[nSlot]->Load(pszFile) == 0) return 0;
    FreeDib(nSlot);
    return 1;
}

int CDDraw::FreeDib(int nSlot) {
    if (!IsSlot(nSlot)) return 0;
    delete m_apDib[nSlot];
    m_apDib[nSlot] = nullptr;
    return 0;
}

int CDDraw::DrawDib(CDib* pDib, const RECT* pDest, const RECT* pSource, int nParts) {
    if (nParts < 0 || nParts >= DDRAW_PARTS || !m_apParts[nParts]) return 1;
    ClearParts(nParts, 0);
    if (!pDib) return 0;
    HDC hDC = nullptr;
    if (m_apParts[nParts]->GetDC(&hDC) < 0) return 1;
    pDib->Draw(hDC, pDest, pSource);
    m_apParts[nParts]->ReleaseDC(hDC);
    return 0;
}

int CDDraw::DrawDibSlot(int nSlot, const RECT* pDest, const RECT* pSource, int nParts) {
    return DrawDib(IsSlot(nSlot) ? m_apDib[nSlot] : nullptr, pDest, pSource, nParts);
}
