// The main window and its title.
#pragma once

#include <cstdint>

#include "platform/wintypes.h"

// x, y: outer corner in desktop pixels, -1 for not given. Null on failure.
HWND CreateMainWindow(HINSTANCE hInstance, int nIcon, const char* pszTitle, const char* pszClass, int x,
                      int y);
// Composes the title; a null genre, title or artist shows as such. Result of SetWindowTextA.
BOOL SetChartTitle(HWND hWnd, const char* pszPrefix, const char* pszGenre, const char* pszText1,
                   const char* pszTitle, const char* pszText2, const char* pszArtist, const char* pszEnd);
void ShowLoadingTitle();  // stays while a load blocks the thread
void ShowChartTitle();    // from the loaded chart's texts
