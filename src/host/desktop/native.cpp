#include "host/desktop/native.h"

#include <FL/Fl.H>
#include <FL/Fl_Window.H>
#include <FL/x.H>
#include <fontconfig/fontconfig.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include "host/desktop/log.h"
#include "host/host.h"

namespace host::desktop::native {
namespace {

constexpr int kRestorePatience = 30;                                     // ms
constexpr uint64_t kRefuseFocus = 1'000'000'000, kSettle = 100'000'000;  // ns
constexpr uint64_t kRaiseEvery = 500'000'000;  // ns; does not flood a window manager that refuses

struct MainWindowState {
    Window id = None;
    GC gc = nullptr;
    bool topmost = false;
    bool managed = false;      // a window manager that keeps window states is running
    bool above = false;        // it has set the "above" state
    bool covered = false;      // without one: another window covers ours
    bool place_known = false;  // x, y and frame are up to date
    bool mapped = false;
    bool destroyed = false;   // by another program; id is None
    bool background = false;  // the server still paints exposed parts black
    bool checked = false;     // whether the window manager knows the state
    bool told = false;        // that the window does not stay above
    int x = 0, y = 0;
    Frame frame = {0, 0, 0, 0};
    uint64_t last_raise = 0;
    uint64_t takes_input = 0;  // from this time on; 0: always
};

MainWindowState g_main;
Atom g_state, g_above, g_extents, g_check, g_supported;

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
    g_state = atoms[0], g_above = atoms[1], g_extents = atoms[2], g_check = atoms[3], g_supported = atoms[4];
}

// A property of 32-bit items; empty when it is missing or of another type.
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

bool IsManaged() {
    return !ReadProperty(RootWindow(fl_display, fl_screen), g_check, XA_WINDOW).empty();
}

void ReadAbove() {
    const std::vector<unsigned long> states = ReadProperty(g_main.id, g_state, XA_ATOM);
    g_main.above = std::find(states.begin(), states.end(), g_above) != states.end();
}

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
    g_main.mapped = true;
    if (g_main.takes_input != 0) g_main.takes_input = std::min(g_main.takes_input, Nanoseconds() + kSettle);
}

// Records the server's events for the main window before FLTK handles them.
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
            if (e.xproperty.atom == g_extents) g_main.place_known = false;
            if (e.xproperty.atom == g_state) ReadAbove();
            break;
    }
    return 0;
}

// The frame, measured from the outermost window around ours, when the window manager does not publish it.
Frame FrameByTree(Window id, int x, int y, int width, int height) {
    Window root = None, parent = None, *children = nullptr;
    unsigned count;
    Window outermost = id;
    for (int depth = 0; depth < 16; ++depth) {
        if (!XQueryTree(fl_display, outermost, &root, &parent, &children, &count)) return {0, 0, 0, 0};
        if (children) XFree(children);
        if (parent == None || parent == root) break;
        outermost = parent;
    }
    if (outermost == id) return {0, 0, 0, 0};
    int fx, fy;
    unsigned fw, fh, border, bits;
    XGetGeometry(fl_display, outermost, &root, &fx, &fy, &fw, &fh, &border, &bits);
    const int right = fx + static_cast<int>(fw + 2 * border), bottom = fy + static_cast<int>(fh + 2 * border);
    return {std::max(0, x - fx), std::max(0, right - x - width), std::max(0, y - fy),
            std::max(0, bottom - y - height)};
}

Frame ReadFrame(Fl_Window* window) {
    const std::vector<unsigned long> widths = ReadProperty(g_main.id, g_extents, XA_CARDINAL);
    if (widths.size() == 4) {
        auto width = [&](int i) { return static_cast<int>(std::min(widths[i], 1000ul)); };
        return {width(0), width(1), width(2), width(3)};
    }
    return FrameByTree(g_main.id, g_main.x, g_main.y, window->w(), window->h());
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

// A user time of 0 asks the window manager not to give the focus.
void SetUserTime(Window id, unsigned long time) {
    XChangeProperty(fl_display, id, XInternAtom(fl_display, "_NET_WM_USER_TIME", False), XA_CARDINAL, 32,
                    PropModeReplace, reinterpret_cast<const unsigned char*>(&time), 1);
}

// A request to the window manager, about the main window.
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

// For a window that appears without the focus: some window managers understand the time, and the others that
// it takes no input at all, which is so until it is there.
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

bool FitsDirectly() {
    const XVisualInfo* visual = fl_visual;
    return visual && visual->c_class == TrueColor && (visual->depth == 24 || visual->depth == 32) &&
           visual->red_mask == 0xFF0000 && visual->green_mask == 0xFF00 && visual->blue_mask == 0xFF;
}

// An image header for pixels that the caller keeps.
XImage ImageOver(const uint32_t* pixels, int width, int height) {
    XImage image = {};
    image.width = width, image.height = height;
    image.format = ZPixmap;
    image.data = reinterpret_cast<char*>(const_cast<uint32_t*>(pixels));
    const uint32_t one = 1;
    image.byte_order = *reinterpret_cast<const char*>(&one) ? LSBFirst : MSBFirst;
    image.bitmap_bit_order = image.byte_order;
    image.bitmap_unit = image.bitmap_pad = 32;
    image.depth = fl_visual->depth;
    image.bits_per_pixel = 32;
    image.bytes_per_line = width * 4;
    image.red_mask = fl_visual->red_mask;
    image.green_mask = fl_visual->green_mask;
    image.blue_mask = fl_visual->blue_mask;
    XInitImage(&image);
    return image;
}

void PutEnlarged(Window id, const Picture& picture, int x, int y, int width, int height) {
    static std::vector<uint32_t> rows;
    const int s = picture.scale;
    rows.resize(static_cast<size_t>(width) * s * height * s);
    for (int row = 0; row < height; ++row) {
        const uint32_t* from = &picture.pixels[static_cast<size_t>(y + row) * picture.width + x];
        uint32_t* to = &rows[static_cast<size_t>(row) * s * width * s];
        for (int column = 0; column < width; ++column) std::fill_n(to + column * s, s, from[column]);
        for (int line = 1; line < s; ++line) {
            std::copy_n(to, static_cast<size_t>(width) * s, to + static_cast<size_t>(line) * width * s);
        }
    }
    XImage image = ImageOver(rows.data(), width * s, height * s);
    XPutImage(fl_display, id, g_main.gc, &image, 0, 0, x * s, y * s, width * s, height * s);
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

}  // namespace

bool HasDisplay() {
    Display* display = XOpenDisplay(nullptr);
    if (display) XCloseDisplay(display);
    return display != nullptr;
}

bool OpenDisplay() {
    if (fl_display) return true;
    // From version 1.4 on FLTK prefers Wayland, whose windows can neither place themselves nor stay on top.
    setenv("FLTK_BACKEND", "x11", 1);
    // FLTK ends the program when it cannot open the display, so it gets an open one.
    Display* display = XOpenDisplay(nullptr);
    if (!display) return false;
    XSetErrorHandler(OnError);
    XSetIOErrorHandler(OnDisplayLost);
    InternAtoms(display);
    XSetLocaleModifiers("@im=none");  // see InputMethod
    fl_open_display(display);
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

void ShowFirst(Fl_Window* window, const int* place, bool topmost, Focus focus) {
    // While the server is grabbed the window manager cannot see the window half made: it finds state and
    // place set when it maps it.
    XGrabServer(fl_display);
    window->show();
    const Window id = fl_xid(window);
    PlaceNewWindow(window, place);
    if (topmost) {
        const unsigned long state = g_above;
        XChangeProperty(fl_display, id, g_state, XA_ATOM, 32, PropModeReplace,
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

void MoveOuter(Fl_Window*, int x, int y) {
    if (g_main.id == None) return;
    XMoveWindow(fl_display, g_main.id, x, y);
    XFlush(fl_display);
}

namespace {

void TellRefused() {
    if (!g_main.told) Log("host: the window manager does not keep the window above others\n");
    g_main.told = true;
}

// A window manager that does not know the state leaves it as it was set, without effect.
void CheckKnown() {
    if (g_main.checked || !g_main.managed || !g_main.mapped) return;
    g_main.checked = true;
    const std::vector<unsigned long> known =
        ReadProperty(RootWindow(fl_display, fl_screen), g_supported, XA_ATOM);
    if (std::find(known.begin(), known.end(), g_above) == known.end()) TellRefused();
}

}  // namespace

void KeepOnTop(Fl_Window*) {
    if (!g_main.topmost || g_main.id == None) return;
    CheckKnown();
    const bool lost = g_main.managed ? !g_main.above : g_main.covered;
    if (!lost) return;
    const uint64_t now = Nanoseconds();
    if (now - g_main.last_raise < kRaiseEvery) return;
    if (g_main.managed && g_main.last_raise) TellRefused();
    g_main.last_raise = now;
    if (!g_main.managed) {
        XRaiseWindow(fl_display, g_main.id);
        return;
    }
    constexpr long kAdd = 1, kFromApplication = 1;
    SendToRoot(g_state, {kAdd, static_cast<long>(g_above), 0, kFromApplication});
}

void AcceptFocus() {
    if (g_main.takes_input == 0 || g_main.id == None || Nanoseconds() < g_main.takes_input) return;
    g_main.takes_input = 0;
    SetTakesInput(true);
}

void Flush() {
    XFlush(fl_display);
}

void WhereIs(Fl_Window* window, int* x, int* y, Frame* frame) {
    if (!g_main.place_known && g_main.id != None) {
        Window child;
        XTranslateCoordinates(fl_display, g_main.id, RootWindow(fl_display, fl_screen), 0, 0, &g_main.x,
                              &g_main.y, &child);
        g_main.frame = ReadFrame(window);
        g_main.place_known = true;
    }
    *x = g_main.x;
    *y = g_main.y;
    *frame = g_main.frame;
}

bool HasCome(Fl_Window*) {
    return g_main.mapped;
}

bool PutPicture(Fl_Window*, const Picture& picture, int x, int y, int width, int height) {
    if (g_main.destroyed) return true;
    if (!FitsDirectly() || !g_main.gc) return false;
    const Window id = g_main.id;
    if (picture.scale == 1) {
        XImage image = ImageOver(picture.pixels.data(), picture.width, picture.height);
        XPutImage(fl_display, id, g_main.gc, &image, x, y, x, y, width, height);
    } else {
        PutEnlarged(id, picture, x, y, width, height);
    }
    if (g_main.background) {
        // From now on exposed parts are redrawn by us, without a black flash first.
        XSetWindowBackgroundPixmap(fl_display, id, None);
        g_main.background = false;
    }
    XFlush(fl_display);
    return true;
}

bool IsDestroyed() {
    return g_main.destroyed;
}

uint32_t EventTime() {
    return static_cast<uint32_t>(fl_event_time);
}

void Forget(Fl_Window*) {
    if (g_main.gc) XFreeGC(fl_display, g_main.gc);
    g_main = MainWindowState();
}

std::string JapaneseFont() {
    std::string family;
    FcPattern* wanted = FcNameParse(reinterpret_cast<const FcChar8*>("sans:lang=ja"));
    if (!wanted) return family;
    FcConfigSubstitute(nullptr, wanted, FcMatchPattern);
    FcDefaultSubstitute(wanted);
    FcResult result;
    FcPattern* found = FcFontMatch(nullptr, wanted, &result);
    FcCharSet* letters = nullptr;
    FcChar8* name = nullptr;
    constexpr FcChar32 kHiraganaA = 0x3042;
    if (found && FcPatternGetCharSet(found, FC_CHARSET, 0, &letters) == FcResultMatch &&
        FcCharSetHasChar(letters, kHiraganaA) &&
        FcPatternGetString(found, FC_FAMILY, 0, &name) == FcResultMatch) {
        family = reinterpret_cast<const char*>(name);
    }
    if (found) FcPatternDestroy(found);
    FcPatternDestroy(wanted);
    return family;
}

}  // namespace host::desktop::native
