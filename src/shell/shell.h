// What a copy of the program is, from its command line to its end.
#pragma once

#include "platform/window.h"
#include "shell/globals.h"

// Messages between copies.
constexpr UINT WM_REMOTE_QUIT = 1125, WM_REMOTE_STOP = 1126, WM_REMOTE_PLAY = 1127, WM_REMOTE_RESTART = 1128,
               WM_REMOTE_SEEK = 1129, WM_REMOTE_SPEED = 1130, WM_REMOTE_LOAD = 1134, WM_REMOTE_HOST = 1224;
constexpr UINT IDM_ABOUT = 256, IDM_LOAD = 257;

constexpr char WINDOW_CLASS[] = "Lumetra_ZN";  // by which copies find each other

// The program. lpCmdLine: the line without the program's name. Gives the exit code: 0, 1 (a remote copy) or
// -1.
int WinMain(HINSTANCE hInstance, HINSTANCE hPrevInstance, char* lpCmdLine, int nCmdShow);
LRESULT WindowProc(HWND hWnd, UINT nMessage, WPARAM wParam, LPARAM lParam);

HWND CreateMainWindow(HINSTANCE hInstance, int nIcon, const char* pszTitle, const char* pszClass, int x,
                      int y);
// Composes the title; a null genre, title or artist shows as such. Result of SetWindowTextA.
BOOL SetChartTitle(HWND hWnd, const char* pszPrefix, const char* pszGenre, const char* pszText1,
                   const char* pszTitle, const char* pszText2, const char* pszArtist, const char* pszEnd);
void Shutdown();  // releases everything; may run twice

// bUser 1: the user's own pause, which holds the clock. bUser 0: the system's, around a menu or a box.
void PauseChart(int bUser);
void ResumeChart(int bUser);
void RestartChart();  // plays from g_nStartMeasure
void ReloadChart(HWND hWnd);

// Fields of the open dialog, and the quotes around a name, alike at start and at a change of chart.
BOOL AskChartFile(HWND hOwner, HINSTANCE hInstance, char* szFile);  // 260 bytes, zeroed by the caller
void StripQuotes(char* szFile);
