// Several runs in one process, with the host's captures left to look at.
#pragma once

#include <string>

#include "playback/layout.h"
#include "shell/shell.h"
#include "support/program.h"

namespace test {

inline void FreshProgram() {
    ResetProgram();
    g_hInstance = GetProgramModule();
    headless::EndAt(30'000);
}

// The program's exit code for that line, under the script as it stands.
inline int RunLine(std::string line) {
    return WinMain(GetProgramModule(), nullptr, line.data(), 1);
}

}  // namespace test
