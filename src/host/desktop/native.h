// What FLTK does not offer on X11: placing by the frame's corner, staying on top, drawing pictures directly.
// All coordinates are device pixels.
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

bool HasDisplay();   // tries to connect, and disconnects
bool OpenDisplay();  // false when there is none; cheap once it is open
int DisplayScale();  // 1 on ordinary screens

enum class Focus {
    kUsual,  // as the window manager does it
    kLeave,  // without the focus
    kAsked,  // with it: the user has started the program, as the environment tells
};

// Shows a new window, black, topmost from the start. place: outer corner, null lets the window manager
// choose.
void ShowFirst(Fl_Window* window, const int* place, bool topmost, Focus focus);
void Hide(Fl_Window* window);  // it keeps its place
void Unminimize();             // without the focus
void MoveOuter(Fl_Window* window, int x, int y);
void KeepOnTop(Fl_Window* window);
void AcceptFocus();  // call often: ends the refusal of a window that came without the focus
void Flush();        // sends pending requests without waiting for an answer

// The client area's corner and the frame. Asks the display only when something has changed.
void WhereIs(Fl_Window* window, int* x, int* y, Frame* frame);

// Whether the window is mapped, so that the window manager has chosen its place.
bool HasCome(Fl_Window* window);

// Puts a part of the picture (in its own pixels) at its place in the window. False when this display's pixel
// format does not allow it: then the caller has FLTK draw it.
bool PutPicture(Fl_Window* window, const Picture& picture, int x, int y, int width, int height);

uint32_t EventTime();  // of the event that FLTK is handling, ms, wrapping

// Whether another program has destroyed the main window.
bool IsDestroyed();

// Call before the window is closed.
void Forget(Fl_Window* window);

// A font family with Japanese letters, empty when none is installed.
std::string JapaneseFont();

}  // namespace host::desktop::native
