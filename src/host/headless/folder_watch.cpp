#include <algorithm>
#include <deque>

#include "host/headless/headless.h"

namespace headless {
namespace {

struct State {
    std::vector<std::string> folders;
    std::deque<std::string> written;
    bool fail = false;
};
State g_state;

[[maybe_unused]] const bool kHooked = (OnReset([] { g_state = State(); }), true);

}  // namespace

void WriteEvent(const std::string& path) {
    const std::string folder = path.substr(0, path.rfind('/'));
    if (std::find(g_state.folders.begin(), g_state.folders.end(), folder) != g_state.folders.end())
        g_state.written.push_back(path);
}

const std::vector<std::string>& WatchedFolders() {
    return g_state.folders;
}
void FailWatch(bool fail) {
    g_state.fail = fail;
}

}  // namespace headless

namespace host {

using headless::g_state;

bool WatchFolders(const std::vector<std::string>& folders, std::string* problem) {
    g_state.folders = g_state.fail ? std::vector<std::string>() : folders;
    if (g_state.fail) *problem = "no watching here";
    return !g_state.fail;
}

bool TakeWritten(std::string* path) {
    if (g_state.written.empty()) return false;
    *path = g_state.written.front();
    g_state.written.pop_front();
    return true;
}

}  // namespace host
