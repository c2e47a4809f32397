// Surfaces: 32-bit pixels 0x00RRGGBB in memory; the primary one is the desktop, of which only the program's own
// window can be drawn.
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
constexpr HRESULT DDERR_PRIMARYSURFACEALREADYEXISTS = static_cast<HRESULT>(0x88760234u);

class IDirectDrawSurface7 {
public:
    // Copies a rectangle of pSource (null: all of it) to x, y. A destination that would stick out, or a source
    // rectangle outside its surface, is refused with DDERR_INVALIDRECT and nothing is drawn.
    HRESULT BltFast(DWORD x, DWORD y, IDirectDrawSurface7* pSource, const RECT* pSourceRect, DWORD dwFlags);
    HRESULT Blt(const RECT* pDestRect, IDirectDrawSurface7* pSource, const RECT* pSourceRect, DWORD dwFlags,
                const DDBLTFX* pFx);
    HRESULT GetDC(HDC* phDC);
    HRESULT ReleaseDC(HDC hDC);
    HRESULT GetSurfaceDesc(DDSURFACEDESC2* pDesc);
    HRESULT SetColorKey(DWORD dwFlags, const DDCOLORKEY* pKey);
    DWORD Release();  // the references left; 0 frees it

    struct State;
    State* m_pState;
};

class IDirectDraw7 {
public:
    HRESULT SetCooperativeLevel(HWND hWnd, DWORD dwFlags);
    HRESULT CreateSurface(const DDSURFACEDESC2* pDesc, IDirectDrawSurface7** ppSurface, void* pOuter);
    DWORD Release();

    struct State;
    State* m_pState;
};

HRESULT DirectDrawCreateEx(const GUID* pDriver, IDirectDraw7** ppDD, const GUID& iid, void* pOuter);
