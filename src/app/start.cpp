#include "app/start.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "app/channel.h"
#include "app/client.h"
#include "app/load.h"
#include "app/place.h"
#include "app/watch.h"
#include "host/host.h"
#include "platform/files/filename.h"
#include "platform/files/folder.h"
#include "platform/window/commandline.h"
#include "platform/window/dialog.h"
#include "playback/layout.h"
#include "shell/shell.h"

namespace app {
namespace {

int g_announced = -1;  // the end of a pipe that tells the caller of --open

void TellAnnounced() {
    if (g_announced < 0) return;
    [[maybe_unused]] const ssize_t written = write(g_announced, "a", 1);
    close(g_announced);
}

// Hundredths are truncated from a product of doubles: a thousandth more keeps them.
std::string SpeedOption(double speed) {
    char text[32];
    std::snprintf(text, sizeof(text), "-M%.3f", static_cast<double>(std::lround(speed * 100)) / 100 + 0.001);
    return speed >= 8 ? "-M8" : text;
}

struct Player {
    const LongOptions& options;
    std::string path;  // empty: the player asks for one
    int measure;
};

std::vector<std::string> PlayerLine(const Player& player) {
    const LongOptions& options = player.options;
    std::vector<std::string> line = {"lumetra", "-P", "-N" + std::to_string(player.measure)};
    if (options.speed) line.push_back(SpeedOption(*options.speed));
    const std::vector<std::string> place = options.passed.empty() ? PlaceOptions() : options.passed;
    line.insert(line.end(), place.begin(), place.end());
    if (!player.path.empty()) line.push_back(player.path);
    return line;
}

int RunLine(const std::vector<std::string>& line) {
    std::vector<const char*> argv;
    for (const std::string& argument : line) argv.push_back(argument.c_str());
    return RunSystem(static_cast<int>(argv.size()), argv.data());
}

// The terminal's hang-up and its interrupt are not for the player, nor is the end of its caller.
void Detach() {
    setsid();
    signal(SIGPIPE, SIG_IGN);
    const int nothing = open("/dev/null", O_RDWR);
    const char* debug = std::getenv("LUMETRA_DEBUG");
    dup2(nothing, STDIN_FILENO);
    dup2(nothing, STDOUT_FILENO);
    if (!debug || !*debug) dup2(nothing, STDERR_FILENO);
    if (nothing > STDERR_FILENO) close(nothing);
}

int RunPlayer(const Player& player) {
    host::LeaveFocus();
    return RunLine(PlayerLine(player));
}

[[noreturn]] void RunChild(const Player& player) {
    Detach();
    ServeChannel(TellAnnounced);
    const int code = RunPlayer(player);
    host::UnlockStart();
    SavePlace();
    const bool closed = host::Shutdown();
    std::fflush(nullptr);
    closed ? std::exit(code) : std::_Exit(code);
}

// Returns once the player's window is announced, or at once where the user is asked first. The child keeps
// the lock of starts until then.
int StartPlayer(const Player& player) {
    const bool asks = player.path.empty();
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return kNotStarted;
    const pid_t child = fork();
    if (child == 0) {
        close(ends[0]);
        g_announced = asks ? -1 : ends[1];
        if (asks) close(ends[1]);
        RunChild(player);
    }
    host::LeaveStartToChild();
    close(ends[1]);
    char byte;
    const bool announced = child > 0 && (asks || read(ends[0], &byte, 1) == 1);
    close(ends[0]);
    if (!announced) Say("the player could not be started");
    return announced ? kDone : kNotStarted;
}

void SayNoDisplay() {
    Say("no X display to open a window on (a Wayland desktop has one through XWayland); "
        "lumetra-render works without one");
}

int StartWith(const LongOptions& options, const Target& target) {
    NoteUse();
    LoadRequest request;
    request.path = target.path, request.measure = options.measure, request.line = options.line;
    int measure = options.measure.value_or(-1);
    if (!target.ask) {
        const Probe probe = ProbeChart(target.path);
        if (!probe.refusal.empty()) {
            Say(options.file + ": " + probe.refusal);
            return kRefused;
        }
        bool clamped;
        measure = StartMeasure(request, probe, &clamped);
        if (clamped) Say("the chart has no such measure; it plays from its last, " + std::to_string(measure));
    }
    if (!host::HasDisplay()) return SayNoDisplay(), kNotStarted;
    if (target.ask) AnswerNextOpenDialog(target.path.c_str());
    const Player player = {options, target.ask ? "" : target.path, measure};
    if (!options.foreground) return StartPlayer(player);
    ServeChannel(nullptr);
    return RunPlayer(player);
}

// The player's own streams may be closed.
void SayWhetherItWatches(const std::string& path) {
    std::string problem;
    if (!host::WatchFolders({FolderOf(path)}, &problem)) Say("the chart is not watched: " + problem);
    host::WatchFolders({}, &problem);
}

// A folder is its only chart, or the question which.
Target FindTarget(const std::string& file) {
    if (file.empty()) return {"", true};
    const std::string path = AbsolutePath(file);
    if (!IsFolder(path)) return {path, false};
    const std::string chart = OnlyChart(path);
    return chart.empty() ? Target{path, true} : Target{chart, false};
}

}  // namespace

int RunSystem(int argc, const char* const* argv) {
    std::string line = BuildCommandLine(argc, argv);
    const int code = WinMain(GetProgramModule(), nullptr, line.data(), 1);
    constexpr int kRemote = 1;
    // Neither opened a window nor passed a command on: say so if the display is missing.
    if (code == kRemote || g_hWnd || host::HasDisplay()) return code;
    SayNoDisplay();
    return -1;
}

int Open(const LongOptions& options) {
    const Target target = FindTarget(options.file);
    if (target.ask && options.line) {
        Say("--at needs a chart");
        return kWrongUse;
    }
    host::LockStart(true);
    int code = OpenInRunning(options, target);
    const bool starts = code == kNoneRuns;
    if (starts) code = StartWith(options, target);
    host::UnlockStart();
    if (!starts || code != kDone) host::EndLaunch();
    const bool ended = starts && options.foreground;
    if (code == kDone && options.watch && !target.ask && !ended) SayWhetherItWatches(target.path);
    return code == kDone && options.wait && !ended ? WaitUntilHeard(target.ask) : code;
}

void SayHowToStart() {
    if (g_bPlaying) return;
    Say(g_bHost
            ? "the chart is not playing: press Enter in its window (-P plays at once)"
            : "the chart is not playing: press Enter in its window or run lumetra --play (-P plays at once)");
}

}  // namespace app
