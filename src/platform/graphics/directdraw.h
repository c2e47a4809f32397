// Surfaces: 32-bit pixels 0x00RRGGBB in memory; the primary one is the desktop, of which only the program's
// own window can be drawn.
#pragma once

#include "platform/wintypes.h"

struct DDCOLORKEY {
    DWORD dwColorSpaceLowValue, dwColorSpaceHighValue;
};

struct DDSURFACEDESC2 {  // the fields that are used
    DWORD dwSize;        // sizeof(DDSURFACEDESC2)
    DWORD dwFlags;
    DWORD dwHeight, dwWidth;
    struct {
        DWORD dwCaps;
    } ddsCaps;
};

struct DDBLTFX {
    DWORD dwSize;
    DWORD dwFillColor;
};

struct GUID {
    DWORD Data1;
    WORD Data2, Data3;
    BYTE Data4[8];
};
extern const GUID IID_IDirectDraw7;

constexpr DWORD DDSD_CAPS = 1, DDSD_HEIGHT = 2, DDSD_WIDTH = 4;
constexpr DWORD DDSCAPS_OFFSCREENPLAIN = 0x40, DDSCAPS_PRIMARYSURFACE = 0x200;
constexpr DWORD DDSCL_NORMAL = 8;
constexpr DWORD DDCKEY_SRCBLT = 8;
constexpr DWORD DDBLT_COLORFILL = 0x400, DDBLT_WAIT = 0x01000000;
constexpr DWORD DDBLTFAST_SRCCOLORKEY = 1, DDBLTFAST_WAIT = 0x10;

constexpr HRESULT DD_OK = 0;
constexpr HRESULT DDERR_GENERIC = E_FAIL;
constexpr HRESULT DDERR_INVALIDPARAMS = E_INVALIDARG;
constexpr HRESULT DDERR_OUTOFMEMORY = E_OUTOFMEMORY;
constexpr HRESULT DDERR_UNSUPPORTED = E_NOTIMPL;
constexpr HRESULT DDERR_INVALIDRECT = static_cast<HRESULT>(0x88760096u);
constexpr HRESULT DDERR_NOCOLORKEY = static_cast<HRESULT>(0x887600D7u);
constexpr HRESULT DDERR_DCALREADYCREATED = static_cast<HRESULT>(0x8876026Cu);
constexpr HRESULT DDERR_NODC = static_cast<HRESULT>(0x8876026Au);
constexpr HRESULT DDERR_NOCOOPERATIVELEVELSET = static_cast<HRESULT>(0x887600D4u);
constexpr HRESULT DDERR_PRIMARYSURFACEALREADYEXISTS = static_cast<HRESULT>(0x88760234u);

// Out-parameters are cleared before anything is checked. A call that is refused draws nothing.
class IDirectDrawSurface7 {
public:
    // Copies a rectangle of pSource (null: all of it) to x, y; with DDBLTFAST_SRCCOLORKEY all but the pixels
    // of the source's key. A destination that would stick out, or a source rectangle that is empty or outside
    // its surface, gives DDERR_INVALIDRECT; a keyed copy from a surface without a key DDERR_NOCOLORKEY; one
    // onto itself, from the primary surface or with a key onto it DDERR_UNSUPPORTED. On the primary surface
    // the picture shows where the window's client area lies, and nowhere else.
    HRESULT BltFast(DWORD x, DWORD y, IDirectDrawSurface7* pSource, const RECT* pSourceRect, DWORD dwFlags);
    // Fills a rectangle (null: all) with pFx->dwFillColor, whose top byte counts for nothing. Only
    // DDBLT_COLORFILL, with or without DDBLT_WAIT, and no source; anything else is DDERR_UNSUPPORTED.
    HRESULT Blt(const RECT* pDestRect, IDirectDrawSurface7* pSource, const RECT* pSourceRect, DWORD dwFlags,
                const DDBLTFX* pFx);
    // A context for GDI drawing, one at a time (DDERR_DCALREADYCREATED), valid until its ReleaseDC
    // (DDERR_NODC).
    HRESULT GetDC(HDC* phDC);
    HRESULT ReleaseDC(HDC hDC);
    HRESULT GetSurfaceDesc(DDSURFACEDESC2* pDesc);  // size and kind; of the primary surface the desktop's now
    // DDCKEY_SRCBLT with one value, null for no key; a range of values is DDERR_UNSUPPORTED.
    HRESULT SetColorKey(DWORD dwFlags, const DDCOLORKEY* pKey);
    DWORD Release();  // frees it; 0

    struct State;
    State* m_pState;
};

class IDirectDraw7 {
public:
    HRESULT SetCooperativeLevel(HWND hWnd, DWORD dwFlags);  // DDSCL_NORMAL alone
    // The primary surface (one at a time, DDSD_CAPS alone), or an off-screen one of 1 to 8192 pixels on each
    // side, black. Owned by the caller; may outlive this object.
    HRESULT CreateSurface(const DDSURFACEDESC2* pDesc, IDirectDrawSurface7** ppSurface, void* pOuter);
    DWORD Release();  // frees it; 0

    struct State;
    State* m_pState;
};

// The default driver (null) and IID_IDirectDraw7 alone. The object is the caller's until Release.
HRESULT DirectDrawCreateEx(const GUID* pDriver, IDirectDraw7** ppDD, const GUID& iid, void* pOuter);
