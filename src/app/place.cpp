#include "app/place.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

namespace app {
namespace {

constexpr int kMostSize = 32767;  // pixels
constexpr size_t kMostBytes = 64;

bool IsSize(int size) {
    return size > 0 && size <= kMostSize;
}

// Only a small regular file of this user is read; opening anything else must not wait.
std::string ReadOwn(const std::string& path) {
    const int fd = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (fd < 0) return "";
    char bytes[kMostBytes + 1];
    struct stat info;
    const bool own = fstat(fd, &info) == 0 && S_ISREG(info.st_mode) && info.st_uid == geteuid();
    const ssize_t count = own ? read(fd, bytes, sizeof(bytes)) : -1;
    close(fd);
    return count < 0 || static_cast<size_t>(count) > kMostBytes ? "" : std::string(bytes, count);
}

// Another instance may end at the same moment.
void Replace(const std::string& path, const std::string& text) {
    const std::string made = path + "." + std::to_string(getpid());
    const int fd = open(made.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (fd < 0) return;
    const bool written = write(fd, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    if (close(fd) != 0 || !written || rename(made.c_str(), path.c_str()) != 0) unlink(made.c_str());
}

int64_t Overlap(const host::Rect& a, const host::Rect& b) {
    const int64_t width = std::min(a.right, b.right) - std::max(a.left, b.left);
    const int64_t height = std::min(a.bottom, b.bottom) - std::max(a.top, b.top);
    return width > 0 && height > 0 ? width * height : 0;
}

int Moved(int at, int size, int first, int end) {
    return std::max(first, std::min(at, end - size));
}

}  // namespace

std::string PlaceFile() {
    const char* state = std::getenv("XDG_STATE_HOME");
    const char* home = std::getenv("HOME");
    if (state && state[0] == '/') return std::string(state) + "/lumetra/place";
    return home && home[0] == '/' ? std::string(home) + "/.local/state/lumetra/place" : "";
}

std::string PlaceText(const host::Rect& outer) {
    char text[kMostBytes];
    const int width = outer.right - outer.left, height = outer.bottom - outer.top;
    std::snprintf(text, sizeof(text), "window %d %d %d %d\n", outer.left, outer.top, width, height);
    return text;
}

bool ReadPlaceText(const std::string& text, host::Rect* outer) {
    int x, y, width, height;
    if (std::sscanf(text.c_str(), "window %d %d %d %d", &x, &y, &width, &height) != 4) return false;
    if (!IsSize(width) || !IsSize(height) || host::ClampPlace(x) != x || host::ClampPlace(y) != y)
        return false;
    *outer = {x, y, x + width, y + height};
    return PlaceText(*outer) == text;
}

host::Rect FitPlace(const host::Rect& outer, const std::vector<host::Rect>& screens) {
    const auto screen = std::max_element(
        screens.begin(), screens.end(),
        [&](const host::Rect& a, const host::Rect& b) { return Overlap(a, outer) < Overlap(b, outer); });
    if (screen == screens.end()) return outer;
    const int width = outer.right - outer.left, height = outer.bottom - outer.top;
    const int x = Moved(outer.left, width, screen->left, screen->right);
    const int y = Moved(outer.top, height, screen->top, screen->bottom);
    return {x, y, x + width, y + height};
}

void SavePlace() {
    host::Rect outer;
    const std::string path = PlaceFile();
    if (path.empty() || !host::LastPlace(&outer)) return;
    std::error_code error;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path(), error);
    if (!error) Replace(path, PlaceText(outer));
}

std::vector<std::string> PlaceOptions() {
    host::Rect outer;
    const std::string path = PlaceFile();
    if (path.empty() || !ReadPlaceText(ReadOwn(path), &outer)) return {};
    outer = FitPlace(outer, host::Screens());
    // -1 means no place.
    const int x = outer.left == -1 ? 0 : outer.left, y = outer.top == -1 ? 0 : outer.top;
    return {"-X" + std::to_string(x), "-Y" + std::to_string(y)};
}

}  // namespace app
