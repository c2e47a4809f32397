// Composing text from keys in a window that takes text.
#pragma once

class Fl_Window;

namespace host::desktop {

// The user's input method for one window, from construction to destruction. The window must be shown before
// and hidden after. Objects nest as their windows do. Without an input method, keys type what is on them.
//
// The display is opened without one, because reading the tables of composed keys takes longer than everything
// else between the program's start and its window, and the player itself takes no text.
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
