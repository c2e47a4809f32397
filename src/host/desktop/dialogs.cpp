#include "host/desktop/dialogs.h"

#include <FL/Fl.H>
#include <FL/fl_draw.H>

#include <algorithm>

#include "host/desktop/desktop.h"
#include "host/desktop/look.h"
#include "host/desktop/native.h"

namespace host {
namespace desktop {
namespace {

constexpr int kDeepest = 8;
constexpr double kTick = 0.01;  // seconds

int g_depth = 0;
ModalLoop* g_innermost = nullptr;
Fl_Window* g_unseen = nullptr;  // the latest dialog, until it has been drawn

int Dispatch(int event, Fl_Window* window) {
    const bool typed = event == FL_KEYBOARD || event == FL_PUSH || event == FL_RELEASE;
    return g_unseen && typed ? 1 : Fl::handle_(event, window);
}

size_t CharLength(const std::string& text, size_t at) {
    size_t length = 1;
    while (at + length < text.size() && (static_cast<unsigned char>(text[at + length]) & 0xC0) == 0x80)
        ++length;
    return length;
}

// Bytes of one line that fit the width: up to a blank where there is one, at least one character.
size_t FitLine(const std::string& text, int width) {
    size_t fits = 0, blank = 0;
    while (fits < text.size()) {
        const size_t next = fits + CharLength(text, fits);
        if (fits > 0 && fl_width(text.c_str(), static_cast<int>(next)) > width) break;
        if (text[fits] == ' ') blank = next;
        fits = next;
    }
    return fits < text.size() && blank > 0 ? blank : fits;
}

}  // namespace

ModalLoop::ModalLoop(Modal kind, Pump pump) : m_kind(kind), m_pump(pump), m_outer(g_innermost) {
    g_innermost = this;
    OpenPopupGivesWay();
    if (g_depth == 0) ApplyLook();
    ++g_depth;
}

ModalLoop::~ModalLoop() {
    --g_depth;
    g_innermost = m_outer;
}

bool ModalLoop::too_deep() const {
    return g_depth > kDeepest;
}

void ModalLoop::Run() {
    while (!m_done) {
        PumpWindowSystem(kTick);
        if (!m_pump || m_pump()) continue;
        m_ended_by_pump = true;
        return;
    }
}

DialogWindow::DialogWindow(int w, int h) : Fl_Window(w, h) {
    Fl::event_dispatch(Dispatch);
    g_unseen = this;
}

DialogWindow::~DialogWindow() {
    if (g_unseen == this) g_unseen = nullptr;
}

void DialogWindow::draw() {
    if (g_unseen == this) g_unseen = nullptr;
    Fl_Window::draw();
}

DefaultButton::DefaultButton(int x, int y, int w, int h, const char* label)
    : Fl_Return_Button(x, y, w, h, label) {
    color(FL_SELECTION_COLOR, FL_SELECTION_COLOR);
    labelcolor(fl_contrast(FL_WHITE, FL_SELECTION_COLOR));
}

int DialogUnit(int pixels) {
    return (pixels * DialogTextSize() + 6) / 13;
}

int DialogTextSize() {
    return LookTextSize();
}

Fl_Font FontForAnything() {
    static const std::string family = native::JapaneseFont();
    if (family.empty()) return FL_HELVETICA;
    static const std::string name = " " + family;  // the blank stands for a plain face
    Fl::set_font(FL_FREE_FONT, name.c_str());
    return FL_FREE_FONT;
}

Fl_Font FontFor(const std::string& text) {
    const bool plain =
        std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 128; });
    return plain ? FL_HELVETICA : FontForAnything();
}

std::vector<std::string> WrapText(const std::string& text, int width, size_t most_lines) {
    std::vector<std::string> lines;
    for (size_t at = 0; at <= text.size() && lines.size() < most_lines;) {
        const size_t end = std::min(text.find('\n', at), text.size());
        std::string rest = text.substr(at, end - at);
        at = end + 1;
        if (!rest.empty() && rest.back() == '\r') rest.pop_back();
        do {
            const size_t count = FitLine(rest, width);
            lines.push_back(rest.substr(0, count));
            rest.erase(0, count);
        } while (!rest.empty() && lines.size() < most_lines);
    }
    return lines;
}

void PlaceDialog(Fl_Window* window) {
    Fl_Window* main = MainWindow();
    // A box may open right after the window, before the window manager has placed that.
    for (int tries = 0; main && !native::HasCome(main) && tries < 20; ++tries) PumpWindowSystem(kTick);
    int x, y, w, h;
    int middle_x = 0, middle_y = 0;
    if (main && main->shown()) {
        native::Frame frame;
        native::WhereIs(main, &middle_x, &middle_y, &frame);
        middle_x += main->w() / 2;
        middle_y += main->h() / 2;
        Fl::screen_work_area(x, y, w, h, middle_x, middle_y);
    } else {
        Fl::screen_work_area(x, y, w, h, 0);
        middle_x = x + w / 2;
        middle_y = y + h / 2;
    }
    const int margin = DialogUnit(24);  // room for the frame
    window->position(std::max(x, std::min(middle_x - window->w() / 2, x + w - window->w())),
                     std::max(y + margin, std::min(middle_y - window->h() / 2, y + h - window->h())));
}

}  // namespace desktop

using namespace desktop;

Modal InnermostModal() {
    return g_innermost ? g_innermost->m_kind : Modal::kNone;
}

void CancelFileDialog() {
    if (InnermostModal() == Modal::kFileDialog) g_innermost->End();
}

}  // namespace host
