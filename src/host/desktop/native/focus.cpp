#include <cstdlib>
#include <cstring>

#include "host/desktop/native/x11.h"
#include "host/host.h"

namespace host::desktop::native {

namespace {

constexpr int kRestorePatience = 30;              // ms
constexpr uint64_t kRefuseFocus = 1'000'000'000;  // ns

// A user time of 0 asks the window manager not to give the focus.
void SetUserTime(Window id, unsigned long time) {
    XChangeProperty(fl_display, id, XInternAtom(fl_display, "_NET_WM_USER_TIME", False), XA_CARDINAL, 32,
                    PropModeReplace, reinterpret_cast<const unsigned char*>(&time), 1);
}

bool IsMinimized() {
    if (g_main.id == None) return false;
    const Atom state = XInternAtom(fl_display, "WM_STATE", False);
    const std::vector<unsigned long> now = ReadProperty(g_main.id, state, state);
    return !now.empty() && now[0] == IconicState;
}

void SetTakesInput(bool takes) {
    XWMHints* hints = XGetWMHints(fl_display, g_main.id);
    if (!hints) return;
    hints->flags |= InputHint;
    hints->input = takes ? True : False;
    XSetWMHints(fl_display, g_main.id, hints);
    XFree(hints);
}

}  // namespace

// Some window managers understand the time, and the others that it takes no input at all, which is so until
// it is there.
void RefuseFocus() {
    SetUserTime(g_main.id, 0);
    SetTakesInput(false);
    g_main.takes_input = Nanoseconds() + kRefuseFocus;
}

// The start's name ends in the time of the press that began it.
void TellWhoAsked(Window id) {
    const char* token = std::getenv("DESKTOP_STARTUP_ID");
    if (!token || !*token) token = std::getenv("XDG_ACTIVATION_TOKEN");
    if (!token || !*token) return;
    XChangeProperty(fl_display, id, XInternAtom(fl_display, "_NET_STARTUP_ID", False),
                    XInternAtom(fl_display, "UTF8_STRING", False), 8, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(token), static_cast<int>(std::strlen(token)));
    const char* time = std::strstr(token, "_TIME");
    const unsigned long asked = time ? std::strtoul(time + 5, nullptr, 10) : 0;
    if (asked != 0) SetUserTime(id, asked & 0xFFFFFFFF);
}

// Window managers that take the message leave the focus where it is, and some of them give it to a window
// that is mapped; others know only the mapping.
void Unminimize() {
    if (!IsMinimized()) return;
    RefuseFocus();
    SendToRoot(XInternAtom(fl_display, "WM_CHANGE_STATE", False), {NormalState});
    for (int waited = 0; waited < kRestorePatience && IsMinimized(); ++waited) SleepMilliseconds(1);
    if (IsMinimized()) XMapWindow(fl_display, g_main.id);
    XFlush(fl_display);
}

void AcceptFocus() {
    if (g_main.takes_input == 0 || g_main.id == None || Nanoseconds() < g_main.takes_input) return;
    g_main.takes_input = 0;
    SetTakesInput(true);
}

}  // namespace host::desktop::native
