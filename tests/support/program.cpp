#include "support/program.h"

#include "host/host.h"
#include "platform/process.h"
#include "playback/layout.h"
#include "playback/playback.h"
#include "shell/shell.h"
#include "support/calls.h"

namespace test {
namespace {

void ResetGlobals() {
    g_hInstance = nullptr;
    g_hWnd = nullptr;
    g_bHost = 0;
    g_nStartMeasure = -1;
    g_fSpeed = 1.0f;
    g_TimeCaps = {};
    g_bPlaying = 0;
    g_bPaused = 1;
    g_dwPauseTime = 0;
    g_dwStartTime = g_dwNowTime = 0;
    g_dwSeekTime = 0;
    g_nPlayers = 0;
    g_dBPM = g_dPixelsPerSec = 0.0;
}

std::vector<std::string> AllFaults() {
    std::vector<std::string> faults = headless::Faults();
    if (headless::ActionsLeft())
        faults.push_back(std::to_string(headless::ActionsLeft()) + " actions not taken");
    if (headless::EndReached()) faults.push_back("the program was still running at the end of its time");
    return faults;
}

}  // namespace

void ResetProgram() {
    Shutdown();
    ResetPlatform();
    host::Shutdown();
    ResetGlobals();
    headless::Reset();
    ForgetCalls();
}

RunResult RunProgram(const std::string& line, const headless::Script& script, const RunOptions& options) {
    ResetProgram();
    headless::EndAt(options.end_ms);
    headless::AddScript(script);
    if (options.prepare) options.prepare();
    std::string text = line;
    RunResult run;
    run.exit_code = WinMain(GetProgramModule(), nullptr, text.data(), 1);
    run.ms = headless::Now();
    run.log = headless::Log();
    run.boxes = headless::Boxes();
    run.dialogs = headless::FileDialogs();
    run.menus = headless::Menus();
    run.titles = headless::Titles();
    run.frames = headless::FrameCount();
    run.picture = headless::ShownPicture();
    run.faults = AllFaults();
    Shutdown();
    host::Shutdown();
    return run;
}

}  // namespace test
