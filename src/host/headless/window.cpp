#include <algorithm>
#include <cstddef>
#include <utility>

#include "host/headless/internal.h"

namespace headless {
namespace {

struct State {
    Window window;
    Extents next_frame, frame;
    int desktop_width = 1280, desktop_height = 1024;
    int default_x = 100, default_y = 100;
    bool fail = false;
    std::vector<std::string> titles;
    FrameCallback on_frame;
    uint64_t frames = 0;
    bool keep = true;
    Picture picture;
    host::Rect last{};
};
State g_state;

[[maybe_unused]] const bool kHooked = (OnReset([] { g_state = State(); }), true);

int Width() {
    return g_state.window.client.right - g_state.window.client.left;
}
int Height() {
    return g_state.window.client.bottom - g_state.window.client.top;
}

void SetClient(int outer_x, int outer_y, int width, int height) {
    const int left = outer_x + g_state.frame.left, top = outer_y + g_state.frame.top;
    g_state.window.client = {left, top, left + std::max(width, 1), top + std::max(height, 1)};
    Picture& picture = g_state.picture;
    if (picture.width == Width() && picture.height == Height()) return;
    picture.width = Width();
    picture.height = Height();
    picture.pixels.assign(static_cast<size_t>(Width()) * static_cast<size_t>(Height()), 0);
}

// Copies the part inside the client area into the shown picture.
void Keep(const Frame& frame) {
    Picture& picture = g_state.picture;
    const int left = std::max(frame.x, 0), right = std::min(frame.x + frame.width, picture.width);
    const int top = std::max(frame.y, 0), bottom = std::min(frame.y + frame.height, picture.height);
    if (left >= right) return;
    for (int y = top; y < bottom; ++y) {
        const uint32_t* row = frame.pixels + static_cast<ptrdiff_t>(y - frame.y) * frame.stride;
        std::copy(row + (left - frame.x), row + (right - frame.x),
                  picture.pixels.data() + static_cast<ptrdiff_t>(y) * picture.width + left);
    }
}

}  // namespace

void OnFrame(FrameCallback callback) {
    g_state.on_frame = std::move(callback);
}
uint64_t FrameCount() {
    return g_state.frames;
}
void KeepPicture(bool keep) {
    g_state.keep = keep;
}
const Picture& ShownPicture() {
    return g_state.picture;
}
const std::vector<std::string>& Titles() {
    return g_state.titles;
}
const Window& TheWindow() {
    return g_state.window;
}

void SetDesktop(int width, int height) {
    g_state.desktop_width = width;
    g_state.desktop_height = height;
}

void SetFrameExtents(const Extents& frame) {
    g_state.next_frame = frame;
}

void SetDefaultPlace(int x, int y) {
    g_state.default_x = x;
    g_state.default_y = y;
}

void FailOpenWindow(bool fail) {
    g_state.fail = fail;
}

void MoveTo(int x, int y) {
    if (g_state.window.open) SetClient(x, y, Width(), Height());
}

void ResizeTo(int width, int height) {
    const host::Rect& client = g_state.window.client;
    if (g_state.window.open)
        SetClient(client.left - g_state.frame.left, client.top - g_state.frame.top, width, height);
}

}  // namespace headless

namespace host {

using headless::g_state;

bool HasDisplay() {
    return !g_state.fail;
}

bool OpenWindow(const WindowRequest& request) {
    if (g_state.fail || g_state.window.open) return false;
    const bool given = request.x != kDefaultPlace && request.y != kDefaultPlace;
    g_state.window = headless::Window();
    g_state.window.open = true;
    g_state.window.topmost = request.topmost;
    g_state.window.icon = request.icon;
    g_state.frame = g_state.next_frame;
    g_state.picture = headless::Picture();
    headless::SetClient(given ? request.x : g_state.default_x, given ? request.y : g_state.default_y,
                        request.width, request.height);
    g_state.titles.push_back(request.title);
    return true;
}

void CloseWindow() {
    if (g_state.window.open) g_state.last = GetWindowPlace().outer;
    g_state.window.open = false;
}

void HideWindow() {
    g_state.window.hidden = true;
}

WindowPlace GetWindowPlace() {
    if (!g_state.window.open) return {};
    const Rect& client = g_state.window.client;
    const headless::Extents& frame = g_state.frame;
    return {{client.left - frame.left, client.top - frame.top, client.right + frame.right,
             client.bottom + frame.bottom},
            client};
}

void PlaceWindow(int x, int y, int width, int height) {
    if (!g_state.window.open) return;
    ++g_state.window.placed;
    headless::SetClient(x, y, width, height);
}

void KeepOnTop() {
    ++g_state.window.raised;
    g_state.window.topmost = true;
}

void SetTitle(const std::string& title) {
    g_state.titles.push_back(title);
    headless::Pump(&title);
}

void Minimize() {
    g_state.window.minimized = true;
}

void Unminimize() {
    g_state.window.minimized = false;
}

void GetDesktopSize(int* width, int* height) {
    *width = g_state.desktop_width;
    *height = g_state.desktop_height;
}

std::vector<Rect> Screens() {
    return {{0, 0, g_state.desktop_width, g_state.desktop_height}};
}

bool LastPlace(Rect* outer) {
    if (g_state.window.open) g_state.last = GetWindowPlace().outer;
    *outer = g_state.last;
    return g_state.last.right > g_state.last.left;
}

void LeaveFocus() {}  // there is none
void EndLaunch() {}

void ShowPixels(int x, int y, int width, int height, const uint32_t* pixels, int stride) {
    if (!g_state.window.open) return;
    ++g_state.frames;
    const headless::Frame frame = {headless::Clock(), x, y, width, height, pixels, stride};
    if (g_state.keep) headless::Keep(frame);
    if (g_state.on_frame) g_state.on_frame(frame);
}

}  // namespace host
