// Private: what a window handle points at, and what windows, messages and menus share.
#pragma once

#include <string>
#include <vector>

#include "host/host.h"
#include "platform/window/window.h"

struct MenuObject {
    std::vector<host::MenuItem> items;  // after the standard ones
};

// Lives until the process ends, so that the handle of a destroyed window can be checked safely.
struct WindowObject {
    bool bRemote = false;
    bool bAlive = false;
    bool bClosing = false;
    uint64_t nInstance = 0;  // of a remote window
    std::string sClass;
    WNDPROC pfnProc = nullptr;
    DWORD dwStyle = 0, dwExStyle = 0;
    MenuObject menu;
};

// The window of this process, null when there is none.
WindowObject* LocalWindow();

// Whether the handle is the window of this process, not destroyed.
bool IsLocal(HWND hWnd);

// The instance of a remote window's handle; false for any other handle.
bool RemoteInstance(HWND hWnd, uint64_t* pnInstance);

// Two coordinates as messages carry them, 16 bits each.
constexpr LPARAM PackPoint(int x, int y) {
    return static_cast<LPARAM>(static_cast<uint32_t>(x & 0xFFFF) | static_cast<uint32_t>(y & 0xFFFF) << 16);
}

// Removes a destroyed window's messages from the queue.
void DropMessages(HWND hWnd);
bool QuitPosted();

// The pump of every modal dialog: delivers posted messages and drops the user's input, also what was queued
// when the dialog opened, because the dialog covers the window. False once a quit is posted.
bool PumpModal();

// Runs the system menu at x, y of the desktop: WM_ENTERMENULOOP, WM_EXITMENULOOP, then the chosen command.
void RunSystemMenu(HWND hWnd, int x, int y);

// Each resets its state to that of a fresh process.
void ResetWindows();
void ResetMessages();
void ResetDialogs();
