// The main window and its title.
#pragma once

#include <cstdint>

#include "platform/wintypes.h"

constexpr char LOADING_TITLE[] = "Now Initializing & Loading...";

// x, y: outer corner in desktop pixels; -1 when not given. Returns null on failure.
HWND CreateMainWindow(HINSTANCE hInstance, int nIcon, const char* pszTitle, const char* pszClass, int x,
                      int y);
// Sets the window title. Null genre, title or artist show placeholders. Returns the result of SetWindowTextA.
BOOL SetChartTitle(HWND hWnd, const char* pszPrefix, const char* pszGenre, const char* pszText1,
                   const char* pszTitle, const char* pszText2, const char* pszArtist, const char* pszEnd);
void ShowLoadingTitle();  // shown while a load blocks the thread
void ShowChartTitle();    // from the texts of the loaded chart
