#include "display/ddraw.h"

#include "platform/graphics/gdi.h"
#include "platform/timer.h"
#include "platform/window/dialog.h"
#include "platform/window/window.h"

namespace {

int Fail(HWND hWnd, const char* pszText) {
    MessageBoxA(hWnd, pszText, "ERROR!", MB_ICONEXCLAMATION);
    return 1;
}

template <class T>
void ReleaseAndNull(T** pp) {
    if (!*pp) return;
    (*pp)->Release();
    *pp = nullptr;
}

HRESULT CreateOffscreen(IDirectDraw7* pDD, int nWidth, int nHeight, IDirectDrawSurface7** ppSurface) {
    if (!pDD) return DDERR_GENERIC;
    DDSURFACEDESC2 desc = {};
    desc.dwSize = sizeof desc;
    desc.dwFlags = DDSD_CAPS | DDSD_WIDTH | DDSD_HEIGHT;
    desc.ddsCaps.dwCaps = DDSCAPS_OFFSCREENPLAIN;
    desc.dwWidth = static_cast<DWORD>(nWidth);
    desc.dwHeight = static_cast<DWORD>(nHeight);
    return pDD->CreateSurface(&desc, ppSurface, nullptr);
}

HRESULT CreatePrimary(IDirectDraw7* pDD, IDirectDrawSurface7** ppSurface) {
    DDSURFACEDESC2 desc = {};
    desc.dwSize = sizeof desc;
    desc.dwFlags = DDSD_CAPS;
    desc.ddsCaps.dwCaps = DDSCAPS_PRIMARYSURFACE;
    return pDD->CreateSurface(&desc, ppSurface, nullptr);
}

bool IsParts(int nParts) {
    return nParts >= 0 && nParts < DDRAW_PARTS;
}

}  // namespace

HRESULT ReadSurfaceSize(IDirectDrawSurface7* pSurface, int32_t* pnWidth, int32_t* pnHeight) {
    DDSURFACEDESC2 desc = {};
    desc.dwSize = sizeof desc;
    const HRESULT hr = pSurface->GetSurfaceDesc(&desc);
    if (hr < 0) return hr;
    *pnWidth = static_cast<int32_t>(desc.dwWidth);
    *pnHeight = static_cast<int32_t>(desc.dwHeight);
    return hr;
}

CDDraw::CDDraw()
    : m_pDD(nullptr),
      m_apParts(),
      m_pFront(nullptr),
      m_pBack(nullptr),
      m_nFrontW(0),
      m_nFrontH(0),
      m_nBackW(0),
      m_nBackH(0),
      m_nWidth(640),
      m_nHeight(480),
      m_hWnd(nullptr),
      m_dwLastPresent(0),
      m_dwThisPresent(0),
      m_apDib() {}

CDDraw::~CDDraw() {
    for (int i = 0; i < DDRAW_SLOTS; ++i) FreeDib(i);
    for (IDirectDrawSurface7*& pParts : m_apParts) ReleaseAndNull(&pParts);
    ReleaseAndNull(&m_pFront);
    ReleaseAndNull(&m_pBack);
    ReleaseAndNull(&m_pDD);
}

int CDDraw::Init(HWND hWnd, int x, int y, int nWidth, int nHeight) {
    m_hWnd = hWnd;
    m_nWidth = nWidth;
    m_nHeight = nHeight;
    if (DirectDrawCreateEx(nullptr, &m_pDD, IID_IDirectDraw7, nullptr) != DD_OK)
        return Fail(hWnd, "DirectDrawInitError.");
    if (m_pDD->SetCooperativeLevel(hWnd, DDSCL_NORMAL) != DD_OK) return Fail(hWnd, "DirectDrawSetCoopError.");
    FitWindow(hWnd, x, y, nWidth, nHeight);
    if (CreatePrimary(m_pDD, &m_pFront) < 0) return Fail(hWnd, "CreateFrontError");
    if (ReadSurfaceSize(m_pFront, &m_nFrontW, &m_nFrontH) < 0) return Fail(hWnd, "GetFrontDescError");
    if (CreateOffscreen(m_pDD, nWidth, nHeight, &m_pBack) < 0) return Fail(hWnd, "CreateBackError");
    if (ReadSurfaceSize(m_pBack, &m_nBackW, &m_nBackH) < 0) return Fail(hWnd, "GetBackDescError");
    return 0;
}

int CDDraw::FitWindow(HWND hWnd, int x, int y, int nWidth, int nHeight) {
    if (x == -1 && y == -1) {
        RECT place = {};
        GetWindowRect(hWnd, &place);
        x = place.left;
        y = place.top;
    }
    RECT frame = {0, 0, nWidth, nHeight};
    AdjustWindowRectEx(&frame, static_cast<DWORD>(GetWindowLongA(hWnd, GWL_STYLE)), 0,
                       static_cast<DWORD>(GetWindowLongA(hWnd, GWL_EXSTYLE)));
    return SetWindowPos(hWnd, HWND_TOPMOST, x, y, frame.right - frame.left, frame.bottom - frame.top,
                        SWP_SHOWWINDOW);
}

int CDDraw::CreateParts(int nParts, int nWidth, int nHeight) {
    if (!IsParts(nParts)) return 1;
    ReleaseAndNull(&m_apParts[nParts]);
    if (CreateOffscreen(m_pDD, nWidth, nHeight, &m_apParts[nParts]) < 0)
        return Fail(m_hWnd, "CreatePartsError");
    const DDCOLORKEY black = {0, 0};
    m_apParts[nParts]->SetColorKey(DDCKEY_SRCBLT, &black);
    return 0;
}

int CDDraw::LoadParts(HBITMAP hBitmap, int nWidth, int nHeight, int nParts) {
    if (!IsParts(nParts) || !m_apParts[nParts]) return 1;
    HDC hDest = nullptr;
    m_apParts[nParts]->GetDC(&hDest);
    const HDC hDesktop = GetDC(nullptr);
    const HDC hMemory = CreateCompatibleDC(hDesktop);
    const HGDIOBJ hBefore = SelectObject(hMemory, hBitmap);
    BitBlt(hDest, 0, 0, nWidth, nHeight, hMemory, 0, 0, SRCCOPY);
    SelectObject(hMemory, hBefore);
    DeleteDC(hMemory);
    ReleaseDC(nullptr, hDesktop);
    m_apParts[nParts]->ReleaseDC(hDest);
    return 0;
}

HRESULT CDDraw::ClearParts(int nParts, DWORD dwColor) {
    if (!IsParts(nParts) || !m_apParts[nParts]) return 1;
    DDBLTFX fx = {};
    fx.dwSize = sizeof fx;
    fx.dwFillColor = dwColor;
    return m_apParts[nParts]->Blt(nullptr, nullptr, nullptr, DDBLT_COLORFILL | DDBLT_WAIT, &fx);
}

HRESULT CDDraw::BltBack(int x, int y, const RECT* pRect, int nParts) {
    if (!m_pBack || !IsParts(nParts)) return DDERR_INVALIDPARAMS;
    return m_pBack->BltFast(static_cast<DWORD>(x), static_cast<DWORD>(y), m_apParts[nParts], pRect,
                            DDBLTFAST_WAIT);
}

HRESULT CDDraw::BltBackKey(int x, int y, const RECT* pRect, int nParts) {
    if (!m_pBack || !IsParts(nParts)) return DDERR_INVALIDPARAMS;
    return m_pBack->BltFast(static_cast<DWORD>(x), static_cast<DWORD>(y), m_apParts[nParts], pRect,
                            DDBLTFAST_WAIT | DDBLTFAST_SRCCOLORKEY);
}
