// The whole program in a test: a command line and a script in; exit code, log, boxes, titles and pictures
// out.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/headless/headless.h"

namespace test {

// Everything as in a fresh process: the system's globals, the platform's state, the headless host, the hook
// on calls.
void ResetProgram();

struct RunOptions {
    // Called after the reset and before the program: to set the desktop, other copies, a frame callback.
    std::function<void()> prepare;
    uint64_t end_ms = 30'000;  // when the host asks the program to close, if the script has not
};

struct RunResult {
    int exit_code = 0;
    uint64_t ms = 0;  // when it ended
    std::string log;
    std::vector<headless::Box> boxes;
    std::vector<headless::FileDialog> dialogs;
    std::vector<headless::Menu> menus;
    std::vector<std::string> titles;
    uint64_t frames = 0;
    headless::Picture picture;  // the last
    // What the script did not say or the program did not take, one line each; empty in a run that went as
    // scripted.
    std::vector<std::string> faults;
};

// line: as WinMain takes it, without the program's name.
//
//     const RunResult run = RunProgram("-P " + chart, {{500, headless::Key(32)}, {900, headless::Key(27)}});
//
// All that the run allocated has been released when it returns; headless:: still has its captures until the
// next run.
RunResult RunProgram(const std::string& line, const headless::Script& script = {},
                     const RunOptions& options = {});

}  // namespace test
