// The display: surfaces, presenting the picture in the window, and the 576 image slots.
#pragma once

#include "platform/graphics/directdraw.h"
#include "platform/wintypes.h"

class CDib;

constexpr int DDRAW_PARTS = 8;
constexpr int DDRAW_SLOTS = 576;

class CDDraw {
public:
    CDDraw();
    ~CDDraw();
    CDDraw(const CDDraw&) = delete;
    CDDraw& operator=(const CDDraw&) = delete;

    int Init(HWND hWnd, int x, int y, int nWidth, int nHeight);  // 0, or 1 after a message box
    // Puts the window on top with this client size, at x, y (both -1: where it is). Returns the result of
    // SetWindowPos.
    int FitWindow(HWND hWnd, int x, int y, int nWidth, int nHeight);
    int CreateParts(int nParts, int nWidth, int nHeight);                 // 0, or 1 after a message box
    int LoadParts(HBITMAP hBitmap, int nWidth, int nHeight, int nParts);  // 0, or 1
    HRESULT ClearParts(int nParts, DWORD dwColor);
    // Blit to the back surface; pRect null: the whole parts surface. BltBackKey treats black as transparent.
    HRESULT BltBack(int x, int y, const RECT* pRect, int nParts);
    HRESULT BltBackKey(int x, int y, const RECT* pRect, int nParts);
    int Present();  // shows the back surface and paces the caller; 1 when the window is off the desktop

    int LoadDib(const char* pszFile, int nSlot);  // 0, or 1 and the slot is empty
    int FreeDib(int nSlot);                       // 0
    // Clears a parts surface and draws a picture into it, if any (null or an empty slot: none). 0, or 1.
    int DrawDib(CDib* pDib, const RECT* pDest, const RECT* pSource, int nParts);
    int DrawDibSlot(int nSlot, const RECT* pDest, const RECT* pSource, int nParts);

    IDirectDraw7* m_pDD;
    IDirectDrawSurface7* m_apParts[DDRAW_PARTS];
    IDirectDrawSurface7* m_pFront;
    IDirectDrawSurface7* m_pBack;
    int32_t m_nFrontW, m_nFrontH;
    int32_t m_nBackW, m_nBackH;
    int32_t m_nWidth, m_nHeight;
    HWND m_hWnd;
    DWORD m_dwLastPresent;
    DWORD m_dwThisPresent;
    CDib* m_apDib[DDRAW_SLOTS];  // owned; null when empty
};

// The current size of a surface. Returns the result of GetSurfaceDesc; on failure both values are unchanged.
HRESULT ReadSurfaceSize(IDirectDrawSurface7* pSurface, int32_t* pnWidth, int32_t* pnHeight);
