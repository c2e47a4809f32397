// The whole program on the headless host.
#include "support/program.h"

#include <gtest/gtest.h>

#include "support/media.h"
#include "support/tempfolder.h"

using namespace headless;
using test::RunProgram;
using test::RunResult;
using test::TempFolder;

namespace {

std::string WriteChart(const TempFolder& folder) {
    folder.Write("a.wav", test::SquareWav(4410));
    return TempFolder::Backslashes(folder.Write(
        "song.bms", test::Chart({"#TITLE t", "#BPM 120", "#WAV01 a.wav", "#00111:01010101", "#00211:01"})));
}

TEST(Program, PlaysAndQuits) {
    TempFolder folder;
    const RunResult run = RunProgram("-P " + WriteChart(folder), {{2000, Key(27)}});
    EXPECT_EQ(run.exit_code, 0);
    EXPECT_TRUE(run.faults.empty()) << run.faults[0];
    EXPECT_TRUE(run.boxes.empty());
    ASSERT_GE(run.titles.size(), 3u);
    EXPECT_EQ(run.titles[0], "Lumetra 0.04");
    EXPECT_EQ(run.titles[1], "Now Initializing & Loading...");
    EXPECT_EQ(run.titles[2], "-(no genre)- t  [(no artist)] ");
    EXPECT_GT(run.frames, 100u);
    EXPECT_EQ(run.picture.width, 452);
    EXPECT_EQ(run.picture.height, 280);
}

TEST(Program, RunsAreAlike) {
    TempFolder folder;
    const std::string line = "-P " + WriteChart(folder);
    const RunResult a = RunProgram(line, {{900, Key(27)}}), b = RunProgram(line, {{900, Key(27)}});
    EXPECT_EQ(a.frames, b.frames);
    EXPECT_EQ(a.ms, b.ms);
    EXPECT_EQ(a.picture.pixels, b.picture.pixels);
    EXPECT_EQ(a.log, b.log);
}

}  // namespace
