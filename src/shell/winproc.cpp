// The window procedure, message by message. Every message also goes to the default procedure.
#include <cstring>

#include "platform/window/dialog.h"
#include "shell/options.h"
#include "shell/shell.h"

namespace {

void HoldChart() {
    if (g_bPlaying) PauseChart(0);
}

void ReleaseChart() {
    if (!g_bPaused) ResumeChart(0);
}

void InsertItem(HMENU hMenu, UINT nPosition, UINT nId, const char* pszText) {
    MENUITEMINFO item{};
    item.cbSize = 44;
    if (pszText) {
        item.fMask = MIIM_ID | MIIM_TYPE;
        item.wID = nId;
        item.dwItemData = nId;
        item.dwTypeData = const_cast<char*>(pszText);
        item.cch = static_cast<UINT>(std::strlen(pszText));
    } else {
        item.fType = MFT_SEPARATOR;
    }
    InsertMenuItemA(hMenu, nPosition, 0, &item);
}

// No menu item has these numbers, so each item is appended.
void BuildSystemMenu(HWND hWnd) {
    const HMENU hMenu = GetSystemMenu(hWnd, 0);
    InsertItem(hMenu, 7, 0, nullptr);
    InsertItem(hMenu, 8, IDM_LOAD, "&Load");
    InsertItem(hMenu, 9, 0, nullptr);
    InsertItem(hMenu, 10, IDM_ABOUT, "&About...");
}

void ShowAbout(HWND hWnd) {
    HoldChart();
    MessageBoxA(hWnd, "Lumetra 0.04", "VersionInfo", MB_ICONINFORMATION);
    ReleaseChart();
}

void OnSpace() {
    if (!g_bPlaying && g_bPaused && g_dwPauseTime) {
        ResumeChart(1);
    } else if (g_bPlaying && !g_bPaused && !g_dwPauseTime) {
        PauseChart(1);
    }
}

void OnKey(WPARAM wKey) {
    if (wKey == VK_RETURN) RestartChart();
    if (wKey == VK_ESCAPE) PostQuitMessage(0);
    if (wKey == VK_SPACE) OnSpace();
}

void OnSysCommand(HWND hWnd, WPARAM wParam) {
    const UINT nCommand = static_cast<UINT>(wParam & 0xFFFF);
    if (nCommand == IDM_ABOUT) ShowAbout(hWnd);
    if (nCommand == IDM_LOAD) PostMessageA(hWnd, WM_LBUTTONDBLCLK, 0, 0);
}

void OnPosChanging(LPARAM lParam) {
    const WINDOWPOS* pPos = reinterpret_cast<const WINDOWPOS*>(lParam);
    if (pPos && pPos->flags == (SWP_NOSIZE | SWP_NOMOVE)) ReleaseChart();
}

void OnSeek(int32_t nMeasure) {
    if (!HasChart()) return;
    g_nStartMeasure = ClampMeasure(nMeasure);
    RestartChart();
}

void OnWindow(HWND hWnd, UINT nMessage, WPARAM wParam, LPARAM lParam) {
    switch (nMessage) {
        case WM_CREATE:
            return BuildSystemMenu(hWnd);
        case WM_DESTROY:
            return Shutdown();
        case WM_CLOSE:
            return PostQuitMessage(0);
        case WM_WINDOWPOSCHANGING:
            return OnPosChanging(lParam);
        case WM_NCLBUTTONDOWN:
        case WM_ENTERMENULOOP:
            return HoldChart();
        case WM_EXITMENULOOP:
        case WM_EXITSIZEMOVE:
            return ReleaseChart();
        case WM_KEYDOWN:
            return OnKey(wParam);
        case WM_SYSCOMMAND:
            return OnSysCommand(hWnd, wParam);
        case WM_LBUTTONDBLCLK:
            return ReloadChart(hWnd);
    }
}

void OnRemote(HWND hWnd, UINT nMessage, WPARAM wParam) {
    if (nMessage == WM_REMOTE_HOST) g_bHost = 1;
    if (g_bHost) return;
    switch (nMessage) {
        case WM_REMOTE_QUIT:
            return PostQuitMessage(0);
        case WM_REMOTE_STOP:
            return PauseChart(1);  // no effect while g_bPlaying is 0
        case WM_REMOTE_PLAY:
            return ResumeChart(1);
        case WM_REMOTE_RESTART:
            return RestartChart();
        case WM_REMOTE_SEEK:
            return OnSeek(static_cast<int32_t>(wParam));
        case WM_REMOTE_SPEED:
            return SetSpeed(SpeedFromMessage(static_cast<int32_t>(wParam)));
        case WM_REMOTE_LOAD:
            return ReloadChart(hWnd);
    }
}

}  // namespace

LRESULT WindowProc(HWND hWnd, UINT nMessage, WPARAM wParam, LPARAM lParam) {
    if (nMessage < WM_USER) {
        OnWindow(hWnd, nMessage, wParam, lParam);
    } else {
        OnRemote(hWnd, nMessage, wParam);
    }
    return DefWindowProcA(hWnd, nMessage, wParam, lParam);
}
