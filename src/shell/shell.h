// The program: entry, window procedure and the messages between instances; with it the calls by which others
// drive a chart.
#pragma once

#include "platform/window/window.h"
#include "shell/reload.h"
#include "shell/startup.h"
#include "shell/state.h"
#include "shell/window.h"
#include "system/globals.h"

// Messages between instances.
constexpr UINT WM_REMOTE_QUIT = 1125, WM_REMOTE_STOP = 1126, WM_REMOTE_PLAY = 1127, WM_REMOTE_RESTART = 1128,
               WM_REMOTE_SEEK = 1129, WM_REMOTE_SPEED = 1130, WM_REMOTE_LOAD = 1134, WM_REMOTE_HOST = 1224;
constexpr UINT IDM_ABOUT = 256, IDM_LOAD = 257;

constexpr char WINDOW_CLASS[] = "Lumetra_ZN";  // the name by which instances find each other

// The program. lpCmdLine: the line without the program's name. Returns the exit code: 0, 1 (a remote
// instance) or -1.
int WinMain(HINSTANCE hInstance, HINSTANCE hPrevInstance, char* lpCmdLine, int nCmdShow);
LRESULT WindowProc(HWND hWnd, UINT nMessage, WPARAM wParam, LPARAM lParam);
