#include <FL/Fl.H>
#include <FL/Fl_RGB_Image.H>
#include <FL/Fl_Window.H>
#include <FL/fl_draw.H>

#include <algorithm>
#include <cstdlib>
#include <memory>

#include "host/desktop/desktop.h"
#include "host/desktop/instances.h"
#include "host/desktop/main_window.h"
#include "host/desktop/native.h"

namespace host {
namespace desktop {
namespace {

constexpr int kSoundPatience = 400;  // ms

struct State {
    std::unique_ptr<PlayerWindow> window;
    bool display_open = false;
    int scale = 1;
    bool leave_focus = false;
    bool hidden = false;
    bool has_place = false;
    Rect place = {};  // when it was last asked for, hidden or closed
};

State g_state;

Rect DesktopBounds() {  // device pixels
    Rect bounds = {INT32_MAX, INT32_MAX, INT32_MIN, INT32_MIN};
    for (int i = 0; i < Fl::screen_count(); ++i) {
        int x, y, w, h;
        Fl::screen_xywh(x, y, w, h, i);
        bounds.left = std::min(bounds.left, x);
        bounds.top = std::min(bounds.top, y);
        bounds.right = std::max(bounds.right, x + w);
        bounds.bottom = std::max(bounds.bottom, y + h);
    }
    return bounds;
}

int FloorDivide(int value, int by) {
    return value >= 0 ? value / by : -((-value + by - 1) / by);
}
int CeilDivide(int value, int by) {
    return -FloorDivide(-value, by);
}

}  // namespace

void SetProgramIcon(const Icon& icon) {
    const size_t count = static_cast<size_t>(icon.width) * icon.height;
    if (icon.width <= 0 || icon.height <= 0 || icon.pixels.size() < count) return;
    std::vector<unsigned char> bytes;
    for (size_t i = 0; i < count; ++i) {
        for (int shift : {16, 8, 0, 24}) bytes.push_back(static_cast<unsigned char>(icon.pixels[i] >> shift));
    }
    const Fl_RGB_Image image(bytes.data(), icon.width, icon.height, 4);
    Fl_Window::default_icon(&image);  // keeps a copy
}

namespace {

// Whoever starts programs for a user says so in the environment.
native::Focus WantedFocus() {
    if (!g_state.leave_focus) return native::Focus::kUsual;
    for (const char* name : {"DESKTOP_STARTUP_ID", "XDG_ACTIVATION_TOKEN"}) {
        const char* token = std::getenv(name);
        if (token && *token) return native::Focus::kAsked;
    }
    return native::Focus::kLeave;
}

void KeepPlace() {
    if (!native::HasCome(g_state.window.get())) return;
    g_state.place = GetWindowPlace().outer;
    g_state.has_place = true;
}

int ChooseScale() {
    const char* text = std::getenv("LUMETRA_SCALE");
    const int wanted = text ? std::atoi(text) : 0;
    return wanted >= 1 && wanted <= 8 ? wanted : native::DisplayScale();
}

}  // namespace

bool OpenDisplay() {
    if (g_state.display_open) return true;
    if (!native::OpenDisplay()) return false;
    g_state.display_open = true;
    g_state.scale = ChooseScale();
    return true;
}

bool IsDisplayOpen() {
    return g_state.display_open;
}
int Scale() {
    return g_state.scale;
}
Fl_Window* MainWindow() {
    return g_state.window.get();
}

int LogicalX(int root_x) {
    return FloorDivide(root_x - DesktopBounds().left, Scale());
}
int LogicalY(int root_y) {
    return FloorDivide(root_y - DesktopBounds().top, Scale());
}
int RootX(int logical_x) {
    return ClampPlace(int64_t{logical_x} * Scale() + DesktopBounds().left);
}
int RootY(int logical_y) {
    return ClampPlace(int64_t{logical_y} * Scale() + DesktopBounds().top);
}

}  // namespace desktop

using namespace desktop;

bool HasDisplay() {
    return native::HasDisplay();
}

bool OpenWindow(const WindowRequest& request) {
    CloseWindow();
    if (!OpenDisplay()) return false;
    g_state.hidden = g_state.has_place = false;
    Fl_Group::current(nullptr);
    g_state.window = std::make_unique<PlayerWindow>(request.width, request.height, Scale());
    PlayerWindow* window = g_state.window.get();
    window->copy_label(request.title.c_str());
    SetProgramIcon(request.icon);
    if (request.x == kDefaultPlace || request.y == kDefaultPlace) {
        native::ShowFirst(window, nullptr, request.topmost, WantedFocus());
    } else {
        const int place[2] = {RootX(request.x), RootY(request.y)};
        native::ShowFirst(window, place, request.topmost, WantedFocus());
    }
    return true;
}

void CloseWindow() {
    if (!g_state.window) return;
    if (!g_state.hidden) KeepPlace();
    native::Forget(g_state.window.get());
    g_state.window->hide();
    Fl::flush();
    g_state.window.reset();
}

void HideWindow() {
    if (!g_state.window) return;
    if (!g_state.hidden) KeepPlace();
    g_state.hidden = true;
    native::Hide(g_state.window.get());
}

WindowPlace GetWindowPlace() {
    if (!g_state.window) return {};
    int x, y;
    native::Frame frame;
    native::WhereIs(g_state.window.get(), &x, &y, &frame);
    WindowPlace place;
    const int left = LogicalX(x), top = LogicalY(y), s = Scale();
    place.client = {left, top, left + g_state.window->picture().width,
                    top + g_state.window->picture().height};
    place.outer = {left - CeilDivide(frame.left, s), top - CeilDivide(frame.top, s),
                   place.client.right + CeilDivide(frame.right, s),
                   place.client.bottom + CeilDivide(frame.bottom, s)};
    return place;
}

void PlaceWindow(int x, int y, int width, int height) {
    if (!g_state.window) return;
    PlayerWindow* window = g_state.window.get();
    if (width != window->picture().width || height != window->picture().height)
        window->SetClientSize(width, height);
    native::MoveOuter(window, RootX(x), RootY(y));
}

void KeepOnTop() {
    if (g_state.window) native::KeepOnTop(g_state.window.get());
}

void SetTitle(const std::string& title) {
    if (!g_state.window) return;
    g_state.window->copy_label(title.c_str());
    native::Flush();
    TitleWasSet(title);
}

void Minimize() {
    if (g_state.window) g_state.window->iconize();
}

void Unminimize() {
    if (g_state.window) native::Unminimize();
}

void GetDesktopSize(int* width, int* height) {
    *width = *height = 0;
    if (!OpenDisplay()) return;
    const Rect bounds = DesktopBounds();
    *width = (bounds.right - bounds.left) / Scale();
    *height = (bounds.bottom - bounds.top) / Scale();
}

std::vector<Rect> Screens() {
    std::vector<Rect> screens;
    for (int i = 0; OpenDisplay() && i < Fl::screen_count(); ++i) {
        int x, y, w, h;
        Fl::screen_xywh(x, y, w, h, i);
        screens.push_back({LogicalX(x), LogicalY(y), LogicalX(x + w), LogicalY(y + h)});
    }
    return screens;
}

bool LastPlace(Rect* outer) {
    if (g_state.window && !g_state.hidden) KeepPlace();
    *outer = g_state.place;
    return g_state.has_place;
}

void LeaveFocus() {
    g_state.leave_focus = true;
}

void ShowPixels(int x, int y, int width, int height, const uint32_t* pixels, int stride) {
    EndPostedRound();
    if (g_state.window) g_state.window->Show(x, y, width, height, pixels, stride);
}

bool Shutdown() {
    CloseSound();
    WithdrawInstance();
    CloseWindow();
    return SoundHasClosed(kSoundPatience);
}

}  // namespace host
