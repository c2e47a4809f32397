// Watching folders for files that are written, by the kernel's queue of changes.
#include <cerrno>
#include <cstring>
#include <deque>
#include <unordered_map>

#include "host/host.h"

#if __has_include(<sys/inotify.h>)

#include <sys/inotify.h>
#include <unistd.h>

namespace host {
namespace {

constexpr uint32_t kWanted = IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVE_SELF | IN_ONLYDIR;
constexpr size_t kMostWaiting = 4096;  // beyond these some are lost

struct Watch {
    int fd = -1;
    std::unordered_map<int, std::string> folders;
    std::deque<std::string> written;
};
Watch g_watch;

void Close() {
    if (g_watch.fd >= 0) close(g_watch.fd);
    g_watch = Watch();
}

// A folder that is moved or removed counts as a loss: the program then watches what takes its place.
void Add(const inotify_event& event) {
    const auto at = g_watch.folders.find(event.wd);
    const bool known = at != g_watch.folders.end();
    const bool lost = (event.mask & IN_Q_OVERFLOW) || (known && (event.mask & (IN_IGNORED | IN_MOVE_SELF)));
    if (!lost && (!known || event.len == 0)) return;
    const bool full = g_watch.written.size() >= kMostWaiting;
    if (full) g_watch.written.clear();
    g_watch.written.push_back(lost || full ? "" : at->second + (at->second == "/" ? "" : "/") + event.name);
    if (known && (event.mask & IN_IGNORED)) g_watch.folders.erase(at);
}

// One read of the kernel's queue, so that a flood of changes holds no frame up.
void ReadQueue() {
    alignas(inotify_event) char bytes[16384];
    const ssize_t count = g_watch.fd < 0 ? 0 : read(g_watch.fd, bytes, sizeof(bytes));
    for (ssize_t at = 0; at < count;) {
        const auto& event = *reinterpret_cast<const inotify_event*>(bytes + at);
        Add(event);
        at += static_cast<ssize_t>(sizeof(event) + event.len);
    }
}

}  // namespace

bool WatchFolders(const std::vector<std::string>& folders, std::string* problem) {
    if (folders.empty()) return Close(), true;
    if (g_watch.fd < 0) g_watch.fd = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (g_watch.fd < 0) return *problem = std::strerror(errno), false;
    std::unordered_map<int, std::string> kept;
    bool all = true;
    for (const std::string& folder : folders) {
        // The same folder gets the same number again, so nothing is lost between.
        const int wd = inotify_add_watch(g_watch.fd, folder.c_str(), kWanted);
        if (wd < 0) *problem = folder + ": " + std::strerror(errno);
        if (wd >= 0) kept[wd] = folder;
        all = all && wd >= 0;
    }
    for (const auto& [wd, folder] : g_watch.folders) {
        if (kept.count(wd) == 0) inotify_rm_watch(g_watch.fd, wd);
    }
    g_watch.folders = std::move(kept);
    return all;
}

bool TakeWritten(std::string* path) {
    if (g_watch.written.empty()) ReadQueue();
    if (g_watch.written.empty()) return false;
    *path = std::move(g_watch.written.front());
    g_watch.written.pop_front();
    return true;
}

}  // namespace host

#else

namespace host {

bool WatchFolders(const std::vector<std::string>& folders, std::string* problem) {
    *problem = "this system does not tell of written files";
    return folders.empty();
}

bool TakeWritten(std::string*) {
    return false;
}

}  // namespace host

#endif
