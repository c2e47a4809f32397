// lumetra: the player on a user's desktop.
#include <fcntl.h>
#include <strings.h>
#include <unistd.h>
#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <new>

#include <string>
#include <vector>

#include "app/channel.h"
#include "app/client.h"
#include "app/load.h"
#include "app/place.h"
#include "app/start.h"
#include "app/watch.h"
#include "app/words.h"
#include "host/host.h"
#include "platform/window/commandline.h"
#include "shell/shell.h"

namespace {

constexpr int kExitFailed = -1;

constexpr char kHelp[] =
    R"(usage: lumetra [option]... [chart]

Plays a BMS or BME chart automatically. Without a chart it asks for one. Options
come first, with their value attached; everything after them is the chart's name.

  -P         play at once; otherwise the chart waits for Enter
  -N<n>      start at measure n
  -M<x>      scroll speed, 0.1 to 8 (default 1)
  -X<n>      left edge of the window
  -Y<n>      top edge of the window
  -D         run beside other instances; none of them accepts commands afterwards
  --modern   play charts of today: numbers up to ZZ, long notes, stops and more;
             with --open it belongs to that chart. LUMETRA_MODERN=1 does the same
  --watch    reload the chart when it, or a file that it uses, has been saved,
             and go on at the same measure; with --open it belongs to that chart.
             LUMETRA_WATCH=1 does the same
  -h, --help
             print this help and exit
  --version  print the version and exit

The exit code of a long command tells whether it worked:

  --open FILE
             play FILE, or the only chart of a folder, in the running instance, or
             start one. Asks without FILE, and where a folder has several or none
  --at LINE[:COLUMN]
             with --open: start at the measure that holds this line of the file
  --wait     with --open: return when the chart starts to sound
  --foreground
             with --open: if no instance is running, be the player
  --status   print what each instance is doing, as JSON
  --follow   with --status: print each change until the last instance ends
  --play     resume, or start a chart that is not playing
  --stop     stop
  --restart  restart from the start measure
  --seek N   play from measure N
  --speed X  set the scroll speed
  --quit     quit

While an instance is running, these options control it, and -P resumes, -N<n> plays
from measure n and -M<x> sets the scroll speed:

  -S         stop
  -R         restart from the start measure
  -Q         quit

Keys: Enter restarts, Space pauses and resumes, Esc quits. Double-click the window
or drop a chart on it to load another chart; right-click it for the menu.

lumetra-render renders a chart to files and needs no display.
)";

// The text for --help or --version among the options; null when neither is given.
const char* AnswerAtOnce(int argc, char** argv) {
    for (int i = 1; i < argc && (!*argv[i] || IsOptionArgument(argv[i])); ++i) {
        const bool help = std::strcmp(argv[i], "--help") == 0;
        if (help || strcasecmp(argv[i], "-h") == 0) return kHelp;
        if (std::strcmp(argv[i], "--version") == 0) return "lumetra " LUMETRA_VERSION "\n";
    }
    return nullptr;
}

// A line with -Q never starts a player, so nobody has to wait for it where none runs.
bool IsQuit(int argc, char** argv) {
    for (int i = 1; i < argc && IsOptionArgument(argv[i]); ++i) {
        if (std::toupper(static_cast<unsigned char>(argv[i][1])) == 'Q') return true;
    }
    return false;
}

int CountInstances() {
    std::vector<host::Instance> instances;
    host::ListInstances(&instances);
    return static_cast<int>(
        std::count_if(instances.begin(), instances.end(),
                      [](const host::Instance& other) { return other.class_name == WINDOW_CLASS; }));
}

// The system's own command line.
int Run(int argc, char** argv) {
    app::SayWhatIsIgnored(argc, argv);
    host::LockStart(!IsQuit(argc, argv));
    const int others = CountInstances();
    app::ServeChannel(nullptr, app::SayHowToStart);
    const int code = app::RunSystem(argc, argv);
    host::UnlockStart();
    if (g_hWnd || code == 1) app::SayHowItEnded(argc, argv, code, others);
    return code;
}

int RunLong(const app::LongOptions& options) {
    if (!options.error.empty()) {
        app::Say(options.error);
        return app::kWrongUse;
    }
    return options.verb == app::Verb::kOpen ? app::Open(options) : app::RunCommand(options);
}

// Memory has run out somewhere, on whatever thread. What stays of the instance is cleared by the next start.
[[noreturn]] void OnTerminate() {
    try {
        if (const std::exception_ptr error = std::current_exception()) std::rethrow_exception(error);
    } catch (const std::bad_alloc&) {
        std::fputs("lumetra: there is not enough memory\n", stderr);
        std::_Exit(kExitFailed);
    } catch (...) {
    }
    std::abort();
}

// Whoever starts the player may have closed its streams: no other file may get their numbers.
void OpenStreams() {
    int file;
    do file = open("/dev/null", O_RDWR | O_CLOEXEC);
    while (file >= 0 && file <= STDERR_FILENO);
    if (file >= 0) close(file);
}

}  // namespace

int main(int argc, char** argv) {
    OpenStreams();
    std::set_terminate(OnTerminate);
    if (const char* pszAnswer = AnswerAtOnce(argc, argv)) {
        return std::fputs(pszAnswer, stdout) < 0 || std::fflush(stdout) ? kExitFailed : 0;
    }
    const bool modern = app::TakeFlag(&argc, argv, "--modern", "LUMETRA_MODERN");
    const bool watch = app::TakeFlag(&argc, argv, "--watch", "LUMETRA_WATCH");
    app::LongOptions options = app::ParseLongOptions(argc, argv);
    options.modern = modern;
    options.watch = watch;
    app::SetModern(modern);
    app::SetWatch(watch);
    const int code = options.verb == app::Verb::kNone ? Run(argc, argv) : RunLong(options);
    app::SavePlace();
    if (host::Shutdown()) return code;
    std::fflush(stdout);
    std::_Exit(code);
}
