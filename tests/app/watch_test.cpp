// --watch in a running program.
#include "app/watch.h"

#include "app/channel_test.h"

namespace {

using namespace headless;
using nlohmann::json;

class WatchTest : public test::ChannelTest {
protected:
    void SetUp() override {
        Prepare();
        app::SetWatch(true);
    }
    // Writes the chart with that title, or a file, and tells of it.
    void Save(uint64_t ms, const std::string& title) {
        At(ms, Call([=, this] {
               folder_.Write("song.bms", test::Chart({"#TITLE " + title, "#BPM 120", "#WAV01 long.wav",
                                                      "#WAV02 kick.wav", "#00111:02", "#00211:02"}));
               WriteEvent(folder_.Path("song.bms"));
           }));
    }
    void Touch(uint64_t ms, const std::string& name) {
        At(ms, Call([=, this] { WriteEvent(folder_.Path(name)); }));
    }
    static void ExpectLoads(uint64_t ms, size_t count) {
        At(ms, Call([=] {
               EXPECT_EQ(std::count(Titles().begin(), Titles().end(), LOADING_TITLE), count) << ms;
           }));
    }
    static void ExpectStatus(uint64_t ms, const std::string& name, const json& value) {
        At(ms, Call([=] {
               ReceiveLine(7, R"({"command":"status"})");
               EXPECT_EQ(Last()["result"][name], value) << name << " at " << ms;
           }));
    }
};

TEST_F(WatchTest, GoesOnAtTheMeasureOrStandsThere) {
    Save(3700, "one");  // measure 1 is playing
    Save(3740, "one");
    ExpectLoads(3785, 1);
    ExpectLoads(3810, 2);
    ExpectStatus(3820, "title", "one");
    ExpectStatus(3820, "measure", 1);
    ExpectStatus(3820, "watch", true);
    ExpectState(3820, "Running");
    At(4800, Key(test::kSpace));
    Save(5100, "two");
    ExpectState(5200, "Paused");
    ExpectStatus(5200, "time_ms", 2999);  // the start of measure 1
    At(5300, Key(test::kSpace));
    ExpectState(5400, "Running");
    ExpectStatus(5400, "measure", 1);
    At(20'000, Call([] {}));  // the end has come
    Save(20'100, "three");
    ExpectState(20'200, "Paused");
    ExpectStatus(20'200, "measure", 0);  // an ended chart stands at its start
    At(20'300, Call([] { EXPECT_EQ(g_nStartMeasure, 0); }));
    At(20'400, Key(test::kEscape));
    EXPECT_EQ(Run("-P -N0 "), 0);
}

TEST_F(WatchTest, WhatConcernsTheChart) {
    Save(300, "");  // from here on kick.wav is missing
    Touch(1000, "other.wav");
    Touch(1000, "song.bak");
    Touch(1000, "kick.txt");
    ExpectLoads(1100, 2);
    Touch(1200, "long.wav");
    ExpectLoads(1300, 3);
    Touch(1400, "KICK.ogg");
    ExpectLoads(1500, 4);
    At(1600, Call([this] { folder_.Write("song.bms", ""); }));
    Touch(1600, "song.bms");
    ExpectLoads(1700, 4);
    ExpectStatus(1700, "refused", "song.bms: the file is empty");
    ExpectState(1700, "Paused");
    At(1750, WantMenu());
    At(1800, ChooseMenu(IDM_ABOUT));
    Save(1900, "back");
    ExpectLoads(2100, 4);
    At(2200, AnswerBox());
    ExpectLoads(2300, 5);
    ExpectStatus(2300, "refused", "");
    ExpectState(2300, "Paused");
    At(2310, Call([this] {
           WriteEvent(folder_.Path("song.bms"));
           ReceiveLine(7, R"({"command":"open","watch":true,"file":")" + folder_.Path("song.bms") + R"("})");
       }));
    ExpectLoads(2390, 6);
    At(2400, Call([this] {
           ReceiveLine(7, R"({"command":"open","file":")" + folder_.Path("song.bms") + R"("})");
       }));
    At(2500, Call([] { EXPECT_EQ(WatchedFolders().size(), 0u); }));
    ExpectStatus(2500, "watch", false);
    At(2600, Key(test::kEscape));
    EXPECT_EQ(Run(), 0);
    EXPECT_NE(Log().find("Watch: song.bms: the file is empty; the loaded chart stays"), std::string::npos);
    EXPECT_TRUE(Boxes().size() == 1);
}

TEST_F(WatchTest, AHostThatCannot) {
    FailWatch(true);
    ExpectStatus(500, "watch", false);
    At(600, Key(test::kEscape));
    testing::internal::CaptureStderr();
    EXPECT_EQ(Run(), 0);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("not watched: no watching here"),
              std::string::npos);
}

}  // namespace
