// The one window of the program, as FLTK sees it.
#pragma once

#include <FL/Fl_Window.H>

#include "host/desktop/clicks.h"
#include "host/desktop/native.h"

namespace host::desktop {

class PlayerWindow : public Fl_Window {
public:
    PlayerWindow(int width, int height, int scale);  // in logical pixels; starts black

    const native::Picture& picture() const { return m_picture; }
    void SetClientSize(int width, int height);
    void Show(int x, int y, int width, int height, const uint32_t* pixels, int stride);

    int handle(int event) override;

protected:
    void draw() override;

private:
    int HandleKey();
    int HandlePush();
    void Paste();
    void FixSize();

    ClickCounter m_clicks;
    native::Picture m_picture;  // what the window shows, to redraw exposed parts
};

}  // namespace host::desktop
