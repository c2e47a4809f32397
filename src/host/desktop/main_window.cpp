#include "host/desktop/main_window.h"

#include <FL/Fl.H>
#include <FL/fl_draw.H>

#include <algorithm>
#include <cstring>

#include "host/desktop/desktop.h"
#include "host/desktop/dropped.h"

namespace host::desktop {
namespace {

void PushMenu(int root_x, int root_y) {
    Event event;
    event.kind = EventKind::kMenu;
    event.x = LogicalX(root_x);
    event.y = LogicalY(root_y);
    PushEvent(event);
}

void OnClose(Fl_Widget*, void*) {
    Event event;
    event.kind = EventKind::kClose;
    PushEvent(event);
}

// FLTK's own drawing asks for the picture row by row.
void GiveRow(void* user, int x, int y, int width, unsigned char* out) {
    const native::Picture& picture = *static_cast<const native::Picture*>(user);
    for (int i = 0; i < width; ++i) {
        const int column = (x + i) / picture.scale, row = y / picture.scale;
        const uint32_t pixel = picture.pixels[static_cast<size_t>(row) * picture.width + column];
        *out++ = static_cast<unsigned char>(pixel >> 16);
        *out++ = static_cast<unsigned char>(pixel >> 8);
        *out++ = static_cast<unsigned char>(pixel);
    }
}

}  // namespace

PlayerWindow::PlayerWindow(int width, int height, int scale) : Fl_Window(width * scale, height * scale) {
    m_picture.scale = scale;
    m_picture.width = width;
    m_picture.height = height;
    m_picture.pixels.assign(static_cast<size_t>(width) * height, 0);
    end();
    xclass("lumetra");
    color(FL_BLACK);
    callback(OnClose);
    FixSize();
}

void PlayerWindow::FixSize() {
    size_range(w(), h(), w(), h());
}

void PlayerWindow::SetClientSize(int width, int height) {
    if (width < 1 || height < 1 || width > 10000 || height > 10000) return;
    m_picture.width = width;
    m_picture.height = height;
    m_picture.pixels.assign(static_cast<size_t>(width) * height, 0);
    size(width * m_picture.scale, height * m_picture.scale);
    FixSize();
    redraw();
}

void PlayerWindow::Show(int x, int y, int width, int height, const uint32_t* pixels, int stride) {
    const int left = std::max(x, 0), top = std::max(y, 0);
    const int right = std::min(x + width, m_picture.width), bottom = std::min(y + height, m_picture.height);
    if (left >= right || top >= bottom) return;
    // Send only the rows that changed: a player at rest changes ten.
    int first = bottom, last = top;
    for (int row = top; row < bottom; ++row) {
        const uint32_t* from = pixels + static_cast<ptrdiff_t>(row - y) * stride + (left - x);
        uint32_t* to = &m_picture.pixels[static_cast<size_t>(row) * m_picture.width + left];
        const size_t bytes = static_cast<size_t>(right - left) * sizeof(uint32_t);
        if (std::memcmp(to, from, bytes) == 0) continue;
        std::memcpy(to, from, bytes);
        first = std::min(first, row);
        last = row + 1;
    }
    if (first >= last) return;
    if (!shown()) return;
    if (!native::PutPicture(this, m_picture, left, first, right - left, last - first)) {
        damage(FL_DAMAGE_USER1);
        Fl::flush();
    }
    PictureWasShown();
}

void PlayerWindow::draw() {
    if (native::PutPicture(this, m_picture, 0, 0, m_picture.width, m_picture.height)) return;
    fl_draw_image(GiveRow, &m_picture, 0, 0, m_picture.width * m_picture.scale,
                  m_picture.height * m_picture.scale);
}

int PlayerWindow::HandleKey() {
    const int key = Fl::event_key();
    if (key == FL_Menu || (key == FL_F + 10 && Fl::event_state(FL_SHIFT))) {
        PushMenu(x_root(), y_root());
        return 1;
    }
    Event event;
    event.kind = EventKind::kKeyDown;
    event.key = VirtualKey(key, Fl::event_text());
    if (event.key && !Fl::event_state(FL_ALT | FL_META)) PushEvent(event);
    return 1;  // also keys without a code: FLTK would close the window at Esc
}

int PlayerWindow::HandlePush() {
    if (Fl::event_button() == FL_RIGHT_MOUSE) PushMenu(Fl::event_x_root(), Fl::event_y_root());
    if (Fl::event_button() == FL_LEFT_MOUSE &&
        m_clicks.Press(native::EventTime(), Fl::event_x_root(), Fl::event_y_root())) {
        Event event;
        event.kind = EventKind::kDoubleClick;
        event.x = Fl::event_x() / m_picture.scale;
        event.y = Fl::event_y() / m_picture.scale;
        PushEvent(event);
    }
    return 1;
}

void PlayerWindow::Paste() {
    Event event;
    event.kind = EventKind::kDrop;
    event.text = DroppedPath(std::string(Fl::event_text(), static_cast<size_t>(Fl::event_length())));
    if (!event.text.empty()) PushEvent(event);
}

int PlayerWindow::handle(int event) {
    switch (event) {
        case FL_KEYBOARD:
            return HandleKey();
        case FL_PUSH:
            return HandlePush();
        case FL_RELEASE:
        case FL_DRAG:
        case FL_FOCUS:
        case FL_UNFOCUS:
        case FL_SHORTCUT:
        case FL_DND_ENTER:
        case FL_DND_DRAG:
        case FL_DND_LEAVE:
        case FL_DND_RELEASE:
            return 1;
        case FL_PASTE:
            Paste();
            return 1;
        default:
            return Fl_Window::handle(event);
    }
}

}  // namespace host::desktop
