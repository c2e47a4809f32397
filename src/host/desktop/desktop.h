// What the files of the desktop host share: the main window, the queue of events, the scale.
#pragma once

#include "host/host.h"

class Fl_Window;

namespace host::desktop {

bool OpenDisplay();  // false when there is none; cheap once it is open
bool IsDisplayOpen();
int Scale();              // device pixels for one of the program's, sideways and down
Fl_Window* MainWindow();  // null while there is none

void TitleWasSet(const std::string& title);
void PushEvent(const Event& event);
std::vector<int> TakeKeys();  // the keys at the head of the queue: typed ahead for the popup menu
// Waits at most so long for an event; false without a display.
bool PumpWindowSystem(double seconds);

// Between device pixels of the window system and logical desktop pixels.
int LogicalX(int root_x);
int LogicalY(int root_y);
int RootX(int logical_x);
int RootY(int logical_y);

void SetProgramIcon(const Icon& icon);  // of windows that are shown later; an empty one changes nothing

void PictureWasShown();                 // lets the sound device open, which waits for the first one
bool SoundHasClosed(int milliseconds);  // waits at most so long for the device that CloseSound stopped

int VirtualKey(int fltk_key, const char* text);  // 0 for a key that has no code here

}  // namespace host::desktop
