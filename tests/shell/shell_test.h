// Runs of the whole program in one process, with the host's captures left to look at, and a chart for them.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/headless/headless.h"
#include "playback/layout.h"
#include "playback/playback.h"
#include "shell/shell.h"
#include "support/calls.h"
#include "support/media.h"
#include "support/program.h"
#include "support/tempfolder.h"

namespace test {

constexpr int kEnter = 13, kEscape = 27, kSpace = 32;

// At 120 BPM a measure lasts two seconds. The sound starts with measure 0, at 1000 ms of chart time, and
// lasts far longer than the chart, whose last object stands in measure 2: it ends at 7000 ms.
inline const std::string kChartText =
    Chart({"#PLAYER 1", "#GENRE genre", "#TITLE title", "#ARTIST artist", "#BPM 120", "#WAV01 long.wav",
           "#00001:01", "#00111:02", "#00211:02"});
constexpr int64_t kChartEnd = 7000;  // ms

inline std::string StateName() {
    if (g_bPlaying) return g_bPaused ? "Ended" : "Running";
    if (g_bPaused) return g_dwPauseTime ? "Paused" : "Idle";
    return "Held";
}

class ShellTest : public testing::Test {
public:
    ShellTest() : chart_(WriteChart("song.bms", kChartText)) {
        folder_.Write("long.wav", SquareWav(60 * 8000, 20, {1, 8000, 8}));
        Fresh();
    }
    ~ShellTest() override {
        EXPECT_EQ(headless::Faults(), std::vector<std::string>{});
        EXPECT_EQ(headless::ActionsLeft(), 0u);
        ResetProgram();  // a start that failed leaves its sound open
    }

    static void Fresh() {
        ResetProgram();
        g_hInstance = GetProgramModule();
        headless::EndAt(30'000);
    }

    // The chart's name as the system takes it.
    std::string WriteChart(const std::string& name, const std::string& text) const {
        return TempFolder::Backslashes(folder_.Write(name, text));
    }

    // The program's exit code for that line, under the script as it stands; for the chart, with options.
    static int RunLine(std::string line) { return WinMain(GetProgramModule(), nullptr, line.data(), 1); }
    int Run(const std::string& options = "") const { return RunLine(options + chart_); }

    static void ExpectOneBox(const std::string& text, const std::string& caption) {
        ASSERT_EQ(headless::Boxes().size(), 1u);
        EXPECT_EQ(headless::Boxes()[0].text, text);
        EXPECT_EQ(headless::Boxes()[0].caption, caption);
        EXPECT_EQ(headless::Boxes()[0].icon, host::BoxIcon::kWarning);
    }

    TempFolder folder_;
    const std::string chart_;
};

}  // namespace test
