#include "platform/graphics/directdraw.h"

#include <cstdlib>
#include <new>

#include "host/host.h"
#include "platform/graphics/gdi_object.h"
#include "platform/graphics/surface_copy.h"
#include "platform/watch.h"

const GUID IID_IDirectDraw7 = {0x15E65EC0, 0x3B9C, 0x11D2, {0xB9, 0x2F, 0x00, 0x60, 0x97, 0x97, 0xEA, 0x5B}};

struct IDirectDraw7::State {
    bool bPrimary = false;      // the one primary surface exists
    bool bCooperative = false;  // the level has been set
    int nReferences = 1;        // the owner's and one of each surface
};

struct IDirectDrawSurface7::State {
    IDirectDraw7::State* pOwner = nullptr;
    bool bPrimary = false;
    PixelView view;  // of the primary surface the size alone: the desktop has no pixels here
    bool bKey = false;
    DWORD nKey = 0;
    DeviceContext dc;
    bool bDC = false;
};

namespace {

constexpr DWORD kMaxSide = 8192;   // of a surface, in pixels
constexpr size_t kRowPixels = 16;  // rows begin on cache lines
constexpr DWORD kColorMask = 0x00FFFFFF;

void ReleaseOwner(IDirectDraw7::State* pOwner) {
    if (--pOwner->nReferences == 0) delete pOwner;
}

RECT WholeOf(const PixelView& view) {
    return {0, 0, view.nWidth, view.nHeight};
}

bool IsInside(const RECT& r, const PixelView& view) {
    return r.left >= 0 && r.top >= 0 && r.left < r.right && r.top < r.bottom && r.right <= view.nWidth &&
           r.bottom <= view.nHeight;
}

// The desktop may have changed its size since the surface was made.
void RefreshPrimary(PixelView* pView) {
    host::GetDesktopSize(&pView->nWidth, &pView->nHeight);
}

void ShowOnDesktop(int x, int y, const RECT& source, const PixelView& view) {
    const host::WindowPlace place = host::GetWindowPlace();
    host::ShowPixels(x - place.client.left, y - place.client.top, source.right - source.left,
                     source.bottom - source.top,
                     view.pPixels + static_cast<size_t>(source.top) * view.nStride + source.left,
                     static_cast<int>(view.nStride));
}

bool AllocatePixels(PixelView* pView, DWORD nWidth, DWORD nHeight) {
    const size_t nStride = (nWidth + kRowPixels - 1) / kRowPixels * kRowPixels;
    const size_t nBytes = nStride * nHeight * sizeof(uint32_t);
    auto* pPixels = static_cast<uint32_t*>(std::aligned_alloc(kRowPixels * sizeof(uint32_t), nBytes));
    if (!pPixels) return false;
    FillPixels(pPixels, nStride, nStride, nHeight, 0);
    *pView = {pPixels, static_cast<int>(nWidth), static_cast<int>(nHeight), nStride};
    return true;
}

HRESULT FillSurface(IDirectDraw7* pDD, const DDSURFACEDESC2& desc, IDirectDrawSurface7::State* pSurface) {
    IDirectDraw7::State* pOwner = pDD->m_pState;
    HRESULT hr;
    if (desc.dwFlags == DDSD_CAPS && desc.ddsCaps.dwCaps == DDSCAPS_PRIMARYSURFACE) {
        if (pOwner->bPrimary) return DDERR_PRIMARYSURFACEALREADYEXISTS;
        if (Hooked(&hr, PlatformCall::kCreatePrimary, pDD)) return hr;
        pSurface->bPrimary = pOwner->bPrimary = true;
        RefreshPrimary(&pSurface->view);
        return DD_OK;
    }
    if (desc.dwFlags != (DDSD_CAPS | DDSD_WIDTH | DDSD_HEIGHT) ||
        desc.ddsCaps.dwCaps != DDSCAPS_OFFSCREENPLAIN)
        return DDERR_UNSUPPORTED;
    if (desc.dwWidth == 0 || desc.dwHeight == 0 || desc.dwWidth > kMaxSide || desc.dwHeight > kMaxSide)
        return DDERR_INVALIDPARAMS;
    if (Hooked(&hr, PlatformCall::kCreateSurface, pDD)) return hr;
    return AllocatePixels(&pSurface->view, desc.dwWidth, desc.dwHeight) ? DD_OK : DDERR_OUTOFMEMORY;
}

}  // namespace

HRESULT DirectDrawCreateEx(const GUID* pDriver, IDirectDraw7** ppDD, const GUID& iid, void* pOuter) {
    if (!ppDD) return DDERR_INVALIDPARAMS;
    *ppDD = nullptr;
    if (pDriver || pOuter) return DDERR_UNSUPPORTED;
    if (&iid != &IID_IDirectDraw7) return DDERR_INVALIDPARAMS;
    if (HRESULT hr; Hooked(&hr, PlatformCall::kDirectDrawCreate)) return hr;
    auto* pState = new (std::nothrow) IDirectDraw7::State;
    auto* pDD = new (std::nothrow) IDirectDraw7{pState};
    if (!pState || !pDD) {
        delete pState;
        delete pDD;
        return DDERR_OUTOFMEMORY;
    }
    *ppDD = pDD;
    return DD_OK;
}

HRESULT IDirectDraw7::SetCooperativeLevel(HWND hWnd, DWORD dwFlags) {
    if (dwFlags != DDSCL_NORMAL) return DDERR_INVALIDPARAMS;
    if (HRESULT hr; Hooked(&hr, PlatformCall::kDisplayLevel, this)) return hr;
    m_pState->bCooperative = true;
    return DD_OK;
}

HRESULT IDirectDraw7::CreateSurface(const DDSURFACEDESC2* pDesc, IDirectDrawSurface7** ppSurface,
                                    void* pOuter) {
    if (!ppSurface) return DDERR_INVALIDPARAMS;
    *ppSurface = nullptr;
    if (!pDesc || pDesc->dwSize != sizeof(DDSURFACEDESC2) || pOuter) return DDERR_INVALIDPARAMS;
    if (!m_pState->bCooperative) return DDERR_NOCOOPERATIVELEVELSET;
    auto* pState = new (std::nothrow) IDirectDrawSurface7::State;
    auto* pSurface = new (std::nothrow) IDirectDrawSurface7{pState};
    HRESULT hr = pState && pSurface ? FillSurface(this, *pDesc, pState) : DDERR_OUTOFMEMORY;
    if (hr < 0) {
        delete pState;
        delete pSurface;
        return hr;
    }
    pState->pOwner = m_pState;
    ++m_pState->nReferences;
    *ppSurface = pSurface;
    return DD_OK;
}

DWORD IDirectDraw7::Release() {
    if (DWORD nLeft; Hooked(&nLeft, PlatformCall::kDirectDrawRelease, this)) return nLeft;
    ReleaseOwner(m_pState);
    delete this;
    return 0;
}

HRESULT IDirectDrawSurface7::BltFast(DWORD x, DWORD y, IDirectDrawSurface7* pSource, const RECT* pSourceRect,
                                     DWORD dwFlags) {
    if (!pSource || (dwFlags & ~(DDBLTFAST_SRCCOLORKEY | DDBLTFAST_WAIT))) return DDERR_INVALIDPARAMS;
    const State& from = *pSource->m_pState;
    const bool bKeyed = dwFlags & DDBLTFAST_SRCCOLORKEY;
    if (from.bPrimary || pSource == this || (m_pState->bPrimary && bKeyed)) return DDERR_UNSUPPORTED;
    if (bKeyed && !from.bKey) return DDERR_NOCOLORKEY;
    if (m_pState->bPrimary) RefreshPrimary(&m_pState->view);
    const PixelView& to = m_pState->view;
    const RECT r = pSourceRect ? *pSourceRect : WholeOf(from.view);
    if (!IsInside(r, from.view)) return DDERR_INVALIDRECT;
    const auto nWidth = static_cast<size_t>(r.right - r.left),
               nHeight = static_cast<size_t>(r.bottom - r.top);
    if (x + nWidth > static_cast<size_t>(to.nWidth) || y + nHeight > static_cast<size_t>(to.nHeight))
        return DDERR_INVALIDRECT;
    const RECT dest = {static_cast<LONG>(x), static_cast<LONG>(y), static_cast<LONG>(x + nWidth),
                       static_cast<LONG>(y + nHeight)};
    if (HRESULT hr; Hooked(&hr, PlatformCall::kBltFast, this, dwFlags, pSource, dest, r)) return hr;
    if (m_pState->bPrimary) {
        ShowOnDesktop(dest.left, dest.top, r, from.view);
        return DD_OK;
    }
    uint32_t* pTo = to.pPixels + y * to.nStride + x;
    const uint32_t* pFrom = from.view.pPixels + static_cast<size_t>(r.top) * from.view.nStride + r.left;
    if (bKeyed)
        CopyPixelsKeyed(pTo, to.nStride, pFrom, from.view.nStride, nWidth, nHeight, from.nKey);
    else
        CopyPixels(pTo, to.nStride, pFrom, from.view.nStride, nWidth, nHeight);
    return DD_OK;
}

HRESULT IDirectDrawSurface7::Blt(const RECT* pDestRect, IDirectDrawSurface7* pSource, const RECT* pSourceRect,
                                 DWORD dwFlags, const DDBLTFX* pFx) {
    if (pDestRect || pSource || pSourceRect || (dwFlags & ~DDBLT_WAIT) != DDBLT_COLORFILL ||
        m_pState->bPrimary)
        return DDERR_UNSUPPORTED;
    if (!pFx || pFx->dwSize != sizeof(DDBLTFX)) return DDERR_INVALIDPARAMS;
    const PixelView& view = m_pState->view;
    if (HRESULT hr; Hooked(&hr, PlatformCall::kFill, this, pFx->dwFillColor)) return hr;
    FillPixels(view.pPixels, view.nStride, static_cast<size_t>(view.nWidth),
               static_cast<size_t>(view.nHeight), pFx->dwFillColor & kColorMask);
    return DD_OK;
}

HRESULT IDirectDrawSurface7::GetDC(HDC* phDC) {
    if (!phDC) return DDERR_INVALIDPARAMS;
    *phDC = nullptr;
    if (m_pState->bPrimary) return DDERR_UNSUPPORTED;
    if (m_pState->bDC) return DDERR_DCALREADYCREATED;
    if (HRESULT hr; Hooked(&hr, PlatformCall::kSurfaceDC, this)) return hr;
    m_pState->dc = {DeviceContext::Kind::kSurface, m_pState->view, nullptr};
    m_pState->bDC = true;
    *phDC = &m_pState->dc;
    return DD_OK;
}

HRESULT IDirectDrawSurface7::ReleaseDC(HDC hDC) {
    if (!m_pState->bDC || hDC != &m_pState->dc) return DDERR_NODC;
    m_pState->bDC = false;
    m_pState->dc.view = {};
    return DD_OK;
}

HRESULT IDirectDrawSurface7::GetSurfaceDesc(DDSURFACEDESC2* pDesc) {
    if (!pDesc || pDesc->dwSize != sizeof(DDSURFACEDESC2)) return DDERR_INVALIDPARAMS;
    *pDesc = {};
    pDesc->dwSize = sizeof(DDSURFACEDESC2);
    if (HRESULT hr; Hooked(&hr, PlatformCall::kSurfaceDesc, this)) return hr;
    if (m_pState->bPrimary) RefreshPrimary(&m_pState->view);
    pDesc->dwFlags = DDSD_CAPS | DDSD_WIDTH | DDSD_HEIGHT;
    pDesc->dwWidth = static_cast<DWORD>(m_pState->view.nWidth);
    pDesc->dwHeight = static_cast<DWORD>(m_pState->view.nHeight);
    pDesc->ddsCaps.dwCaps = m_pState->bPrimary ? DDSCAPS_PRIMARYSURFACE : DDSCAPS_OFFSCREENPLAIN;
    return DD_OK;
}

HRESULT IDirectDrawSurface7::SetColorKey(DWORD dwFlags, const DDCOLORKEY* pKey) {
    if (dwFlags != DDCKEY_SRCBLT || m_pState->bPrimary) return DDERR_UNSUPPORTED;
    if (pKey && pKey->dwColorSpaceLowValue != pKey->dwColorSpaceHighValue) return DDERR_UNSUPPORTED;
    m_pState->bKey = pKey != nullptr;
    m_pState->nKey = pKey ? pKey->dwColorSpaceLowValue & kColorMask : 0;
    return DD_OK;
}

DWORD IDirectDrawSurface7::Release() {
    if (DWORD nLeft; Hooked(&nLeft, PlatformCall::kSurfaceRelease, this)) return nLeft;
    if (m_pState->bPrimary) m_pState->pOwner->bPrimary = false;
    std::free(m_pState->view.pPixels);
    ReleaseOwner(m_pState->pOwner);
    delete m_pState;
    delete this;
    return 0;
}
