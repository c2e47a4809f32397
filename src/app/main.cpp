// lumetra: the player on a user's desktop.
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "host/host.h"
#include "platform/window/commandline.h"
#include "playback/layout.h"
#include "shell/shell.h"

namespace {

constexpr int kExitRemote = 1;
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
  --help     print this help and exit
  --version  print the version and exit

While an instance is running, these options control it:

  -P         resume       -R     restart from the start measure
  -S         stop         -N<n>  play from measure n
  -Q         quit         -M<x>  set the scroll speed

Keys: Enter restarts, Space pauses and resumes, Esc quits. Double-click the window
or drop a chart on it to load another chart; right-click it for the menu.

lumetra-render renders a chart to files and needs no display.
)";

// The text for --help or --version among the options; null when neither is given.
const char* AnswerAtOnce(int argc, char** argv) {
    for (int i = 1; i < argc && (!*argv[i] || IsOptionArgument(argv[i])); ++i) {
        if (std::strcmp(argv[i], "--help") == 0) return kHelp;
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

int Run(int argc, char** argv) {
    std::string line = BuildCommandLine(argc, argv);
    const int nExitCode = WinMain(GetProgramModule(), nullptr, line.data(), 1);
    // Neither opened a window nor passed a command on: say so if the display is missing.
    if (nExitCode != kExitRemote && !g_hWnd && !host::HasDisplay()) {
        std::fputs("lumetra: no display to open a window on; lumetra-render works without one\n", stderr);
        return kExitFailed;
    }
    return nExitCode;
}

}  // namespace

int main(int argc, char** argv) {
    if (const char* pszAnswer = AnswerAtOnce(argc, argv)) {
        return std::fputs(pszAnswer, stdout) < 0 || std::fflush(stdout) ? kExitFailed : 0;
    }
    host::LockStart(!IsQuit(argc, argv));
    const int nExitCode = Run(argc, argv);
    host::UnlockStart();
    if (host::Shutdown()) return nExitCode;
    std::fflush(stdout);
    std::_Exit(nExitCode);
}
