// The popup menu. Only the user can end the loop of FLTK's own menu; ours must also end at a posted quit.
#include <FL/Fl.H>
#include <FL/Fl_Menu_Window.H>
#include <FL/fl_draw.H>

#include <algorithm>
#include <cctype>
#include <cstdlib>

#include "host/desktop/desktop.h"
#include "host/desktop/dialogs.h"

namespace host {
namespace desktop {
namespace {

struct Row {
    int id = 0;
    std::string text;
    int y = 0, height = 0;
};

std::string WithoutMark(const std::string& text) {
    std::string out = text;
    const size_t at = out.find('&');
    if (at != std::string::npos) out.erase(at, 1);
    return out;
}

// The key code that chooses the item: that of the letter after `&`.
int Mnemonic(const std::string& text) {
    const size_t at = text.find('&');
    return at != std::string::npos && at + 1 < text.size()
               ? std::toupper(static_cast<unsigned char>(text[at + 1]))
               : 0;
}

class PopupWindow : public Fl_Menu_Window {
public:
    PopupWindow(const std::vector<Row>& rows, int w, int h, ModalLoop* loop)
        : Fl_Menu_Window(w, h),
          m_rows(rows),
          m_loop(loop),
          m_start_x(Fl::event_x_root()),
          m_start_y(Fl::event_y_root()) {
        end();
        callback([](Fl_Widget* popup, void*) { static_cast<PopupWindow*>(popup)->Choose(-1); });
        set_modal();
        clear_border();
        box(FL_UP_BOX);
    }

    int chosen() const { return m_chosen; }
    void HandleKey(int code);
    int handle(int event) override;

protected:
    void draw() override;

private:
    int RowAt() const;
    void Mark(int row);
    void Step(int by);
    void Choose(int row);
    bool HasMoved() const {
        return std::abs(Fl::event_x_root() - m_start_x) + std::abs(Fl::event_y_root() - m_start_y) >
               DialogUnit(4);
    }

    std::vector<Row> m_rows;
    ModalLoop* m_loop;
    int m_start_x, m_start_y;
    int m_marked = -1;
    int m_chosen = 0;
};

PopupWindow* g_popup = nullptr;
ModalLoop* g_popup_loop = nullptr;

int PopupWindow::RowAt() const {
    const int px = Fl::event_x_root() - x(), py = Fl::event_y_root() - y();
    if (px < 0 || px >= w()) return -1;
    for (size_t at = 0; at < m_rows.size(); ++at) {
        if (py >= m_rows[at].y && py < m_rows[at].y + m_rows[at].height)
            return m_rows[at].id ? static_cast<int>(at) : -1;
    }
    return -1;
}

void PopupWindow::Mark(int row) {
    if (row == m_marked) return;
    m_marked = row;
    redraw();
}

void PopupWindow::Step(int by) {
    const int count = static_cast<int>(m_rows.size());
    int row = m_marked < 0 ? (by > 0 ? -1 : count) : m_marked;
    for (int tries = 0; tries < count; ++tries) {
        row = (row + by + count) % count;
        if (m_rows[row].id) break;
    }
    if (m_rows[row].id) Mark(row);
}

void PopupWindow::Choose(int row) {
    if (row >= 0) m_chosen = m_rows[row].id;
    m_loop->End();
}

void PopupWindow::HandleKey(int code) {
    constexpr int kTab = 9, kEnter = 13, kEscape = 27, kEnd = 35, kHome = 36, kUp = 38, kDown = 40,
                  kMenuKey = 93;
    switch (code) {
        case kUp:
            return Step(-1);
        case kDown:
        case kTab:
            return Step(1);
        case kHome:
            m_marked = -1;
            return Step(1);
        case kEnd:
            m_marked = -1;
            return Step(-1);
        case kEnter:
            if (m_marked >= 0) Choose(m_marked);
            return;
        case kEscape:
        case kMenuKey:
            return Choose(-1);
    }
    for (size_t at = 0; at < m_rows.size(); ++at) {
        if (m_rows[at].id && code != 0 && Mnemonic(m_rows[at].text) == code)
            return Choose(static_cast<int>(at));
    }
}

int PopupWindow::handle(int event) {
    switch (event) {
        case FL_KEYBOARD:
            HandleKey(VirtualKey(Fl::event_key(), Fl::event_text()));
            return 1;
        case FL_MOVE:
        case FL_DRAG:
            Mark(RowAt());
            return 1;
        case FL_PUSH:
            if (Fl::event_x_root() < x() || Fl::event_x_root() >= x() + w() || Fl::event_y_root() < y() ||
                Fl::event_y_root() >= y() + h()) {
                Choose(-1);
            }
            m_start_x = INT32_MIN / 4;  // from now on every release counts
            return 1;
        case FL_RELEASE:
            if (RowAt() >= 0 && HasMoved()) Choose(RowAt());
            return 1;
        default:
            return Fl_Menu_Window::handle(event);
    }
}

void PopupWindow::draw() {
    draw_box(box(), 0, 0, w(), h(), color());
    const int indent = DialogUnit(14);
    for (size_t at = 0; at < m_rows.size(); ++at) {
        const Row& row = m_rows[at];
        if (!row.id) {
            const int middle = row.y + row.height / 2;
            fl_color(fl_darker(color()));
            fl_xyline(DialogUnit(3), middle, w() - DialogUnit(4));
            fl_color(fl_lighter(color()));
            fl_xyline(DialogUnit(3), middle + 1, w() - DialogUnit(4));
            continue;
        }
        const bool marked = static_cast<int>(at) == m_marked;
        if (marked) {
            fl_color(FL_SELECTION_COLOR);
            fl_rectf(DialogUnit(2), row.y, w() - DialogUnit(4), row.height);
        }
        fl_color(marked ? fl_contrast(FL_WHITE, FL_SELECTION_COLOR) : FL_FOREGROUND_COLOR);
        fl_font(FL_HELVETICA, DialogTextSize());
        fl_draw_shortcut = 1;  // underlines the letter after `&`
        fl_draw(row.text.c_str(), indent, row.y, w() - 2 * indent, row.height, FL_ALIGN_LEFT, nullptr, 0);
        fl_draw_shortcut = 0;
    }
}

std::vector<Row> LayOut(const std::vector<MenuItem>& items, int* width, int* height) {
    fl_font(FL_HELVETICA, DialogTextSize());
    const int edge = DialogUnit(3), text_row = fl_height() + DialogUnit(6);
    std::vector<Row> rows;
    *width = DialogUnit(120);
    int y = edge;
    for (const MenuItem& item : items) {
        const int row_height = item.id ? text_row : DialogUnit(7);
        rows.push_back({item.id, item.text, y, row_height});
        y += row_height;
        *width =
            std::max(*width, static_cast<int>(fl_width(WithoutMark(item.text).c_str())) + DialogUnit(44));
    }
    *height = y + edge;
    return rows;
}

// At x, y, or to the left and above where the screen ends.
void Place(PopupWindow* window, int x, int y) {
    int sx, sy, sw, sh;
    Fl::screen_xywh(sx, sy, sw, sh, x, y);
    if (x + window->w() > sx + sw) x = std::max(sx, x - window->w());
    if (y + window->h() > sy + sh) y = std::max(sy, y - window->h());
    window->position(x, y);
}

}  // namespace

void OpenPopupGivesWay() {
    if (!g_popup) return;
    g_popup_loop->End();
    Fl::grab(nullptr);
    g_popup->hide();
    g_popup = nullptr;
}

}  // namespace desktop

using namespace desktop;

int PopupMenu(const std::vector<MenuItem>& items, int x, int y, Pump pump) {
    if (items.empty() || !OpenDisplay()) return 0;
    ModalLoop loop(Modal::kMenu, pump);
    if (loop.too_deep()) return 0;
    int width, height;
    const std::vector<Row> rows = LayOut(items, &width, &height);
    Fl_Group::current(nullptr);
    PopupWindow window(rows, width, height, &loop);
    Place(&window, RootX(x), RootY(y));
    window.show();
    Fl::grab(window);
    g_popup = &window;
    g_popup_loop = &loop;
    for (const int code : TakeKeys()) {
        if (!loop.done()) window.HandleKey(code);
    }
    loop.Run();
    const bool gave_way = g_popup != &window;
    OpenPopupGivesWay();
    PumpWindowSystem(0);
    return gave_way || loop.ended_by_pump() ? 0 : window.chosen();
}

}  // namespace host
