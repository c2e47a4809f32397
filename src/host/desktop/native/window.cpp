#include <FL/Fl_Window.H>

#include <algorithm>

#include "host/desktop/native/x11.h"
#include "host/host.h"

namespace host::desktop::native {

MainWindowState g_main;

namespace {

constexpr uint64_t kSettle = 100'000'000;  // ns

// Another program has destroyed a window of ours. FLTK 1.3 would create another in its place, and crashes
// over it when it has drawn no text yet.
int OnDestroyed(Window id) {
    Fl_Window* window = fl_find(id);
    if (!window) return 0;
    if (id == g_main.id) {
        g_main.id = None;
        g_main.destroyed = true;
    } else {
        window->do_callback();  // a dialog ends as if closed
    }
    return 1;
}

// The window manager decides about the focus at the same moment.
void OnMapped() {
    if (!g_main.mapped) EndLaunch(fl_display);
    g_main.mapped = true;
    if (g_main.takes_input != 0) g_main.takes_input = std::min(g_main.takes_input, Nanoseconds() + kSettle);
}

// Sends position and black background together with the request that creates the window.
void PlaceNewWindow(Fl_Window* window, const int* place) {
    const Window id = fl_xid(window);
    XSetWindowBackground(fl_display, id, BlackPixel(fl_display, fl_screen));
    XSizeHints hints = {};
    hints.flags = PMinSize | PMaxSize | PWinGravity;
    hints.min_width = hints.max_width = window->w();
    hints.min_height = hints.max_height = window->h();
    hints.win_gravity = NorthWestGravity;
    if (place) {
        hints.flags |= USPosition;
        hints.x = place[0], hints.y = place[1];
        XMoveWindow(fl_display, id, place[0], place[1]);
    }
    XSetWMNormalHints(fl_display, id, &hints);
}

}  // namespace

int Watch(void* event, void*) {
    const XEvent& e = *static_cast<XEvent*>(event);
    if (e.type == DestroyNotify) return OnDestroyed(e.xdestroywindow.window);
    if (e.xany.window != g_main.id || g_main.id == None) return 0;
    switch (e.type) {
        case ConfigureNotify:
        case ReparentNotify:
        case MapNotify:
            g_main.place_known = false;
            if (e.type == MapNotify) OnMapped();
            break;
        case VisibilityNotify:
            g_main.covered = e.xvisibility.state != VisibilityUnobscured;
            break;
        case PropertyNotify:
            if (e.xproperty.atom == g_atoms.extents) g_main.place_known = false;
            if (e.xproperty.atom == g_atoms.state) ReadAbove();
            break;
    }
    return 0;
}

void ShowFirst(Fl_Window* window, const int* place, bool topmost, Focus focus) {
    // While the server is grabbed the window manager cannot see the window half made: it finds state and
    // place set when it maps it.
    XGrabServer(fl_display);
    window->show();
    const Window id = fl_xid(window);
    PlaceNewWindow(window, place);
    if (topmost) {
        const unsigned long state = g_atoms.above;
        XChangeProperty(fl_display, id, g_atoms.state, XA_ATOM, 32, PropModeReplace,
                        reinterpret_cast<const unsigned char*>(&state), 1);
    }
    g_main = MainWindowState();
    g_main.id = id;
    if (focus == Focus::kLeave) RefuseFocus();
    if (focus == Focus::kAsked) TellWhoAsked(id);
    XUngrabServer(fl_display);
    g_main.gc = XCreateGC(fl_display, id, 0, nullptr);
    g_main.topmost = topmost;
    g_main.above = topmost;
    g_main.background = true;
    g_main.managed = IsManaged();
    if (place) {
        g_main.x = place[0], g_main.y = place[1];
        g_main.place_known = true;  // until the server reports another place
    }
    if (!g_main.managed) {
        XWindowAttributes attributes;
        XGetWindowAttributes(fl_display, id, &attributes);
        XSelectInput(fl_display, id, attributes.your_event_mask | VisibilityChangeMask);
    }
    XFlush(fl_display);
}

void Hide(Fl_Window*) {
    if (g_main.id == None) return;
    XWithdrawWindow(fl_display, g_main.id, fl_screen);
    XFlush(fl_display);
}

void MoveOuter(Fl_Window*, int x, int y) {
    if (g_main.id == None) return;
    XMoveWindow(fl_display, g_main.id, x, y);
    XFlush(fl_display);
}

bool HasCome(Fl_Window*) {
    return g_main.mapped;
}

bool IsDestroyed() {
    return g_main.destroyed;
}

void Forget(Fl_Window*) {
    if (g_main.gc) XFreeGC(fl_display, g_main.gc);
    g_main = MainWindowState();
}

}  // namespace host::desktop::native
