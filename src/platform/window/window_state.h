// Private to the window's stand-ins: what a handle points at, and what windows, messages and menus share.
#pragma once

#include <string>
#include <vector>

#include "host/host.h"
#include "platform/window/window.h"

struct MenuObject {
    std::vector<host::MenuItem> items;  // behind the system's own
};

// Lives until the process ends, so that a handle of a window long gone is refused rather than followed.
struct WindowObject {
    bool bRemote = false;
    bool bAlive = false;
    bool bClosing = false;
    uint64_t nCopy = 0;  // of a remote one
    std::string sClass;
    WNDPROC pfnProc = nullptr;
    DWORD dwStyle = 0, dwExStyle = 0;
    MenuObject menu;
};

// The window of this process, null when there is none.
WindowObject* LocalWindow();

// A handle of this process that is not destroyed.
bool IsLocal(HWND hWnd);

// The copy that a remote window's handle stands for; false for any other handle.
bool RemoteCopy(HWND hWnd, uint64_t* pnCopy);

// Two coordinates as messages carry them, 16 bits each.
constexpr LPARAM PackPoint(int x, int y) {
    return static_cast<LPARAM>(static_cast<uint32_t>(x & 0xFFFF) | static_cast<uint32_t>(y & 0xFFFF) << 16);
}

// Takes a destroyed window's messages out of the queue.
void DropMessages(HWND hWnd);
// Takes out what the user did in a window that a modal dialog now stands before.
void DropInput();
bool QuitPosted();

// The pump of every modal dialog: delivers posted messages, drops input; false once a quit is posted.
bool PumpModal();

// The system menu at a place of the desktop, with its two signals and the command that follows.
void RunSystemMenu(HWND hWnd, int x, int y);

// Each forgets its state, as if the process were fresh.
void ResetWindows();
void ResetMessages();
void ResetDialogs();
