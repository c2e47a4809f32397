// Runs the player on a real display with the demo or the given chart, for a stopwatch that watches the screen
// from outside.
#include "host/host.h"
#include "platform/window/commandline.h"
#include "playback/layout.h"
#include "shell/shell.h"

int main(int argc, char** argv) {
    const char* player_argv[] = {"lumetra", "-D", "-P", argc > 1 ? argv[1] : LUMETRA_DEMO};
    std::string line = BuildCommandLine(4, player_argv);
    const int exit_code = WinMain(GetProgramModule(), nullptr, line.data(), 1);
    host::Shutdown();
    return exit_code;
}
