// What a copy makes of its command line, by the number of other copies.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fresh.h"
#include "small_chart.h"

namespace {

using headless::At;

constexpr uint64_t kFirst = 11;  // ids of the other copies: 11, 12, ...

struct Posted {
    uint64_t copy;
    uint32_t message;
    int64_t wparam;
    bool operator==(const Posted&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Posted& p) {
    return out << p.copy << ":" << p.message << "(" << p.wparam << ")";
}

std::vector<Posted> PostedMessages() {
    std::vector<Posted> all;
    for (const headless::PostedMessage& m : headless::PostedToCopies()) {
        EXPECT_EQ(m.lparam, 0);
        all.push_back({m.copy, m.message, m.wparam});
    }
    return all;
}

int RunBeside(int copies, const std::string& line) {
    test::FreshProgram();
    for (int i = 0; i < copies; ++i) headless::AddCopy(kFirst + i, "Lumetra_ZN");
    return test::RunLine(line);
}

TEST(Forward, RemoteCopies) {
    const struct {
        int copies;
        const char* line;
        std::vector<Posted> posted;
    } rows[] = {
        {1, "-N12", {{11, 1129, 12}}},
        {1, "-N", {{11, 1129, 0}}},
        {1, "-N-9", {{11, 1129, -1}}},
        {1, "-M1.5", {{11, 1130, 150}}},
        {1, "-M", {{11, 1130, 50}}},
        {1, "-M1.15 song.bms", {{11, 1130, 114}}},
        {1, "-N5 -M2 -R", {{11, 1129, 5}, {11, 1130, 200}, {11, 1128, 0}}},
        {1, "-P", {{11, 1127, 0}}},
        {1, "/s", {{11, 1126, 0}}},
        {1, "-R -N3", {{11, 1128, 0}}},
        {1, "-Q", {{11, 1125, 0}}},
        {1, "-P -Q -R -S", {{11, 1127, 0}}},
        {1, "song.bms", {}},
        {1, "song.bms -P", {}},
        {1, "", {}},
        {1, "-W -X5 -Y6 -z", {}},
        {1, "-D -Q", {{11, 1224, 0}}},
        {2, "-N5 -M2 -P -R -S song.bms", {}},
        {2, "-Q", {}},
        {2, "", {}},
        {2, "-N5 -d -D -R -q", {{11, 1224, 0}, {12, 1224, 0}, {11, 1224, 0}, {12, 1224, 0}}},
        {3, "-P", {}},
        {0, "-Q", {}},
        {0, "-D -Q", {}},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(RunBeside(row.copies, row.line), 1) << row.line;
        EXPECT_EQ(PostedMessages(), row.posted) << row.line;
        EXPECT_TRUE(headless::Titles().empty()) << row.line;  // no window
        EXPECT_TRUE(headless::FileDialogs().empty() && headless::Boxes().empty()) << row.line;
    }
}

TEST(Forward, SettingsTakeEffectHereToo) {
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

TEST(Forward, AWindowOfAnotherProgramIsNoCopy) {
    test::FreshProgram();
    headless::AddCopy(11, "lumetra_zn");
    headless::AddCopy(12, "Lumetra_ZN2");
    EXPECT_EQ(test::RunLine("-Q"), 1);
    EXPECT_TRUE(PostedMessages().empty());
    headless::AddCopy(13, "Lumetra_ZN");
    EXPECT_EQ(test::RunLine("-Q"), 1);
    EXPECT_EQ(PostedMessages(), (std::vector<Posted>{{13, 1125, 0}}));
}

TEST(Forward, AHostPlaysBesideOthers) {
    test::TempFolder folder;
    const std::string chart = test::WriteChart(folder);
    test::FreshProgram();
    headless::AddCopy(11, "Lumetra_ZN");
    headless::AddCopy(12, "Lumetra_ZN");
    At(500, headless::Call([] { EXPECT_EQ(headless::AnnouncedClass(), "Lumetra_ZN"); }));
    At(600, headless::Remote(WM_REMOTE_QUIT));  // a host is deaf
    At(1000, headless::Key(27));
    EXPECT_EQ(test::RunLine("-P -N1 -R -S -D " + chart), 0);
    EXPECT_GE(headless::Now(), 1000u);
    EXPECT_EQ(PostedMessages(),
              (std::vector<Posted>{{11, 1224, 0}, {12, 1224, 0}, {11, 1224, 0}, {12, 1224, 0}}));
    EXPECT_EQ(g_bHost, 1);
    EXPECT_EQ(headless::Titles().back(), "-genre- title  [artist] ");
}

TEST(Forward, CopiesThatCannotBeListedCountAsNone) {
    test::TempFolder folder;
    const std::string chart = test::WriteChart(folder);
    test::FreshProgram();
    headless::AddCopy(11, "Lumetra_ZN");
    headless::FailListCopies(true);
    At(100, headless::Key(27));
    EXPECT_EQ(test::RunLine("-P " + chart), 0);
    EXPECT_TRUE(PostedMessages().empty());
    EXPECT_GT(headless::FrameCount(), 1u);
}

}  // namespace
