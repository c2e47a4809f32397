#include <FL/Fl_Window.H>

#include <algorithm>

#include "host/desktop/native/x11.h"

namespace host::desktop::native {

namespace {

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
    const std::vector<unsigned long> widths = ReadProperty(g_main.id, g_atoms.extents, XA_CARDINAL);
    if (widths.size() == 4) {
        auto width = [&](int i) { return static_cast<int>(std::min(widths[i], 1000ul)); };
        return {width(0), width(1), width(2), width(3)};
    }
    return FrameByTree(g_main.id, g_main.x, g_main.y, window->w(), window->h());
}

}  // namespace

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

}  // namespace host::desktop::native
