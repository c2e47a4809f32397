#include "host/desktop/scheme.h"

#include <FL/Fl.H>
#include <FL/fl_draw.H>

#include <initializer_list>

namespace host::desktop {
namespace {

constexpr float kLine = 0.25f;  // of the text's colour

void Fill(int x, int y, int w, int h, Fl_Color color) {
    fl_color(color);
    fl_rectf(x + 1, y, w - 2, h);
    fl_rectf(x, y + 1, w, h - 2);
}

// Without its corners, which rounds it.
void Line(int x, int y, int w, int h, Fl_Color color) {
    fl_color(color);
    fl_xyline(x + 1, y, x + w - 2);
    fl_xyline(x + 1, y + h - 1, x + w - 2);
    fl_yxline(x, y + 1, y + h - 2);
    fl_yxline(x + w - 1, y + 1, y + h - 2);
}

void DrawLined(int x, int y, int w, int h, Fl_Color color) {
    Fill(x, y, w, h, color);
    Line(x, y, w, h, fl_color_average(FL_FOREGROUND_COLOR, FL_BACKGROUND_COLOR, kLine));
}

void DrawPressed(int x, int y, int w, int h, Fl_Color color) {
    DrawLined(x, y, w, h, fl_color_average(FL_FOREGROUND_COLOR, color, kLine / 2));
}

}  // namespace

void UseFlatScheme() {
    static bool done = false;
    if (done) return;
    done = true;
    for (const Fl_Boxtype box : {FL_UP_BOX, FL_THIN_UP_BOX, FL_BORDER_BOX})
        Fl::set_boxtype(box, DrawLined, 1, 1, 2, 2);
    for (const Fl_Boxtype box : {FL_DOWN_BOX, FL_THIN_DOWN_BOX})
        Fl::set_boxtype(box, DrawPressed, 1, 1, 2, 2);
}

}  // namespace host::desktop
