// What the command line does when other instances are running.
#include "shell_test.h"

namespace {

using headless::At;

class Forward : public test::ShellTest {
protected:
    // With so many instances beside it, whose ids are 11, 12 and so on.
    static int RunBeside(int instances, const std::string& line) {
        Fresh();
        for (int i = 0; i < instances; ++i)
            headless::AddInstance(static_cast<uint64_t>(11 + i), "Lumetra_ZN");
        return RunLine(line);
    }
    // What the others were sent, as `instance:message(wparam) `.
    static std::string Posted() {
        std::string all;
        for (const headless::PostedMessage& m : headless::PostedToInstances())
            all += std::to_string(m.instance) + ":" + std::to_string(m.message) + "(" +
                   std::to_string(m.wparam + m.lparam) + ") ";
        return all;
    }
};

TEST_F(Forward, RemoteInstances) {
    const struct {
        int instances;
        const char *line, *posted;
    } rows[] = {{1, "-N12", "11:1129(12) "},
                {1, "-N", "11:1129(0) "},
                {1, "-N-9", "11:1129(-1) "},
                {1, "-M", "11:1130(50) "},
                {1, "-M1.15 song.bms", "11:1130(114) "},
                {1, "-N5 -M2 -R", "11:1129(5) 11:1130(200) 11:1128(0) "},
                {1, "/s", "11:1126(0) "},
                {1, "-R -N3", "11:1128(0) "},
                {1, "-Q -P", "11:1125(0) "},
                {1, "-P -Q -R -S", "11:1127(0) "},
                {1, "-D -Q", "11:1224(0) "},
                {2, "-N5 -d -D -R -q", "11:1224(0) 12:1224(0) 11:1224(0) 12:1224(0) "},
                {1, "song.bms -P", ""},
                {1, "", ""},
                {1, "-W -X5 -Y6 -z", ""},
                {2, "-N5 -M2 -P -R -S song.bms", ""},
                {2, "-Q", ""},
                {2, "", ""},
                {0, "-D -Q", ""}};
    for (const auto& row : rows) {
        EXPECT_EQ(RunBeside(row.instances, row.line), 1) << row.line;
        EXPECT_EQ(Posted(), row.posted) << row.line;
        EXPECT_TRUE(headless::Titles().empty() && headless::FileDialogs().empty()) << row.line;
    }
}

TEST_F(Forward, SettingsTakeEffectHereToo) {
    RunBeside(1, "-N5 -M2 -P");
    EXPECT_EQ(g_nStartMeasure, 5);
    EXPECT_EQ(g_fSpeed, 200 * 0.01f);
    EXPECT_EQ(g_bPlaying, 0);
    RunBeside(2, "-P -N6");
    EXPECT_EQ(g_bPlaying, 1);
    EXPECT_EQ(headless::Log(), "SameClassName!\nSameClassName!\n-P Option ON\n-N Option = 6\n");
}

TEST_F(Forward, OtherInstances) {
    headless::AddInstance(11, "lumetra_zn");  // a window of another program
    headless::AddInstance(12, "Lumetra_ZN2");
    EXPECT_EQ(RunLine("-Q"), 1);
    EXPECT_EQ(Posted(), "");
    headless::AddInstance(13, "Lumetra_ZN");
    EXPECT_EQ(RunLine("-Q"), 1);
    EXPECT_EQ(Posted(), "13:1125(0) ");
    for (const bool listed : {true, false}) {  // a host plays beside others, one that cannot list them too
        Fresh();
        At(500, headless::Call([] { EXPECT_EQ(headless::AnnouncedClass(), "Lumetra_ZN"); }));
        if (listed) At(600, headless::Remote(WM_REMOTE_QUIT));  // a host is deaf
        At(1000, headless::Key(test::kEscape));
        headless::AddInstance(11, "Lumetra_ZN");
        headless::AddInstance(12, "Lumetra_ZN");
        headless::FailListInstances(!listed);
        EXPECT_EQ(Run(listed ? "-P -N1 -R -S -D " : "-P "), 0);
        EXPECT_GE(headless::Now(), 1000u);
        EXPECT_EQ(Posted(), listed ? "11:1224(0) 12:1224(0) 11:1224(0) 12:1224(0) " : "");
        EXPECT_EQ(g_bHost, listed);
    }
}

}  // namespace
