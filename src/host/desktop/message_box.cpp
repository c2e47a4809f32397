#include <FL/Fl.H>
#include <FL/Fl_Window.H>
#include <FL/fl_draw.H>

#include <algorithm>
#include <cstdio>

#include "host/desktop/desktop.h"
#include "host/desktop/dialogs.h"

namespace host {
namespace desktop {
namespace {

constexpr size_t kMostLines = 30;

struct BoxText {
    Fl_Font font;
    std::vector<std::string> lines;
    int width = 0, line_height = 0;
};

BoxText LayOut(const std::string& text) {
    BoxText out;
    out.font = FontFor(text);
    fl_font(out.font, DialogTextSize());
    out.line_height = fl_height() + DialogUnit(2);
    out.lines = WrapText(text, DialogUnit(420), kMostLines);
    for (const std::string& line : out.lines) {
        out.width =
            std::max(out.width, static_cast<int>(fl_width(line.c_str(), static_cast<int>(line.size()))));
    }
    return out;
}

class TextWidget : public Fl_Widget {
public:
    TextWidget(int x, int y, int w, int h, const BoxText& text) : Fl_Widget(x, y, w, h), m_text(text) {}

    void draw() override {
        fl_font(m_text.font, DialogTextSize());
        fl_color(FL_FOREGROUND_COLOR);
        int baseline = y() + fl_height() - fl_descent();
        for (const std::string& line : m_text.lines) {
            fl_draw(line.c_str(), static_cast<int>(line.size()), x(), baseline);
            baseline += m_text.line_height;
        }
    }

private:
    BoxText m_text;
};

class IconWidget : public Fl_Widget {
public:
    IconWidget(int x, int y, int size, BoxIcon icon) : Fl_Widget(x, y, size, size), m_icon(icon) {}

    void draw() override {
        if (m_icon == BoxIcon::kInformation) {
            fl_color(fl_rgb_color(40, 90, 190));
            fl_pie(x(), y(), w(), h(), 0, 360);
            DrawSign("i", FL_WHITE, 0);
        } else {
            fl_color(fl_rgb_color(240, 190, 30));
            fl_polygon(x() + w() / 2, y(), x() + w(), y() + h(), x(), y() + h());
            DrawSign("!", FL_BLACK, h() / 8);
        }
    }

private:
    void DrawSign(const char* sign, Fl_Color ink, int lower) {
        fl_color(ink);
        fl_font(FL_HELVETICA_BOLD, w() * 5 / 8);
        fl_draw(sign, x(), y() + lower, w(), h() - lower, FL_ALIGN_CENTER);
    }

    BoxIcon m_icon;
};

class BoxWindow : public DialogWindow {
public:
    BoxWindow(int w, int h, ModalLoop* loop) : DialogWindow(w, h), m_loop(loop) {}

    int handle(int event) override {
        if (event == FL_KEYBOARD || event == FL_SHORTCUT) {
            const int key = Fl::event_key();
            if (key == FL_Enter || key == FL_KP_Enter || key == FL_Escape || key == ' ') {
                m_loop->End();
                return 1;
            }
        }
        return Fl_Window::handle(event);
    }

private:
    ModalLoop* m_loop;
};

void OnAnswer(Fl_Widget*, void* loop) {
    static_cast<ModalLoop*>(loop)->End();
}

}  // namespace
}  // namespace desktop

using namespace desktop;

void ShowBox(const std::string& text, const std::string& caption, BoxIcon icon, Pump pump) {
    if (!OpenDisplay()) {
        std::fprintf(stderr, "lumetra: %s %s\n", caption.c_str(), text.c_str());
        return;
    }
    ModalLoop loop(Modal::kBox, pump);
    if (loop.too_deep()) return;
    const BoxText layout = LayOut(text);
    const int margin = DialogUnit(16), icon_size = icon == BoxIcon::kNone ? 0 : DialogUnit(36);
    const int text_x = margin + (icon_size ? icon_size + margin : 0);
    const int text_height = std::max(layout.line_height * static_cast<int>(layout.lines.size()), icon_size);
    const int button_width = DialogUnit(84), button_height = DialogUnit(26);
    const int width = std::max(text_x + layout.width + margin, DialogUnit(220));
    const int height = margin + text_height + margin + button_height + margin;

    BoxWindow window(width, height, &loop);
    if (icon_size) new IconWidget(margin, margin, icon_size, icon);
    const int drop = (text_height - layout.line_height * static_cast<int>(layout.lines.size())) / 2;
    new TextWidget(text_x, margin + drop, width - text_x - margin, text_height - drop, layout);
    DefaultButton* button = new DefaultButton((width - button_width) / 2, height - margin - button_height,
                                              button_width, button_height, "OK");
    button->labelsize(DialogTextSize());
    button->callback(OnAnswer, &loop);
    window.end();
    window.copy_label(caption.c_str());
    window.xclass("lumetra");
    window.callback(OnAnswer, &loop);
    window.set_modal();
    PlaceDialog(&window);
    window.show();
    button->take_focus();
    loop.Run();
    window.hide();
    PumpWindowSystem(0);
}

}  // namespace host
