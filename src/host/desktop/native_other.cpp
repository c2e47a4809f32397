// FLTK on anything but X11.
#if defined(_WIN32) || defined(__APPLE__)

#include <FL/Fl.H>
#include <FL/Fl_Window.H>

#include "host/desktop/native.h"

namespace host::desktop::native {

bool HasDisplay() {
    return true;
}

bool OpenDisplay() {
    return true;
}

int DisplayScale() {
    return 1;
}

void ShowFirst(Fl_Window* window, const int* place, bool) {
    if (place) window->position(place[0], place[1]);
    window->show();
}

void MoveOuter(Fl_Window* window, int x, int y) {
    window->position(x + window->x() - window->x_root(), y + window->y() - window->y_root());
}

void KeepOnTop(Fl_Window*) {}

void Flush() {
    Fl::flush();
}

void WhereIs(Fl_Window* window, int* x, int* y, Frame* frame) {
    *x = window->x_root();
    *y = window->y_root();
    const int side = (window->decorated_w() - window->w()) / 2;
    *frame = {side, side, window->decorated_h() - window->h() - side, side};
}

bool HasCome(Fl_Window* window) {
    return window->shown();
}

bool PutPicture(Fl_Window*, const Picture&, int, int, int, int) {
    return false;
}

void Forget(Fl_Window*) {}

std::string JapaneseFont() {
    return "";
}

}  // namespace host::desktop::native

#endif
