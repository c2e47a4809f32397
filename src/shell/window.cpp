#include "shell/window.h"

#include <cstring>

#include "chart/bms.h"
#include "platform/graphics/gdi.h"
#include "playback/layout.h"
#include "shell/shell.h"

namespace {

constexpr size_t kTitleSize = 240;
constexpr size_t kHeaderBytes = 70;  // of a genre, title or artist; may cut a two-byte character

void Append(char (&szTitle)[kTitleSize], const char* pszText, size_t nMax) {
    const size_t nUsed = std::strlen(szTitle);
    size_t nLength = std::strlen(pszText);
    if (nLength > nMax) nLength = nMax;
    if (nLength > kTitleSize - 1 - nUsed) nLength = kTitleSize - 1 - nUsed;
    std::memcpy(szTitle + nUsed, pszText, nLength);
    szTitle[nUsed + nLength] = '\0';
}

}  // namespace

HWND CreateMainWindow(HINSTANCE hInstance, int nIcon, const char* pszTitle, const char* pszClass, int x,
                      int y) {
    WNDCLASSEXA wc{};
    wc.cbSize = 48;
    wc.style = CS_DBLCLKS;
    wc.lpfnWndProc = WindowProc;
    wc.hInstance = hInstance;
    wc.hIcon = nIcon ? LoadIconA(hInstance, nIcon) : LoadIconA(nullptr, IDI_APPLICATION);
    wc.hIconSm = wc.hIcon;
    wc.hCursor = LoadCursorA(nullptr, IDC_ARROW);
    wc.hbrBackground = static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH));
    wc.lpszClassName = pszClass;
    if (!RegisterClassExA(&wc)) return nullptr;
    if (x == -1 || y == -1) x = y = CW_USEDEFAULT;
    g_hWnd = CreateWindowExA(WS_EX_TOPMOST, pszClass, pszTitle,
                             WS_VISIBLE | WS_CAPTION | WS_SYSMENU | WS_MINIMIZEBOX, x, y, SCREEN_WIDTH,
                             SCREEN_HEIGHT, nullptr, nullptr, hInstance, nullptr);
    return g_hWnd;
}

BOOL SetChartTitle(HWND hWnd, const char* pszPrefix, const char* pszGenre, const char* pszText1,
                   const char* pszTitle, const char* pszText2, const char* pszArtist, const char* pszEnd) {
    char szTitle[kTitleSize] = "";
    Append(szTitle, pszPrefix, kTitleSize);
    Append(szTitle, pszGenre ? pszGenre : "(no genre)", kHeaderBytes);
    Append(szTitle, pszText1, kTitleSize);
    Append(szTitle, pszTitle ? pszTitle : "(no title)", kHeaderBytes);
    Append(szTitle, pszText2, kTitleSize);
    Append(szTitle, pszArtist ? pszArtist : "(no artist)", kHeaderBytes);
    Append(szTitle, pszEnd, kTitleSize);
    return SetWindowTextA(hWnd, szTitle);
}

void ShowLoadingTitle() {
    SetChartTitle(g_hWnd, LOADING_TITLE, "", "", "", "", "", "");
}

void ShowChartTitle() {
    SetChartTitle(g_hWnd, "-", g_pBMS->m_pszGenre, "- ", g_pBMS->m_pszTitle, "  [", g_pBMS->m_pszArtist,
                  "] ");
}
