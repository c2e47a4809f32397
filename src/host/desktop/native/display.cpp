#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <string>

#include "host/desktop/log.h"
#include "host/desktop/native/x11.h"
#include "host/host.h"

namespace host::desktop::native {

Atoms g_atoms;

namespace {

// Ours come first; the others are those that FLTK asks for one by one while it opens the display and its
// first window. Xlib caches them, so fetching all at once costs one round trip instead of forty.
const char* const kAtoms[] = {"_NET_WM_STATE",
                              "_NET_WM_STATE_ABOVE",
                              "_NET_FRAME_EXTENTS",
                              "_NET_SUPPORTING_WM_CHECK",
                              "_NET_SUPPORTED",
                              "WM_DELETE_WINDOW",
                              "WM_PROTOCOLS",
                              "_MOTIF_WM_HINTS",
                              "TARGETS",
                              "CLIPBOARD",
                              "TIMESTAMP",
                              "PRIMARY_TIMESTAMP",
                              "CLIPBOARD_TIMESTAMP",
                              "XdndAware",
                              "XdndSelection",
                              "XdndEnter",
                              "XdndTypeList",
                              "XdndPosition",
                              "XdndLeave",
                              "XdndDrop",
                              "XdndStatus",
                              "XdndActionCopy",
                              "XdndFinished",
                              "text/uri-list",
                              "text/plain;charset=UTF-8",
                              "text/plain;charset=utf-8",
                              "text/plain",
                              "TEXT",
                              "COMPOUND_TEXT",
                              "UTF8_STRING",
                              "image/bmp",
                              "image/png",
                              "INCR",
                              "_NET_WM_PID",
                              "_NET_WM_NAME",
                              "_NET_WM_ICON_NAME",
                              "_NET_WM_STATE_FULLSCREEN",
                              "_NET_WM_FULLSCREEN_MONITORS",
                              "_NET_WORKAREA",
                              "_NET_WM_ICON",
                              "_NET_ACTIVE_WINDOW",
                              "_NET_WM_USER_TIME",
                              "_NET_STARTUP_ID"};

void InternAtoms(Display* display) {
    Atom atoms[std::size(kAtoms)] = {};
    XInternAtoms(display, const_cast<char**>(kAtoms), static_cast<int>(std::size(kAtoms)), False, atoms);
    g_atoms = {atoms[0], atoms[1], atoms[2], atoms[3], atoms[4]};
}

// Xlib's default handler ends the program, and another program may destroy our window between two requests.
int OnError(Display*, XErrorEvent* error) {
    Log("host: X error " + std::to_string(error->error_code) + " of request " +
        std::to_string(error->request_code) + "\n");
    return 0;
}

// Xlib's default ends the program with 1, which means that a command was handed on.
int OnDisplayLost(Display*) {
    constexpr char kLine[] = "lumetra: the display is gone\n";
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, kLine, sizeof(kLine) - 1);
    WithdrawInstance();
    _exit(255);
}

// FLTK ends the program when it cannot open the display, so it gets an open one.
void GiveToFltk(Display* display) {
#if FL_API_VERSION >= 10400
    fl_x11_use_display(display);
    fl_open_display();
    // We enlarge by ourselves.
    for (int screen = 0; screen < Fl::screen_count(); ++screen) Fl::screen_scale(screen, 1);
    Fl::keyboard_screen_scaling(0);
    fl_contrast_mode(FL_CONTRAST_LEGACY);  // the other one writes black on the blue of what is marked
#else
    fl_open_display(display);
#endif
}

}  // namespace

std::vector<unsigned long> ReadProperty(Window window, Atom name, Atom type) {
    Atom actual_type;
    int format;
    unsigned long count = 0, left;
    unsigned char* data = nullptr;
    std::vector<unsigned long> items;
    if (XGetWindowProperty(fl_display, window, name, 0, 1024, False, type, &actual_type, &format, &count,
                           &left, &data) == Success &&
        data) {
        if (format == 32 && actual_type == type) {
            const unsigned long* values = reinterpret_cast<const unsigned long*>(data);
            items.assign(values, values + count);
        }
        XFree(data);
    }
    return items;
}

void SendToRoot(Atom type, std::initializer_list<long> values) {
    XEvent ask = {};
    ask.xclient.type = ClientMessage;
    ask.xclient.window = g_main.id;
    ask.xclient.message_type = type;
    ask.xclient.format = 32;
    std::copy(values.begin(), values.end(), ask.xclient.data.l);
    XSendEvent(fl_display, RootWindow(fl_display, fl_screen), False,
               SubstructureRedirectMask | SubstructureNotifyMask, &ask);
}

bool HasDisplay() {
    Display* display = XOpenDisplay(nullptr);
    if (display) XCloseDisplay(display);
    return display != nullptr;
}

bool OpenDisplay() {
    if (fl_display) return true;
    // From version 1.4 on FLTK prefers Wayland, whose windows can neither place themselves nor stay on top.
    setenv("FLTK_BACKEND", "x11", 1);
    Display* display = XOpenDisplay(nullptr);
    if (!display) return false;
    XSetErrorHandler(OnError);
    XSetIOErrorHandler(OnDisplayLost);
    InternAtoms(display);
    XSetLocaleModifiers("@im=none");  // see InputMethod
    GiveToFltk(display);
    Fl::add_system_handler(Watch, nullptr);
    return true;
}

int DisplayScale() {
    const char* text = XGetDefault(fl_display, "Xft", "dpi");
    double dpi = text ? std::atof(text) : 0;
    if (dpi < 1) {
        const int millimetres = DisplayWidthMM(fl_display, fl_screen);
        dpi = millimetres > 0 ? DisplayWidth(fl_display, fl_screen) * 25.4 / millimetres : 96;
    }
    return std::clamp(static_cast<int>(dpi / 96 + 0.25), 1, 4);
}

void Flush() {
    XFlush(fl_display);
}

uint32_t EventTime() {
    return static_cast<uint32_t>(fl_event_time);
}

}  // namespace host::desktop::native
