// What a copy makes of its command line, by the number of other copies.
#include <sstream>

#include "shell_test.h"

namespace {

using headless::At;

class Forward : public test::ShellTest {
protected:
    // With so many copies beside it, whose ids are 11, 12 and so on.
    static int RunBeside(int copies, const std::string& line) {
        Fresh();
        for (int i = 0; i < copies; ++i) headless::AddInstance(static_cast<uint64_t>(11 + i), "Lumetra_ZN");
        return RunLine(line);
    }
    // What the others were sent, as `copy:message(wparam) `.
    static std::string Posted() {
        std::ostringstream all;
        for (const headless::PostedMessage& m : headless::PostedToInstances()) {
            EXPECT_EQ(m.lparam, 0);
            all << m.instance << ":" << m.message << "(" << m.wparam << ") ";
        }
        return all.str();
    }
    // The line ends at once, without a window, and sends that.
    static void ExpectPosted(int copies, const char* line, const char* posted) {
        EXPECT_EQ(RunBeside(copies, line), 1) << line;
        EXPECT_EQ(Posted(), posted) << line;
        EXPECT_TRUE(headless::Titles().empty()) << line;
        EXPECT_TRUE(headless::FileDialogs().empty() && headless::Boxes().empty()) << line;
    }
};

TEST_F(Forward, RemoteCopies) {
    const struct {
        int copies;
        const char *line, *posted;
    } rows[] = {
        {1, "-N12", "11:1129(12) "},
        {1, "-N", "11:1129(0) "},
        {1, "-N-9", "11:1129(-1) "},
        {1, "-M1.5", "11:1130(150) "},
        {1, "-M", "11:1130(50) "},
        {1, "-M1.15 song.bms", "11:1130(114) "},
        {1, "-N5 -M2 -R", "11:1129(5) 11:1130(200) 11:1128(0) "},
        {1, "-P", "11:1127(0) "},
        {1, "/s", "11:1126(0) "},
        {1, "-R -N3", "11:1128(0) "},
        {1, "-Q", "11:1125(0) "},
        {1, "-P -Q -R -S", "11:1127(0) "},
        {1, "-D -Q", "11:1224(0) "},
        {2, "-N5 -d -D -R -q", "11:1224(0) 12:1224(0) 11:1224(0) 12:1224(0) "},
    };
    for (const auto& row : rows) ExpectPosted(row.copies, row.line, row.posted);
    for (const char* line : {"song.bms", "song.bms -P", "", "-W -X5 -Y6 -z"}) ExpectPosted(1, line, "");
    for (const char* line : {"-N5 -M2 -P -R -S song.bms", "-Q", ""}) ExpectPosted(2, line, "");
    for (const char* line : {"-Q", "-D -Q"}) ExpectPosted(0, line, "");
    ExpectPosted(3, "-P", "");
}

TEST_F(Forward, SettingsTakeEffectHereToo) {
    RunBeside(1, "-N5 -M2 -R");
    EXPECT_EQ(g_nStartMeasure, 5);
    EXPECT_EQ(g_fSpeed, 200 * 0.01f);
    RunBeside(2, "-P -N6 -M3");
    EXPECT_EQ(g_bPlaying, 1);
    EXPECT_EQ(g_nStartMeasure, 6);
    EXPECT_EQ(headless::Log(), "SameClassName!\nSameClassName!\n-P Option ON\n-N Option = 6\n");
    RunBeside(1, "-P");
    EXPECT_EQ(g_bPlaying, 0);
    EXPECT_EQ(headless::Log(), "SameClassName!\n");
}

TEST_F(Forward, AWindowOfAnotherProgramIsNoCopy) {
    headless::AddInstance(11, "lumetra_zn");
    headless::AddInstance(12, "Lumetra_ZN2");
    EXPECT_EQ(RunLine("-Q"), 1);
    EXPECT_EQ(Posted(), "");
    headless::AddInstance(13, "Lumetra_ZN");
    EXPECT_EQ(RunLine("-Q"), 1);
    EXPECT_EQ(Posted(), "13:1125(0) ");
}

TEST_F(Forward, AHostPlaysBesideOthers) {
    At(500, headless::Call([] { EXPECT_EQ(headless::AnnouncedClass(), "Lumetra_ZN"); }));
    At(600, headless::Remote(WM_REMOTE_QUIT));  // a host is deaf
    At(1000, headless::Key(test::kEscape));
    headless::AddInstance(11, "Lumetra_ZN");
    headless::AddInstance(12, "Lumetra_ZN");
    EXPECT_EQ(Run("-P -N1 -R -S -D "), 0);
    EXPECT_GE(headless::Now(), 1000u);
    EXPECT_EQ(Posted(), "11:1224(0) 12:1224(0) 11:1224(0) 12:1224(0) ");
    EXPECT_EQ(g_bHost, 1);
    EXPECT_EQ(headless::Titles().back(), "-genre- title  [artist] ");
}

TEST_F(Forward, CopiesThatCannotBeListedCountAsNone) {
    headless::AddInstance(11, "Lumetra_ZN");
    headless::FailListInstances(true);
    At(100, headless::Key(test::kEscape));
    EXPECT_EQ(Run("-P "), 0);
    EXPECT_EQ(Posted(), "");
    EXPECT_GT(headless::FrameCount(), 1u);
}

}  // namespace
