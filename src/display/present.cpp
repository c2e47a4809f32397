#include "display/present.h"

#include <algorithm>

#include "display/ddraw.h"
#include "platform/timer.h"
#include "platform/window/window.h"

namespace {

// Milliseconds since the previous present. A short frame sleeps. A frame just below the target spins, because
// a sleep is too coarse. A long frame continues at once.
constexpr DWORD kSleepBelow = 12, kSleepUpTo = 15, kSpinBelow = 15, kSpinUpTo = 15;

// Keeps the timestamp from before the sleep, so the next frame's time includes the sleep and it continues at
// once.
void Pace(DWORD dwLast, DWORD* pdwThis) {
    *pdwThis = timeGetTime();
    const DWORD nPassed = *pdwThis - dwLast;
    if (nPassed < kSleepBelow) {
        Sleep(kSleepUpTo - nPassed);
    } else if (nPassed < kSpinBelow) {
        while (*pdwThis - dwLast <= kSpinUpTo) *pdwThis = timeGetTime();
    }
}

RECT ClientOnDesktop(HWND hWnd) {
    RECT client = {};
    GetClientRect(hWnd, &client);
    POINT corner = {client.left, client.top}, opposite = {client.right, client.bottom};
    ClientToScreen(hWnd, &corner);
    ClientToScreen(hWnd, &opposite);
    return {corner.x, corner.y, opposite.x, opposite.y};
}

}  // namespace

RECT ClampToDesktop(const RECT& area, int32_t nFrontW, int32_t nFrontH) {
    return {std::max(std::min(area.left, nFrontW), 0), std::max(std::min(area.top, nFrontH), 0),
            std::max(std::min(area.right, nFrontW), 0), std::max(std::min(area.bottom, nFrontH), 0)};
}

RECT SourceOfArea(const RECT& area, int32_t nFrontW, int32_t nFrontH, int32_t nBackW, int32_t nBackH) {
    RECT source = {0, 0, nBackW, nBackH};
    if (area.left == 0) source.left = nBackW - area.right;
    if (area.top == 0) source.top = nBackH - area.bottom;
    if (area.right == nFrontW) source.right = source.left + area.right - area.left;
    if (area.bottom == nFrontH) source.bottom = source.top + area.bottom - area.top;
    return source;
}

int CDDraw::Present() {
    FitWindow(m_hWnd, -1, -1, m_nWidth, m_nHeight);
    if (!m_pFront || !m_pBack) return 1;
    // Monitors may change while the program runs.
    ReadSurfaceSize(m_pFront, &m_nFrontW, &m_nFrontH);
    const RECT area = ClampToDesktop(ClientOnDesktop(m_hWnd), m_nFrontW, m_nFrontH);
    Pace(m_dwLastPresent, &m_dwThisPresent);
    if (area.left >= area.right || area.top >= area.bottom) {
        m_dwLastPresent = m_dwThisPresent;
        return 1;
    }
    const RECT source = SourceOfArea(area, m_nFrontW, m_nFrontH, m_nBackW, m_nBackH);
    m_pFront->BltFast(static_cast<DWORD>(area.left), static_cast<DWORD>(area.top), m_pBack, &source,
                      DDBLTFAST_WAIT);
    m_dwLastPresent = m_dwThisPresent;
    return 0;
}
