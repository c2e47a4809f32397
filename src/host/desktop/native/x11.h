// What the files of this folder share: the main window on X11 and the requests that several of them send.
#pragma once

#include <FL/Fl.H>
#include <FL/x.H>

#include <initializer_list>
#include <vector>

#include "host/desktop/native.h"

namespace host::desktop::native {

struct Atoms {
    Atom state, above, extents, check, supported;  // those of window managers, from OpenDisplay on
};

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

extern Atoms g_atoms;
extern MainWindowState g_main;

// A property of 32-bit items; empty when it is missing or of another type.
std::vector<unsigned long> ReadProperty(Window window, Atom name, Atom type);

// A request to the window manager, about the main window.
void SendToRoot(Atom type, std::initializer_list<long> values);

bool IsManaged();  // a window manager that keeps window states is running
void ReadAbove();  // updates g_main.above

// Records an event of the server for the main window before FLTK handles it; a system handler of FLTK.
int Watch(void* event, void*);

// For a window that appears without the focus.
void RefuseFocus();

// Tells the launcher that started the program, if any, that it has started.
void EndLaunch(Display* display);

// Passes on what the environment tells about the press that started the program.
void TellWhoAsked(Window id);

}  // namespace host::desktop::native
