// How text is composed from keys in a window that takes text.
#pragma once

class Fl_Window;

namespace host::desktop {

// The user's input method for one window, from construction to destruction; the window is shown before and
// hidden after. Several nest, as the windows do. Where there is no input method keys type what is on them.
//
// The display is opened without one: reading the tables of composed keys takes longer than everything else
// that stands between the program's start and its window, and the player itself takes no text.
class InputMethod {
public:
    explicit InputMethod(Fl_Window* window);
    ~InputMethod();
    InputMethod(const InputMethod&) = delete;
    InputMethod& operator=(const InputMethod&) = delete;

    Fl_Window* window() const { return m_window; }
    InputMethod* outer() const { return m_outer; }

private:
    Fl_Window* m_window;
    InputMethod* m_outer;
};

}  // namespace host::desktop
