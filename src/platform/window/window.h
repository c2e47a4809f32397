// Windows, messages and the system menu: as much as one window of fixed size needs.
//
// Single-threaded. A handle is a window of this process or of another instance; only PostMessageA and
// GetClassNameA reach the latter.
#pragma once

#include "platform/wintypes.h"

using WNDPROC = LRESULT (*)(HWND, UINT, WPARAM, LPARAM);
using WNDENUMPROC = BOOL (*)(HWND, LPARAM);

struct MSG {  // time and pt are always 0
    HWND hwnd;
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    DWORD time;
    POINT pt;
};

struct WNDCLASSEXA {
    UINT cbSize;  // 48, the published size
    UINT style;
    WNDPROC lpfnWndProc;
    int cbClsExtra, cbWndExtra;
    HINSTANCE hInstance;
    HICON hIcon;
    HCURSOR hCursor;
    HBRUSH hbrBackground;
    const char* lpszMenuName;
    const char* lpszClassName;
    HICON hIconSm;
};

struct WINDOWPOS {
    HWND hwnd;
    HWND hwndInsertAfter;
    int x, y, cx, cy;
    UINT flags;
};

struct MENUITEMINFO {
    UINT cbSize;  // 44, the published size
    UINT fMask;
    UINT fType;
    UINT fState;
    UINT wID;
    HMENU hSubMenu;
    HBITMAP hbmpChecked;
    HBITMAP hbmpUnchecked;
    uintptr_t dwItemData;
    char* dwTypeData;
    UINT cch;
};

constexpr UINT WM_CREATE = 1;
constexpr UINT WM_DESTROY = 2;
constexpr UINT WM_CLOSE = 16;
constexpr UINT WM_QUIT = 18;
constexpr UINT WM_WINDOWPOSCHANGING = 70;
constexpr UINT WM_NCLBUTTONDOWN = 161;
constexpr UINT WM_KEYDOWN = 256;
constexpr UINT WM_SYSCOMMAND = 274;
constexpr UINT WM_LBUTTONDBLCLK = 515;
constexpr UINT WM_ENTERMENULOOP = 529;
constexpr UINT WM_EXITMENULOOP = 530;
constexpr UINT WM_EXITSIZEMOVE = 562;
constexpr UINT WM_USER = 1024;

constexpr UINT CS_DBLCLKS = 8;
constexpr DWORD WS_VISIBLE = 0x10000000;
constexpr DWORD WS_CAPTION = 0x00C00000;
constexpr DWORD WS_SYSMENU = 0x00080000;
constexpr DWORD WS_MINIMIZEBOX = 0x00020000;
constexpr DWORD WS_EX_TOPMOST = 8;
constexpr int CW_USEDEFAULT = static_cast<int>(0x80000000u);
constexpr int GWL_STYLE = -16;
constexpr int GWL_EXSTYLE = -20;
constexpr UINT SWP_NOSIZE = 1;
constexpr UINT SWP_NOMOVE = 2;
constexpr UINT SWP_SHOWWINDOW = 0x40;
constexpr UINT PM_NOREMOVE = 0;
constexpr UINT MIIM_ID = 2;
constexpr UINT MIIM_TYPE = 16;
constexpr UINT MFT_SEPARATOR = 2048;
constexpr UINT SC_CLOSE = 0xF060;
constexpr UINT SC_MINIMIZE = 0xF020;
constexpr WPARAM VK_RETURN = 13;
constexpr WPARAM VK_ESCAPE = 27;
constexpr WPARAM VK_SPACE = 32;
constexpr int IDI_APPLICATION = 32512;
constexpr int IDC_ARROW = 32512;
inline const HWND HWND_TOPMOST = reinterpret_cast<HWND>(static_cast<intptr_t>(-1));

// --- classes and windows ---

// Non-zero on success; 0 for a wrong cbSize, a missing name or procedure, or a name already registered.
ATOM RegisterClassExA(const WNDCLASSEXA* pClass);

// Opens a window, which receives WM_CREATE before this returns. Null when the class is unknown or the host
// cannot open a window. x, y: outer corner in desktop pixels; CW_USEDEFAULT in both lets the host choose.
// Width and height become the client area's, because the frame is not known yet.
HWND CreateWindowExA(DWORD dwExStyle, const char* pszClass, const char* pszTitle, DWORD dwStyle, int x, int y,
                     int nWidth, int nHeight, HWND hParent, HMENU hMenu, HINSTANCE hInstance, void* pParam);
BOOL DestroyWindow(HWND hWnd);  // sends WM_DESTROY, then closes the window
LRESULT DefWindowProcA(HWND hWnd, UINT nMessage, WPARAM wParam, LPARAM lParam);

// Raw bytes: taken as UTF-8 when they are valid UTF-8, otherwise as CP932. Drops a two-byte character that is
// cut at the end.
BOOL SetWindowTextA(HWND hWnd, const char* pszText);
BOOL GetWindowRect(HWND hWnd, RECT* pRect);  // outer frame, desktop pixels
BOOL GetClientRect(HWND hWnd, RECT* pRect);  // 0, 0, width, height
BOOL ClientToScreen(HWND hWnd, POINT* pPoint);
LONG GetWindowLongA(HWND hWnd, int nIndex);  // GWL_STYLE and GWL_EXSTYLE; 0 for any other
// Widens a client rectangle by the frame that the window manager draws; unchanged while there is no window.
BOOL AdjustWindowRectEx(RECT* pRect, DWORD dwStyle, BOOL bMenu, DWORD dwExStyle);
// Sends WM_WINDOWPOSCHANGING, then moves and resizes (outer frame) when that changes anything.
BOOL SetWindowPos(HWND hWnd, HWND hAfter, int x, int y, int nWidth, int nHeight, UINT nFlags);

// --- messages ---

// 1 when a message waits, WM_QUIT included. *pMsg is that message, which stays in the queue.
BOOL PeekMessageA(MSG* pMsg, HWND hWnd, UINT nMin, UINT nMax, UINT nRemove);
// Takes the next message, waiting if none is there. 0 for WM_QUIT, which comes after all posted messages.
BOOL GetMessageA(MSG* pMsg, HWND hWnd, UINT nMin, UINT nMax);
BOOL TranslateMessage(const MSG* pMsg);
LRESULT DispatchMessageA(const MSG* pMsg);
LRESULT SendMessageA(HWND hWnd, UINT nMessage, WPARAM wParam, LPARAM lParam);
// Queues a message for a window of this process or of another instance; 0 when that window is gone.
BOOL PostMessageA(HWND hWnd, UINT nMessage, WPARAM wParam, LPARAM lParam);
void PostQuitMessage(int nExitCode);

// --- other instances ---

// Calls back for the window of this process and of every other instance, until the callback returns 0.
// Returns 0 when the instances cannot be listed.
BOOL EnumWindows(WNDENUMPROC pfnCallback, LPARAM lParam);
// Returns the length of the name, 0 when the window is gone. Truncates to nMax - 1 bytes and a NUL.
int GetClassNameA(HWND hWnd, char* pszBuffer, int nMax);

// --- the system menu ---

HMENU GetSystemMenu(HWND hWnd, BOOL bRevert);
// Inserts an item before the one whose id is nItem, or at the end. 0 for a wrong cbSize.
BOOL InsertMenuItemA(HMENU hMenu, UINT nItem, BOOL bByPosition, const MENUITEMINFO* pItem);

// --- icons and cursors ---

HICON LoadIconA(HINSTANCE hInstance, int nId);  // null hInstance: the system's own
HCURSOR LoadCursorA(HINSTANCE hInstance, int nId);
