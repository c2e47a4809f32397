// What the modal dialogs share.
#pragma once

#include <FL/Enumerations.H>
#include <FL/Fl_Return_Button.H>
#include <FL/Fl_Window.H>

#include <string>
#include <vector>

#include "host/host.h"

namespace host::desktop {

// The loop of one open dialog. Dialogs nest: each runs inside the loop of the one before. An open popup menu
// closes when another dialog opens. Lives on the stack of the call that shows the dialog.
class ModalLoop {
public:
    ModalLoop(Modal kind, Pump pump);
    ModalLoop(const ModalLoop&) = delete;
    ModalLoop& operator=(const ModalLoop&) = delete;
    ~ModalLoop();

    bool too_deep()
        const;   // remote commands could nest dialogs without end: beyond a bound they count as cancelled
    void Run();  // until End, or until the pump returns false
    void End() { m_done = true; }
    bool done() const { return m_done; }
    bool ended_by_pump() const { return m_ended_by_pump; }

private:
    friend Modal host::InnermostModal();
    friend void host::CancelFileDialog();

    Modal m_kind;
    Pump m_pump;
    ModalLoop* m_outer;
    bool m_done = false;
    bool m_ended_by_pump = false;
};

// The window of a dialog. Keys and clicks that the user made before it was on the screen are not for it.
class DialogWindow : public Fl_Window {
public:
    DialogWindow(int w, int h);
    ~DialogWindow() override;

protected:
    void draw() override;
};

// The button that Enter presses, in the colour of what is marked.
class DefaultButton : public Fl_Return_Button {
public:
    DefaultButton(int x, int y, int w, int h, const char* label);

protected:
    void draw() override { Fl_Button::draw(); }  // without FLTK's arrow
};

// Text has the desktop's size. Lengths follow it: they are given for text of 13 pixels.
int DialogUnit(int pixels);
int DialogTextSize();

// A font that has the letters. FLTK draws a whole text in one font and does not substitute.
Fl_Font FontFor(const std::string& text);
Fl_Font FontForAnything();

// Breaks UTF-8 text at line feeds and blanks, and inside a word that is wider than the line. Measures with
// the current FLTK font.
std::vector<std::string> WrapText(const std::string& text, int width, size_t most_lines);

void PlaceDialog(Fl_Window* window);  // centred over the main window, or on the first screen
void OpenPopupGivesWay();

}  // namespace host::desktop
