// The message queue: posted messages and the host's events, in arrival order. A quit comes after all posted
// messages.
#include <deque>

#include "platform/window/dialog.h"
#include "platform/window/window_state.h"

namespace {

constexpr size_t kMaxPosted = 10'000;  // as published
// A flood from other instances must not stop the frames: one turn of the loop serves what waited when it
// began, up to this bound, and a few that arrive meanwhile.
constexpr int kMaxTurn = 4096, kMaxMeanwhile = 64;
constexpr int kWait = 1000;  // ms
constexpr UINT SC_KEYMENU = 0xF100;

struct Waiting {
    MSG msg;
    bool bInput;           // from the user, not posted
    std::string sDropped;  // path of a dropped file
};

struct State {
    std::deque<Waiting> queue;
    bool bQuit = false;
    int nExitCode = 0;
    bool bTurnBegun = false;
    int nMeanwhile = 0;
};
State g_state;

void AddInput(HWND hWnd, UINT nMessage, WPARAM wParam, LPARAM lParam, const std::string& dropped = "") {
    g_state.queue.push_back({{hWnd, nMessage, wParam, lParam, 0, {0, 0}}, true, dropped});
}

void AddPosted(HWND hWnd, UINT nMessage, WPARAM wParam, LPARAM lParam) {
    g_state.queue.push_back({{hWnd, nMessage, wParam, lParam, 0, {0, 0}}, false, ""});
}

// Other instances may post application messages only; the rest belongs to the window system.
void AddEvent(HWND hWnd, const host::Event& event) {
    switch (event.kind) {
        case host::EventKind::kNone:
            break;
        case host::EventKind::kKeyDown:
            AddInput(hWnd, WM_KEYDOWN, static_cast<WPARAM>(event.key), 1);
            break;
        case host::EventKind::kDoubleClick:
            AddInput(hWnd, WM_LBUTTONDBLCLK, 1, PackPoint(event.x, event.y));
            break;
        case host::EventKind::kMenu:
            AddInput(hWnd, WM_SYSCOMMAND, SC_KEYMENU, PackPoint(event.x, event.y));
            break;
        case host::EventKind::kClose:
            AddInput(hWnd, WM_CLOSE, 0, 0);
            break;
        case host::EventKind::kDrop:
            AddInput(hWnd, WM_LBUTTONDBLCLK, 1, 0, event.text);
            break;
        case host::EventKind::kPosted:
            if (event.message >= WM_USER)
                AddPosted(hWnd, event.message, static_cast<WPARAM>(event.wparam),
                          static_cast<LPARAM>(event.lparam));
            break;
    }
}

// Moves at most nMax of the host's events into the queue.
int TakeEvents(int nMax, bool bWithInput) {
    int n = 0;
    host::Event event;
    while (n < nMax && g_state.queue.size() < kMaxPosted && host::PollEvent(&event)) {
        ++n;
        const HWND hWnd = LocalWindow();
        if (hWnd && (bWithInput || event.kind == host::EventKind::kPosted)) AddEvent(hWnd, event);
    }
    return n;
}

void TakeTurnsEvents() {
    if (!g_state.bTurnBegun) {
        g_state.bTurnBegun = true;
        g_state.nMeanwhile = 0;
        TakeEvents(kMaxTurn, true);
    } else {
        g_state.nMeanwhile += TakeEvents(kMaxMeanwhile - g_state.nMeanwhile, true);
    }
}

void EndTurn() {
    g_state.bTurnBegun = false;
}

// The next message to serve. While a quit waits, only posted ones are served.
std::deque<Waiting>::iterator FindNext() {
    auto it = g_state.queue.begin();
    while (g_state.bQuit && it != g_state.queue.end() && it->bInput) ++it;
    return it;
}

MSG QuitMessage() {
    return {nullptr, WM_QUIT, static_cast<WPARAM>(g_state.nExitCode), 0, 0, {0, 0}};
}

// Finds the next message without taking it. False when none waits.
bool Look(MSG* pMsg, bool* pbQuit) {
    auto it = FindNext();
    if (it == g_state.queue.end()) {
        TakeTurnsEvents();
        it = FindNext();
    }
    *pbQuit = it == g_state.queue.end() && g_state.bQuit;
    if (it != g_state.queue.end()) *pMsg = it->msg;
    if (*pbQuit) *pMsg = QuitMessage();
    return *pbQuit || it != g_state.queue.end();
}

// If the message carries a dropped file, that file answers the dialog which the message will open.
void TakeNext() {
    const auto it = FindNext();
    const std::string dropped = std::move(it->sDropped);
    g_state.queue.erase(it);
    if (!dropped.empty()) AnswerNextOpenDialog(dropped.c_str());
}

bool IsUnfiltered(const MSG* pMsg, HWND hWnd, UINT nMin, UINT nMax) {
    return pMsg && !hWnd && !nMin && !nMax;
}

}  // namespace

void DropMessages(HWND hWnd) {
    std::erase_if(g_state.queue, [hWnd](const Waiting& waiting) { return waiting.msg.hwnd == hWnd; });
}

bool QuitPosted() {
    return g_state.bQuit;
}

void ResetMessages() {
    g_state = State();
}

bool PumpModal() {
    TakeEvents(kMaxTurn, false);
    // No more than are waiting now: a message that posts itself again must not starve the dialog.
    for (size_t n = g_state.queue.size(); n > 0 && !g_state.queue.empty(); --n) {
        const MSG msg = g_state.queue.front().msg;
        const bool bInput = g_state.queue.front().bInput;
        g_state.queue.pop_front();
        if (!bInput) DispatchMessageA(&msg);
    }
    return !g_state.bQuit;
}

BOOL PeekMessageA(MSG* pMsg, HWND hWnd, UINT nMin, UINT nMax, UINT nRemove) {
    if (!IsUnfiltered(pMsg, hWnd, nMin, nMax) || nRemove != PM_NOREMOVE) return 0;
    bool bQuit;
    if (Look(pMsg, &bQuit)) return 1;
    EndTurn();
    return 0;
}

BOOL GetMessageA(MSG* pMsg, HWND hWnd, UINT nMin, UINT nMax) {
    if (!IsUnfiltered(pMsg, hWnd, nMin, nMax)) return -1;
    bool bQuit;
    while (!Look(pMsg, &bQuit)) {
        EndTurn();
        host::WaitEvent(kWait);
    }
    if (!bQuit) {
        TakeNext();
        return 1;
    }
    // The user sees the end at once, however long the program takes over it.
    g_state.bQuit = false;
    host::HideWindow();
    return 0;
}

BOOL TranslateMessage(const MSG*) {
    return 0;
}

LRESULT DispatchMessageA(const MSG* pMsg) {
    return pMsg ? SendMessageA(pMsg->hwnd, pMsg->message, pMsg->wParam, pMsg->lParam) : 0;
}

LRESULT SendMessageA(HWND hWnd, UINT nMessage, WPARAM wParam, LPARAM lParam) {
    return IsLocal(hWnd) ? hWnd->pfnProc(hWnd, nMessage, wParam, lParam) : 0;
}

BOOL PostMessageA(HWND hWnd, UINT nMessage, WPARAM wParam, LPARAM lParam) {
    if (IsLocal(hWnd)) {
        if (g_state.queue.size() >= kMaxPosted) return 0;
        AddPosted(hWnd, nMessage, wParam, lParam);
        return 1;
    }
    uint64_t nInstance;
    return RemoteInstance(hWnd, &nInstance) &&
           host::PostToInstance(nInstance, nMessage, static_cast<int64_t>(wParam),
                                static_cast<int64_t>(lParam));
}

void PostQuitMessage(int nExitCode) {
    g_state.bQuit = true;
    g_state.nExitCode = nExitCode;
}

LRESULT DefWindowProcA(HWND hWnd, UINT nMessage, WPARAM wParam, LPARAM lParam) {
    if (nMessage == WM_CLOSE) DestroyWindow(hWnd);
    if (nMessage != WM_SYSCOMMAND || !IsLocal(hWnd)) return 0;
    switch (wParam & 0xFFF0) {  // the low four bits are reserved
        case SC_MINIMIZE:
            host::Minimize();
            break;
        case SC_CLOSE:
            SendMessageA(hWnd, WM_CLOSE, 0, 0);
            break;
        case SC_KEYMENU:
            RunSystemMenu(hWnd, static_cast<int16_t>(lParam & 0xFFFF),
                          static_cast<int16_t>(lParam >> 16 & 0xFFFF));
            break;
        default:
            break;
    }
    return 0;
}
