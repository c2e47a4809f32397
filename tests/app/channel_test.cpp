// The second channel in a running program, and what it is made of.
#include "app/channel.h"

#include <gtest/gtest.h>

#include "app/channel_test.h"
#include "app/chart_lines.h"
#include "app/long_options.h"
#include "app/watch.h"
#include "compile/modern.h"
#include "platform/window/dialog.h"

namespace {

using namespace headless;
using nlohmann::json;
using test::ChannelTest;

TEST_F(ChannelTest, EachCommandInTurn) {
    const std::string other =
        folder_.Write("other.bms", test::Chart({"#TITLE other", "#00111:05", "#00211:05"}));
    const std::string broken = folder_.Write("broken.bms", test::Chart({"#00011:05"}));
    const struct {
        std::string line, code, state;
    } rows[] = {
        {R"({"id":1,"command":"play"})", "", "Running"},  // anew: it stood
        {R"({"id":2,"command":"stop"})", "", "Paused"},
        {R"({"command":"play"})", "", "Running"},
        {R"({"command":"speed","speed":2.5})", "", "Running"},
        {R"({"command":"speed","speed":9})", "wrong-value", "Running"},
        {R"({"command":"speed"})", "wrong-value", "Running"},
        {R"({"command":"stop"})", "", "Paused"},
        {R"({"command":"seek","measure":1})", "", "Running"},
        {R"({"command":"seek","measure":4})", "no-such-measure", "Running"},
        {R"({"command":"seek","measure":99999999999})", "wrong-value", "Running"},
        {R"({"command":"seek","measure":"1"})", "wrong-value", "Running"},
        {R"({"command":"seek","time_ms":3200})", "", "Running"},
        {R"({"command":"seek","line":8})", "", "Running"},
        {R"({"command":"restart"})", "", "Running"},
        {R"({"command":"open","file":")" + broken + R"("})", "refused", "Running"},
        {R"({"command":"open","file":"relative.bms"})", "wrong-value", "Running"},
        {R"({"command":"open","uri":"http://x/y"})", "wrong-value", "Running"},
        {R"({"command":"open","file":")" + other + R"(\u0000.bms"})", "wrong-value", "Running"},
        {R"({"command":"open","uri":"file://)" + other + R"(","measure":1,"speed":0.5})", "", "Running"},
        {R"({"command":"fly"})", "unknown-command", "Running"},
        {R"([1])", "not-json", "Running"},
        {"\xFF\xFE{", "not-json", "Running"},
        {"", "not-json", "Running"},
        {R"({"command":"status","id":{"a":["\u0000"]}})", "", "Running"},
    };
    uint64_t ms = 200;
    for (const auto& row : rows) {
        Ask(ms, row.line, row.code);
        ExpectState(ms + 60, row.state);
        ms += 100;
    }
    At(ms, Call([&] {
           const json status = Last()["result"];
           EXPECT_EQ(status["file"], other);
           EXPECT_EQ(status["title"], "other");
           EXPECT_EQ(status["state"], "running");
           EXPECT_EQ(status["measure"], 1);
           EXPECT_EQ(status["speed"], 0.5);
           EXPECT_EQ(status["line"], 2);
           EXPECT_EQ(status["column"], 8);
           EXPECT_FALSE(HasLeftList());
       }));
    Ask(ms + 10, R"({"command":"observe"})", "");
    At(ms + 100, Remote(1126));
    At(ms + 150, Call([] { EXPECT_EQ(Last()["status"]["state"], "paused"); }));
    At(ms + 200, Remote(1224));
    Ask(ms + 250, R"({"command":"play"})", "host");
    Ask(ms + 310, R"({"command":"status"})", "");
    At(ms + 400, Key(test::kEscape));
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(g_fSpeed, 0.5f);
    EXPECT_TRUE(Boxes().empty());
}

TEST_F(ChannelTest, OpenWaitsForABoxAndCancelsADialog) {
    const std::string other = folder_.Write("other.bms", test::Chart({"#TITLE other", "#00111:05"}));
    const std::string open = R"({"command":"open","file":")" + other + R"("})";
    At(1000, DoubleClick());
    At(1500, Call([=] { ReceiveLine(7, open); }));
    At(1510, Call([] {}));
    At(2000, Call([] { EXPECT_EQ(Titles().back(), "-(no genre)- other  [(no artist)] "); }));
    At(2100, WantMenu());
    At(2200, ChooseMenu(IDM_ABOUT));
    At(2300, Call([=, this] {
           ReceiveLine(7, R"({"command":"open","file":")" + folder_.Path("song.bms") + R"("})");
       }));
    At(2400, Call([] { EXPECT_EQ(Titles().back(), "-(no genre)- other  [(no artist)] "); }));
    At(2500, AnswerBox());
    At(2600, Call([] { EXPECT_EQ(Titles().back(), "-genre- title  [artist] "); }));
    At(3000, Call([] { ReceiveLine(7, R"({"command":"quit"})"); }));
    At(3100, Call([] { ADD_FAILURE() << "it goes on"; }));
    EXPECT_EQ(Run("-P "), 0);
    EXPECT_TRUE(HasLeftList());
    EXPECT_EQ(ActionsLeft(), 1u);
    Reset();
}

// The question is answered before the dialog opens, and what it brings plays as asked for. A cancelled one
// changes nothing.
TEST_F(ChannelTest, AskOpensTheDialogInAFolder) {
    const std::string other =
        folder_.Write("other.bms", test::Chart({"#TITLE other", "#00111:05", "#00311:05"}));
    Ask(500, R"({"command":"ask","uri":"file:///nowhere"})", "wrong-value");
    At(1000, Call([this] {
           ReceiveLine(7, R"({"command":"ask","measure":2,"uri":"file://)" + folder_.Path() + R"("})");
       }));
    At(1100, Call([this] {
           EXPECT_TRUE(Last().value("ok", false));
           ASSERT_EQ(FileDialogs().size(), 1u);
           EXPECT_EQ(FileDialogs()[0].folder, folder_.Path());
       }));
    At(1200, ChooseFile(other));
    At(1300, Call([] {
           EXPECT_EQ(Titles().back(), "-(no genre)- other  [(no artist)] ");
           EXPECT_EQ(g_nStartMeasure, 2);
       }));
    ExpectState(1300, "Running");
    At(1400,
       Call([] { ReceiveLine(7, R"({"command":"ask","measure":1,"speed":3,"modern":true,"watch":true})"); }));
    At(1500, CancelFile());
    At(1600, DoubleClick());
    At(1700, ChooseFile(other));
    At(1800, Call([] {
           EXPECT_EQ(g_nStartMeasure, 2);
           EXPECT_EQ(g_fSpeed, 1.0f);
           EXPECT_FALSE(compile::PlaysModern() || app::WatchWanted());
       }));
    At(1900, Key(test::kEscape));
    EXPECT_EQ(Run(), 0);
}

TEST(ChartLines, BothWays) {
    const app::ChartLines lines(
        "#TITLE x\r\n#00102:0.5\r\n#00111:0000\r\n#00113:00AA\r\n#00111:01\n\n#00308:01\n#xx\n");
    const int places[][3] = {{-1, 0, 0}, {0, 0, 0}, {1, 4, 10}, {2, 4, 10}, {3, 7, 8}, {9, 7, 8}};
    for (const auto& [measure, line, column] : places) {
        EXPECT_EQ(lines.Of(measure).line, line) << measure;
        EXPECT_EQ(lines.Of(measure).column, column) << measure;
    }
    const int measures[] = {-1, -1, 1, 1, 1, 1, 1, 3, 3, 3};
    for (int line = 0; line < 10; ++line) EXPECT_EQ(lines.MeasureAt(line), measures[line]) << line;
    EXPECT_EQ(app::ChartLines().MeasureAt(5), -1);
}

TEST(Uri, RoundTripsEveryByte) {
    std::string path = "/";
    for (int c = 1; c < 256; ++c) path += static_cast<char>(c);
    EXPECT_EQ(app::PathFromUri(app::PathToUri(path)), path);
    EXPECT_EQ(app::PathToUri("/a b%\xE3"), "file:///a%20b%25%E3");
    for (const char* bad : {"", "/a", "http:///a", "file://host/a", "file:///a%00"})
        EXPECT_EQ(app::PathFromUri(bad), "") << bad;
}

TEST(LongOptions, Lines) {
    const struct {
        std::vector<const char*> line;
        app::Verb verb;
        bool good;
    } rows[] = {
        {{"song.bms"}, app::Verb::kNone, true},
        {{"-P", "song.bms", "--open", "x"}, app::Verb::kNone, true},
        {{"--stop"}, app::Verb::kStop, true},
        {{"-N4", "--open", "a", "-M2"}, app::Verb::kOpen, true},
        {{"--at", "12:3", "--open", "a"}, app::Verb::kOpen, true},
        {{"--open", "a", "--at", "0"}, app::Verb::kOpen, false},
        {{"--open", "a", "b"}, app::Verb::kOpen, false},
        {{"--open", "a", "-D"}, app::Verb::kOpen, false},
        {{"-N4", "--open"}, app::Verb::kOpen, true},
        {{"--open", ""}, app::Verb::kOpen, false},
        {{"--seek", "-1"}, app::Verb::kSeek, true},
        {{"--seek", "x"}, app::Verb::kSeek, false},
        {{"--speed", "8.5"}, app::Verb::kSpeed, false},
        {{"--play", "--stop"}, app::Verb::kPlay, false},
        {{"--stop", "--follow"}, app::Verb::kStop, false},
        {{"--restart", "-N12"}, app::Verb::kRestart, false},
        {{"--wait", "--play"}, app::Verb::kPlay, false},
    };
    for (auto row : rows) {
        row.line.insert(row.line.begin(), "lumetra");
        const app::LongOptions options =
            app::ParseLongOptions(static_cast<int>(row.line.size()), row.line.data());
        EXPECT_EQ(options.verb, row.verb) << row.line[1];
        EXPECT_EQ(options.error.empty(), row.good) << row.line[1] << ": " << options.error;
    }
}

}  // namespace
