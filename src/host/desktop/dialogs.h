// What the modal dialogs share.
#pragma once

#include <FL/Enumerations.H>
#include <FL/Fl_Window.H>

#include <string>
#include <vector>

#include "host/host.h"

namespace host::desktop {

// One of the dialogs that are open, each inside the loop of the one before. A popup menu gives way to any
// other.
class ModalLoop {
public:
    explicit ModalLoop(Pump pump);
    ModalLoop(const ModalLoop&) = delete;
    ModalLoop& operator=(const ModalLoop&) = delete;
    ~ModalLoop();

    bool too_deep() const;  // remote commands may open dialogs without end: the answer is then "cancelled"
    void Run();             // until End, or until the pump says so
    void End() { m_done = true; }
    bool done() const { return m_done; }
    bool ended_by_pump() const { return m_ended_by_pump; }

private:
    Pump m_pump;
    bool m_done = false;
    bool m_ended_by_pump = false;
};

// Text sizes and lengths of dialogs follow the scale of the display.
int DialogUnit(int pixels);
int DialogTextSize();

// A font that has the letters: FLTK takes one font for a whole text and looks for no other.
Fl_Font FontFor(const std::string& text);
Fl_Font FontForAnything();

// Breaks at line feeds, blanks, and where it must between any two characters; UTF-8. The current FLTK font
// counts.
std::vector<std::string> WrapText(const std::string& text, int width, size_t most_lines);

void PlaceDialog(Fl_Window* window);  // in the middle of the main window's screen, over it
void OpenPopupGivesWay();

}  // namespace host::desktop
