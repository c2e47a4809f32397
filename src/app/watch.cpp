#include "app/watch.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "app/client.h"
#include "app/load.h"
#include "app/status.h"
#include "host/host.h"
#include "platform/files/filename.h"
#include "platform/files/lookup.h"
#include "platform/files/namefold.h"
#include "platform/substitutes/substitute.h"
#include "platform/window/dialog.h"
#include "playback/playback.h"
#include "shell/shell.h"

namespace app {
namespace {

constexpr uint64_t kQuiet = 50'000'000, kTryAgain = 1'000'000'000;  // ns
constexpr int kMostAtOnce = 1000;                                   // changes in one poll

using Date = int64_t;  // ns since 1970, as the kernel dates changes of files
Date DateOf(const timespec& time) {
    return int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}
Date Today() {
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);  // files are dated by it, or by a tick before it
    return DateOf(now);
}

// What a load has used, by paths whose folders are resolved.
struct Used {
    std::unordered_set<std::string> files;
    std::unordered_set<std::string> missing;  // FoldName of the name without its ending
    std::vector<std::string> folders;         // sorted, each once
    Date newest = 0;                          // of the changes of the files
};

struct Watch {
    bool wanted = false;   // from the next load on
    bool noting = false;   // a load or its probe is under way
    bool working = false;  // all folders are watched
    bool told = false;     // that they are not
    Used used;
    Date load_began = 0;
    uint64_t written = 0;  // when something was last; 0: nothing to do
    uint64_t tried = 0;    // when the folders were last tried
    std::string refusal;
};
Watch g_watch;

void Tell(const std::string& text) {
    const std::string line = "Watch: " + text + "\n";
    host::DebugText(line.data(), line.size());
}

std::string NameOf(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

std::string Joined(const std::string& folder, const std::string& name) {
    return folder + (folder == "/" ? "" : "/") + name;
}

// The key of a missing name: a substitute has the same.
std::string StemKey(const std::string& folder, const std::string& name) {
    return Joined(folder, FoldName(name.substr(0, std::min(name.rfind('.'), name.size()))));
}

// Collects what a load has used.
class Collector {
public:
    void File(const std::string& path) {
        const std::string folder = Folder(path);
        if (folder.empty() || !m_used.files.insert(Joined(folder, NameOf(path))).second) return;
        struct stat info;
        if (lstat(path.c_str(), &info) != 0) return;
        m_used.newest = std::max(m_used.newest, DateOf(info.st_ctim));
        if (S_ISLNK(info.st_mode)) Linked(path);
    }
    void Missing(const std::string& path) {
        const std::string folder = Folder(path);
        if (!folder.empty()) m_used.missing.insert(StemKey(folder, NameOf(path)));
    }
    Used Take() {
        for (const auto& [folder, resolved] : m_folders) {
            if (!resolved.empty()) m_used.folders.push_back(resolved);
        }
        std::sort(m_used.folders.begin(), m_used.folders.end());
        m_used.folders.erase(std::unique(m_used.folders.begin(), m_used.folders.end()), m_used.folders.end());
        return std::move(m_used);
    }

private:
    static std::string Resolve(const std::string& path) {
        char* resolved = realpath(path.c_str(), nullptr);
        const std::string text = resolved ? resolved : "";
        std::free(resolved);
        return text;
    }
    const std::string& Folder(const std::string& path) {
        const auto [at, fresh] = m_folders.try_emplace(FolderOf(path));
        if (fresh) at->second = Resolve(at->first);
        return at->second;
    }
    // The file behind a link is written in its own folder.
    void Linked(const std::string& path) {
        const std::string target = Resolve(path);
        if (!target.empty()) File(target);
    }

    std::unordered_map<std::string, std::string> m_folders;
    Used m_used;
};

bool Concerns(const std::string& path) {
    if (path.empty() || g_watch.used.files.count(path) != 0) return true;
    return KindOfName(path) != MediaKind::kNone &&
           g_watch.used.missing.count(StemKey(FolderOf(path), NameOf(path))) != 0;
}

void WatchFolders() {
    std::string problem;
    g_watch.tried = host::Nanoseconds();
    g_watch.working = host::WatchFolders(g_watch.used.folders, &problem);
    if (!g_watch.working && !g_watch.told) Say("the chart is not watched: " + problem);
    g_watch.told = !g_watch.working;
}

void Refuse(const std::string& path, const std::string& refusal) {
    DropUse();
    g_watch.refusal = NameOf(path) + ": " + refusal;
    Tell(g_watch.refusal + "; the loaded chart stays");
}

// Goes on where it was, running or standing; the measure chosen last stays chosen.
void LoadAnew() {
    const std::string path = OpenedFile();
    NoteUse();
    const HeldChart held(path);
    const Probe probe = ProbeChart(path);
    if (!probe.refusal.empty()) return Refuse(path, probe.refusal);
    Status status;
    UpdatePlaying(&status);
    const int chosen = g_nStartMeasure;
    LoadAt(path, std::min(status.measure, probe.last_measure));
    g_nStartMeasure = chosen;
    if (status.state == State::kRunning || !HasChart()) return;
    PauseChart(1);
    g_dwNowTime = g_dwStartTime;  // no frame reads the clock from here on
}

void TakeWrites(uint64_t now) {
    std::string path;
    for (int n = 0; n < kMostAtOnce && host::TakeWritten(&path); ++n) {
        if (Concerns(path)) g_watch.written = now;
        if (path.empty()) g_watch.working = false, g_watch.tried = 0;
    }
}

// Folders that were not there may be by now; what was written in them meanwhile is not known.
void TryAgain(uint64_t now) {
    if (g_watch.working || now - g_watch.tried < kTryAgain) return;
    WatchFolders();
    if (g_watch.working) g_watch.written = now;
}

}  // namespace

void SetWatch(bool watch) {
    g_watch.wanted = watch;
}

bool WatchWanted() {
    return g_watch.wanted;
}

bool Watches() {
    return g_watch.wanted && g_watch.working;
}

const std::string& WatchRefusal() {
    return g_watch.refusal;
}

void NoteUse() {
    if (!g_watch.wanted || g_watch.noting) return;
    TakeWrites(host::Nanoseconds());  // the load that begins reads them
    g_watch.noting = true;
    g_watch.load_began = Today();
    NoteLookups();
}

void DropUse() {
    if (g_watch.noting) TakeLookups();
    g_watch.noting = false;
}

void KeepUse() {
    Collector collector;
    if (g_watch.wanted) {
        const NotedLookups noted = TakeLookups();
        collector.File(OpenedFile());
        for (const std::string& path : noted.found) collector.File(path);
        for (const std::string& path : noted.missing) collector.Missing(path);
    }
    const bool watched = !g_watch.used.folders.empty();
    g_watch.noting = false;
    g_watch.used = collector.Take();
    g_watch.refusal.clear();
    g_watch.written = 0;
    if (watched || g_watch.wanted) WatchFolders();
    // What was written before its folder was watched; a date in the future means nothing.
    const Date newest = g_watch.used.newest;
    if (newest > g_watch.load_began && newest <= Today()) g_watch.written = host::Nanoseconds();
}

void PollWatch() {
    if (!g_watch.wanted || !HasChart()) return;
    const uint64_t now = host::Nanoseconds();
    TryAgain(now);
    TakeWrites(now);
    if (g_watch.written == 0 || now - g_watch.written < kQuiet) return;
    if (host::InnermostModal() != host::Modal::kNone) return;
    g_watch.written = 0;
    LoadAnew();
}

void ResetWatch() {
    DropUse();
    g_watch = Watch();
}

}  // namespace app
