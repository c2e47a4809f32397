// Surfaces of 32-bit pixels 0x00RRGGBB in memory. The primary surface is the desktop; only the area of the
// program's own window can be drawn there.
#pragma once

#include "platform/wintypes.h"

struct DDCOLORKEY {
    DWORD dwColorSpaceLowValue, dwColorSpaceHighValue;
};

struct DDSURFACEDESC2 {  // only the fields in use
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

// Out-parameters are cleared before any check. A rejected call draws nothing.
class IDirectDrawSurface7 {
public:
    // Copies a rectangle of pSource (null: all of it) to x, y. With DDBLTFAST_SRCCOLORKEY, skips pixels of
    // the source's key colour. On the primary surface, draws only inside the window's client area.
    //
    // DDERR_INVALIDRECT: the destination sticks out, or the source rectangle is empty or outside its surface.
    // DDERR_NOCOLORKEY: keyed, but the source has no key. DDERR_UNSUPPORTED: onto itself, from the primary
    // surface, or keyed onto it.
    HRESULT BltFast(DWORD x, DWORD y, IDirectDrawSurface7* pSource, const RECT* pSourceRect, DWORD dwFlags);
    // Fills the surface with pFx->dwFillColor, ignoring its top byte. Only DDBLT_COLORFILL without rectangles
    // and a source, with or without DDBLT_WAIT; otherwise DDERR_UNSUPPORTED.
    HRESULT Blt(const RECT* pDestRect, IDirectDrawSurface7* pSource, const RECT* pSourceRect, DWORD dwFlags,
                const DDBLTFX* pFx);
    // A context for GDI drawing, valid until ReleaseDC (DDERR_NODC). One at a time (DDERR_DCALREADYCREATED).
    HRESULT GetDC(HDC* phDC);
    HRESULT ReleaseDC(HDC hDC);
    HRESULT GetSurfaceDesc(
        DDSURFACEDESC2* pDesc);  // size and kind; the primary surface has the desktop's current size
    // DDCKEY_SRCBLT with a single value; null removes the key. A range of values is DDERR_UNSUPPORTED.
    HRESULT SetColorKey(DWORD dwFlags, const DDCOLORKEY* pKey);
    DWORD Release();  // frees it; 0

    struct State;
    State* m_pState;
};

class IDirectDraw7 {
public:
    HRESULT SetCooperativeLevel(HWND hWnd, DWORD dwFlags);  // DDSCL_NORMAL only
    // The primary surface (one at a time, DDSD_CAPS only), or a black off-screen surface of 1 to 8192 pixels
    // per side. Owned by the caller; may outlive this object.
    HRESULT CreateSurface(const DDSURFACEDESC2* pDesc, IDirectDrawSurface7** ppSurface, void* pOuter);
    DWORD Release();  // frees it; 0

    struct State;
    State* m_pState;
};

// Default driver (null) and IID_IDirectDraw7 only. Owned by the caller until Release.
HRESULT DirectDrawCreateEx(const GUID* pDriver, IDirectDraw7** ppDD, const GUID& iid, void* pOuter);
