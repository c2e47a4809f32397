#include <FL/Fl.H>
#include <FL/Fl_Window.H>

#include <deque>

#include "host/desktop/desktop.h"
#include "host/desktop/instances.h"
#include "host/desktop/native.h"

namespace host {
namespace desktop {
namespace {

std::deque<Event> g_events;
// Until then nothing is handed out after a request for the menu: keys typed ahead belong to the menu.
uint64_t g_held_until = 0;                                              // nanoseconds
constexpr uint64_t kLongestHold = 10'000'000, kAskEvery = 100'000'000;  // ns
PumpHook g_pump = nullptr;
int g_watched = -1;  // the descriptor that FLTK waits for

void OnPosted(int, void*) {
    ClearPostedSignal();
}

void WatchPosted() {
    const int signal = PostedSignal();
    if (signal == g_watched) return;
    if (g_watched >= 0) Fl::remove_fd(g_watched);
    if (signal >= 0) Fl::add_fd(signal, FL_READ, OnPosted);
    g_watched = signal;
}

// Another program has destroyed the window: the program is to end as if it had been closed. Asked again
// because an open dialog drops it.
void AskToCloseWithoutWindow() {
    static uint64_t asked = 0;
    if (!native::IsDestroyed() || Nanoseconds() - asked < kAskEvery) return;
    asked = Nanoseconds();
    Event event;
    event.kind = EventKind::kClose;
    PushEvent(event);
}

}  // namespace

void PushEvent(const Event& event) {
    g_events.push_back(event);
}

std::vector<int> TakeKeys() {
    g_held_until = 0;
    std::vector<int> keys;
    while (!g_events.empty() && g_events.front().kind == EventKind::kKeyDown) {
        keys.push_back(g_events.front().key);
        g_events.pop_front();
    }
    return keys;
}

bool PumpWindowSystem(double seconds) {
    if (!IsDisplayOpen()) return false;
    WatchPosted();
    Fl::wait(seconds);
    return true;
}

}  // namespace desktop

using namespace desktop;

bool PollEvent(Event* event) {
    AskToCloseWithoutWindow();
    native::AcceptFocus();
    if (g_pump) g_pump(nullptr);
    if (g_held_until != 0 && Nanoseconds() < g_held_until) return false;
    if (g_events.empty()) PumpWindowSystem(0);
    if (g_events.empty()) return TakePosted(event);
    *event = g_events.front();
    g_events.pop_front();
    g_held_until = event->kind == EventKind::kMenu ? Nanoseconds() + kLongestHold : 0;
    return true;
}

void OnPump(PumpHook hook) {
    g_pump = hook;
}

void desktop::TitleWasSet(const std::string& title) {
    if (g_pump) g_pump(&title);
}

void WaitEvent(int milliseconds) {
    const uint64_t end =
        Nanoseconds() + static_cast<uint64_t>(milliseconds > 0 ? milliseconds : 0) * 1'000'000;
    for (;;) {
        const uint64_t now = Nanoseconds();
        if (now >= end) return;
        if (now < g_held_until) {
            SleepMilliseconds(1);
            continue;
        }
        if (!g_events.empty() || PostedWaits()) return;
        const double seconds = static_cast<double>(end - now) / 1e9;
        if (!PumpWindowSystem(seconds)) WaitPosted(static_cast<int>(seconds * 1000) + 1);
    }
}

}  // namespace host
