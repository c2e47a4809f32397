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
#include "platform/window/commandline.h"
#include "playback/layout.h"
#include "shell/shell.h"

namespace app {
namespace {

int g_announced = -1;  // the end of a pipe that tells the caller of --open

void TellAnnounced() {
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
    std::string path;
    int measure;
};

std::vector<std::string> PlayerLine(const Player& player) {
    const LongOptions& options = player.options;
    std::vector<std::string> line = {"lumetra", "-P", "-N" + std::to_string(player.measure)};
    if (options.speed) line.push_back(SpeedOption(*options.speed));
    const std::vector<std::string> place = options.passed.empty() ? PlaceOptions() : options.passed;
    line.insert(line.end(), place.begin(), place.end());
    line.push_back(player.path);
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

// Returns once the player's window is announced. The child keeps the lock of starts until then.
int StartPlayer(const Player& player) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return kNotStarted;
    const pid_t child = fork();
    if (child == 0) {
        close(ends[0]);
        g_announced = ends[1];
        RunChild(player);
    }
    host::LeaveStartToChild();
    close(ends[1]);
    char byte;
    const bool announced = child > 0 && read(ends[0], &byte, 1) == 1;
    close(ends[0]);
    if (!announced) Say("the player could not be started");
    return announced ? kDone : kNotStarted;
}

int StartWith(const LongOptions& options, const std::string& path) {
    NoteUse();
    const Probe probe = ProbeChart(path);
    if (!probe.refusal.empty()) {
        Say(options.file + ": " + probe.refusal);
        return kRefused;
    }
    if (!host::HasDisplay()) {
        Say("no display to open a window on; lumetra-render works without one");
        return kNotStarted;
    }
    LoadRequest request;
    request.path = path, request.measure = options.measure, request.line = options.line;
    bool clamped;
    const int measure = StartMeasure(request, probe, &clamped);
    if (clamped) Say("the chart has no such measure; it plays from its last, " + std::to_string(measure));
    const Player player = {options, path, measure};
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

}  // namespace

int RunSystem(int argc, const char* const* argv) {
    std::string line = BuildCommandLine(argc, argv);
    const int code = WinMain(GetProgramModule(), nullptr, line.data(), 1);
    constexpr int kRemote = 1;
    // Neither opened a window nor passed a command on: say so if the display is missing.
    if (code == kRemote || g_hWnd || host::HasDisplay()) return code;
    Say("no display to open a window on; lumetra-render works without one");
    return -1;
}

int Open(const LongOptions& options) {
    const std::string path = AbsolutePath(options.file);
    host::LockStart(true);
    int code = OpenInRunning(options, path);
    if (code == kNoneRuns) code = StartWith(options, path);
    host::UnlockStart();
    if (code == kDone && options.watch && !options.foreground) SayWhetherItWatches(path);
    return code == kDone && options.wait && !options.foreground ? WaitUntilHeard() : code;
}

}  // namespace app
