// The window: its class, opening and closing, title and place.
#include "platform/window/window.h"

#include <algorithm>
#include <memory>

#include "platform/files/text.h"
#include "platform/window/icons.h"
#include "platform/window/window_state.h"

namespace {

constexpr UINT kClassSize = 48;

struct WindowClass {
    std::string sName;
    WNDPROC pfnProc;
    HICON hIcon;
};

struct State {
    std::vector<WindowClass> classes;
    std::vector<std::unique_ptr<WindowObject>> windows;  // of this process; only the last one may be alive
    std::vector<std::unique_ptr<WindowObject>> remote;
};
State g_state;

const WindowClass* FindClass(const char* pszName) {
    for (const WindowClass& row : g_state.classes) {
        if (pszName && row.sName == pszName) return &row;
    }
    return nullptr;
}

host::WindowRequest Request(const WindowClass& windowClass, const char* pszTitle, DWORD dwExStyle,
                            const RECT& place) {
    host::WindowRequest request;
    const bool bDefault = place.left == CW_USEDEFAULT || place.top == CW_USEDEFAULT;
    request.x = bDefault ? host::kDefaultPlace : host::ClampPlace(place.left);
    request.y = bDefault ? host::kDefaultPlace : host::ClampPlace(place.top);
    request.width = std::max(place.right, 1);
    request.height = std::max(place.bottom, 1);
    request.topmost = (dwExStyle & WS_EX_TOPMOST) != 0;
    request.title = DisplayText(pszTitle ? pszTitle : "");
    request.icon = IconPicture(windowClass.hIcon);
    return request;
}

// Returns the same object for the same instance each time, so that handles stay valid.
HWND RemoteWindow(const host::Instance& instance) {
    for (const auto& pWindow : g_state.remote) {
        if (pWindow->nInstance == instance.id) {
            pWindow->sClass = instance.class_name;
            return pWindow.get();
        }
    }
    auto pWindow = std::make_unique<WindowObject>();
    pWindow->bRemote = pWindow->bAlive = true;
    pWindow->nInstance = instance.id;
    pWindow->sClass = instance.class_name;
    g_state.remote.push_back(std::move(pWindow));
    return g_state.remote.back().get();
}

bool IsRemote(HWND hWnd) {
    return std::any_of(g_state.remote.begin(), g_state.remote.end(),
                       [hWnd](const auto& pWindow) { return pWindow.get() == hWnd; });
}

RECT ToRect(const host::Rect& rect) {
    return {rect.left, rect.top, rect.right, rect.bottom};
}

// Moves and resizes when the request differs from the current place.
void ApplyPlace(const WINDOWPOS& pos) {
    const host::WindowPlace place = host::GetWindowPlace();
    const host::Rect &outer = place.outer, &client = place.client;
    const int nFrameW = (outer.right - outer.left) - (client.right - client.left);
    const int nFrameH = (outer.bottom - outer.top) - (client.bottom - client.top);
    const bool bMove = !(pos.flags & SWP_NOMOVE), bSize = !(pos.flags & SWP_NOSIZE);
    const int x = bMove ? host::ClampPlace(pos.x) : outer.left;
    const int y = bMove ? host::ClampPlace(pos.y) : outer.top;
    const int nWidth = bSize ? std::max(pos.cx - nFrameW, 1) : client.right - client.left;
    const int nHeight = bSize ? std::max(pos.cy - nFrameH, 1) : client.bottom - client.top;
    if (x != outer.left || y != outer.top || nWidth != client.right - client.left ||
        nHeight != client.bottom - client.top)
        host::PlaceWindow(x, y, nWidth, nHeight);
}

}  // namespace

WindowObject* LocalWindow() {
    return !g_state.windows.empty() && g_state.windows.back()->bAlive ? g_state.windows.back().get()
                                                                      : nullptr;
}

bool IsLocal(HWND hWnd) {
    return hWnd && hWnd == LocalWindow();
}

bool RemoteInstance(HWND hWnd, uint64_t* pnInstance) {
    if (!IsRemote(hWnd)) return false;
    *pnInstance = hWnd->nInstance;
    return true;
}

void ResetWindows() {
    if (LocalWindow()) {
        host::WithdrawInstance();
        host::CloseWindow();
    }
    g_state = State();
}

ATOM RegisterClassExA(const WNDCLASSEXA* pClass) {
    if (!pClass || pClass->cbSize != kClassSize || !pClass->lpszClassName || !*pClass->lpszClassName ||
        !pClass->lpfnWndProc || FindClass(pClass->lpszClassName))
        return 0;
    g_state.classes.push_back({pClass->lpszClassName, pClass->lpfnWndProc, pClass->hIcon});
    return static_cast<ATOM>(0xC000 + g_state.classes.size());
}

HWND CreateWindowExA(DWORD dwExStyle, const char* pszClass, const char* pszTitle, DWORD dwStyle, int x, int y,
                     int nWidth, int nHeight, HWND hParent, HMENU hMenu, HINSTANCE hInstance, void* pParam) {
    const WindowClass* pFound = FindClass(pszClass);
    if (!pFound || LocalWindow() || hParent || hMenu || pParam) return nullptr;
    if (!host::OpenWindow(Request(*pFound, pszTitle, dwExStyle, {x, y, nWidth, nHeight}))) return nullptr;
    auto pWindow = std::make_unique<WindowObject>();
    pWindow->bAlive = true;
    pWindow->sClass = pFound->sName;
    pWindow->pfnProc = pFound->pfnProc;
    pWindow->dwStyle = dwStyle;
    pWindow->dwExStyle = dwExStyle;
    const HWND hWnd = pWindow.get();
    g_state.windows.push_back(std::move(pWindow));
    if (SendMessageA(hWnd, WM_CREATE, 0, 0) == -1) {
        DestroyWindow(hWnd);
        return nullptr;
    }
    host::AnnounceInstance(hWnd->sClass);
    return hWnd;
}

BOOL DestroyWindow(HWND hWnd) {
    if (!IsLocal(hWnd) || hWnd->bClosing) return 0;
    hWnd->bClosing = true;
    SendMessageA(hWnd, WM_DESTROY, 0, 0);
    host::WithdrawInstance();
    host::CloseWindow();
    hWnd->bAlive = false;
    DropMessages(hWnd);
    return 1;
}

BOOL SetWindowTextA(HWND hWnd, const char* pszText) {
    if (!IsLocal(hWnd)) return 0;
    host::SetTitle(DisplayText(pszText ? pszText : ""));
    return 1;
}

BOOL GetWindowRect(HWND hWnd, RECT* pRect) {
    if (!IsLocal(hWnd) || !pRect) return 0;
    *pRect = ToRect(host::GetWindowPlace().outer);
    return 1;
}

BOOL GetClientRect(HWND hWnd, RECT* pRect) {
    if (!IsLocal(hWnd) || !pRect) return 0;
    const host::Rect client = host::GetWindowPlace().client;
    *pRect = {0, 0, client.right - client.left, client.bottom - client.top};
    return 1;
}

BOOL ClientToScreen(HWND hWnd, POINT* pPoint) {
    if (!IsLocal(hWnd) || !pPoint) return 0;
    const host::Rect client = host::GetWindowPlace().client;
    pPoint->x += client.left;
    pPoint->y += client.top;
    return 1;
}

LONG GetWindowLongA(HWND hWnd, int nIndex) {
    if (!IsLocal(hWnd)) return 0;
    if (nIndex == GWL_STYLE) return static_cast<LONG>(hWnd->dwStyle);
    return nIndex == GWL_EXSTYLE ? static_cast<LONG>(hWnd->dwExStyle) : 0;
}

BOOL AdjustWindowRectEx(RECT* pRect, DWORD, BOOL bMenu, DWORD) {
    if (!pRect || bMenu) return 0;
    if (!LocalWindow()) return 1;
    const host::WindowPlace place = host::GetWindowPlace();
    pRect->left -= place.client.left - place.outer.left;
    pRect->top -= place.client.top - place.outer.top;
    pRect->right += place.outer.right - place.client.right;
    pRect->bottom += place.outer.bottom - place.client.bottom;
    return 1;
}

BOOL SetWindowPos(HWND hWnd, HWND hAfter, int x, int y, int nWidth, int nHeight, UINT nFlags) {
    constexpr UINT kKnown = SWP_NOSIZE | SWP_NOMOVE | SWP_SHOWWINDOW;
    if (!IsLocal(hWnd) || (nFlags & ~kKnown) || (hAfter && hAfter != HWND_TOPMOST)) return 0;
    WINDOWPOS pos = {hWnd, hAfter, x, y, nWidth, nHeight, nFlags};
    SendMessageA(hWnd, WM_WINDOWPOSCHANGING, 0, reinterpret_cast<LPARAM>(&pos));
    if (!IsLocal(hWnd)) return 0;
    ApplyPlace(pos);
    if (hAfter == HWND_TOPMOST) host::KeepOnTop();
    return 1;
}

BOOL EnumWindows(WNDENUMPROC pfnCallback, LPARAM lParam) {
    std::vector<host::Instance> instances;
    if (!pfnCallback || !host::ListInstances(&instances)) return 0;
    if (LocalWindow() && !pfnCallback(LocalWindow(), lParam)) return 0;
    for (const host::Instance& instance : instances) {
        if (!pfnCallback(RemoteWindow(instance), lParam)) return 0;
    }
    return 1;
}

int GetClassNameA(HWND hWnd, char* pszBuffer, int nMax) {
    if (!pszBuffer || nMax <= 0) return 0;
    pszBuffer[0] = '\0';
    if (!IsLocal(hWnd) && !IsRemote(hWnd)) return 0;
    const size_t nLength = hWnd->sClass.copy(pszBuffer, static_cast<size_t>(nMax) - 1);
    pszBuffer[nLength] = '\0';
    return static_cast<int>(nLength);
}
