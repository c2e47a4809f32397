// What FLTK itself does not offer, by window system. native_x11.cpp has the body for X11, native_other.cpp
// one that makes do with FLTK's own calls; a build takes the one that fits. All coordinates are device
// pixels.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

class Fl_Window;

namespace host::desktop::native {

struct Frame {
    int left, right, top, bottom;  // widths of the frame that a window manager draws
};

struct Picture {
    int width, height;             // in pixels of the program
    int scale;                     // each is shown as scale by scale device pixels
    std::vector<uint32_t> pixels;  // 0x00RRGGBB
};

bool HasDisplay();   // tries, and keeps nothing
bool OpenDisplay();  // false when there is none; cheap once it is open
int DisplayScale();  // 1 on ordinary screens

// Shows a new window, black, topmost from its first moment. place: outer corner, null for the window
// manager's choice.
void ShowFirst(Fl_Window* window, const int* place, bool topmost);
void MoveOuter(Fl_Window* window, int x, int y);
void KeepOnTop(Fl_Window* window);
void Flush();  // sends what waits to be sent, without waiting for an answer

// Client area's corner and frame; asks the display only after something has changed.
void WhereIs(Fl_Window* window, int* x, int* y, Frame* frame);

// Whether the window has come to the screen, so that its place is final as far as the window manager goes.
bool HasCome(Fl_Window* window);

// Puts a part of the picture (in its own pixels) at its place in the window. False when that is beyond this
// display: then the caller has FLTK draw it.
bool PutPicture(Fl_Window* window, const Picture& picture, int x, int y, int width, int height);

// The window is about to be hidden.
void Forget(Fl_Window* window);

// A font family that has Japanese letters, empty when none is known.
std::string JapaneseFont();

}  // namespace host::desktop::native
