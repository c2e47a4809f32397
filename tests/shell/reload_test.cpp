// Another chart by double click, menu, drop and command.
#include <gtest/gtest.h>

#include <string>

#include "chart/bms.h"
#include "display/ddraw.h"
#include "fresh.h"
#include "playback/playback.h"
#include "small_chart.h"
#include "sound/dsbuffer.h"
#include "sound/dsound.h"

namespace {

using headless::At;
using headless::Call;
using headless::CancelFile;
using headless::ChooseFile;
using headless::Key;

class Reload : public testing::Test {
protected:
    Reload() : chart_(test::WriteChart(folder_)) {
        folder_.Write("other/one.wav", test::SquareWav(4000));
        folder_.Write("other/one.bmp", test::Bmp(4, 4, 0x123456));
        folder_.Write("other/next.bme",
                      test::Chart({"#TITLE next", "#BPM 60", "#WAV05 one.wav", "#BMP02 one.bmp", "#00105:01",
                                   "#00111:05", "#00411:05"}));
        next_ = folder_.Path("other/next.bme");
        test::FreshProgram();
    }
    ~Reload() override {
        EXPECT_EQ(headless::Faults(), std::vector<std::string>{});
        EXPECT_EQ(headless::ActionsLeft(), 0u);
    }

    int Run(const std::string& options) { return test::RunLine(options + chart_); }

    test::TempFolder folder_;
    const std::string chart_;
    std::string next_;
};

void ExpectRunning() {
    EXPECT_EQ(g_bPlaying, 1);
    EXPECT_EQ(g_bPaused, 0);
    EXPECT_EQ(g_dwPauseTime, 0u);
}

TEST_F(Reload, EveryRoadReplacesTheChart) {
    const struct {
        const char* name;
        headless::Action action;
        bool dialog;
    } roads[] = {{"double click", headless::DoubleClick(10, 10), true},
                 {"command", headless::Remote(WM_REMOTE_LOAD), true},
                 {"menu", headless::WantMenu(10, 10), true},
                 {"drop", headless::Drop(next_), false}};
    for (const char* options : {"", "-P "}) {
        for (const auto& road : roads) {
            test::FreshProgram();
            At(2500, road.action);
            if (std::string(road.name) == "menu") At(2600, headless::ChooseMenu(IDM_LOAD));
            if (road.dialog) At(3000, ChooseFile(next_));
            At(3100, Call([&road] {
                   ExpectRunning();
                   EXPECT_EQ(headless::Titles().back(), "-(no genre)- next  [(no artist)] ") << road.name;
                   EXPECT_EQ(g_pDSound->m_pSlot[1], nullptr);
                   EXPECT_NE(g_pDSound->m_pSlot[5], nullptr);
                   EXPECT_NE(g_pDDraw->m_apDib[2], nullptr);
                   EXPECT_EQ(g_nBarCount, 6);
                   EXPECT_EQ(g_dBPM, 60.0);
               }));
            At(3200, Key(27));
            EXPECT_EQ(Run(options), 0) << road.name;
            const auto& titles = headless::Titles();
            ASSERT_GE(titles.size(), 2u);
            EXPECT_EQ(titles[titles.size() - 2], "Now Initializing & Loading...");
            EXPECT_EQ(headless::FileDialogs().size(), road.dialog ? 1u : 0u) << road.name;
        }
    }
}

TEST_F(Reload, TheDialogBeginsInTheChartsFolder) {
    At(100, headless::DoubleClick());
    At(200, ChooseFile(next_));
    At(300, headless::DoubleClick());
    At(400, CancelFile());
    At(500, Key(27));
    EXPECT_EQ(Run(""), 0);
    ASSERT_EQ(headless::FileDialogs().size(), 2u);
    EXPECT_EQ(headless::FileDialogs()[0].folder, folder_.Path());
    EXPECT_EQ(headless::FileDialogs()[1].folder, folder_.Path("other"));
    EXPECT_EQ(headless::FileDialogs()[0].title, "Open BMS(BME) file");
}

TEST_F(Reload, SettingsStayAndLayersAreCleared) {
    CDSound* pSound = nullptr;
    CDDraw* pDraw = nullptr;
    At(1000, headless::Remote(WM_REMOTE_SPEED, 250));
    At(2000, Call([&] {
           pSound = g_pDSound;
           pDraw = g_pDDraw;
           g_pDDraw->ClearParts(LAYER_BGA, 0xFFFFFF);
       }));
    At(2000, headless::DoubleClick());
    At(2100, ChooseFile(next_));
    At(2200, Call([&] {
           EXPECT_EQ(g_nStartMeasure, 1);
           EXPECT_EQ(g_fSpeed, 250 * 0.01f);
           EXPECT_EQ(g_dwSeekTime, 4999);  // 1000 ms, one measure of four seconds, less one
           EXPECT_EQ(g_pDSound, pSound);
           EXPECT_EQ(g_pDDraw, pDraw);
           EXPECT_EQ(headless::ShownPicture().pixels[50 * SCREEN_WIDTH + LAYER_X + 200], 0u);
       }));
    At(2300, Key(27));
    EXPECT_EQ(Run("-P -N1 "), 0);
}

TEST_F(Reload, AStartMeasureBehindTheNewChartsEndKeepsTheOldSeekTime) {
    folder_.Write("short.bms", test::Chart({"#BPM 240", "#00111:05"}));
    At(100, headless::DoubleClick());
    At(200, ChooseFile(folder_.Path("short.bms")));
    At(150, Call([] {
           EXPECT_EQ(g_nBarCount, 4);
           EXPECT_EQ(g_dwSeekTime, 6999);
       }));
    At(300, Call([] {
           EXPECT_EQ(g_nBarCount, 3);
           EXPECT_EQ(g_dwSeekTime, 6999);
       }));
    At(350, Key(27));
    EXPECT_EQ(Run("-N3 "), 0);
}

TEST_F(Reload, CancellingTakesThePauseOutOfTheClock) {
    uint32_t before = 0;
    At(2000, Call([&] {
           before = g_dwStartTime;
           EXPECT_EQ(g_pDSound->m_pSlot[1]->IsPlaying(), 1);
       }));
    At(2000, headless::DoubleClick());
    At(2500, Call([] {
           EXPECT_EQ(g_bPlaying, 0);
           EXPECT_EQ(g_bPaused, 0);
           EXPECT_EQ(g_pDSound->m_pSlot[1]->IsPlaying(), 0);
       }));
    At(5000, CancelFile());
    At(5100, Call([&] {
           ExpectRunning();
           EXPECT_NEAR(static_cast<double>(g_dwStartTime - before), 3000.0, 20.0);
           EXPECT_EQ(g_pDSound->m_pSlot[1]->IsPlaying(), 1);
       }));
    At(5200, Key(27));
    EXPECT_EQ(Run("-P "), 0);
    EXPECT_EQ(headless::Titles().size(), 3u);
}

TEST_F(Reload, FailuresSayTheirOwnWordsAndEndWithZero) {
    folder_.Write("zero.bms", test::Chart({"#00011:01"}));
    const struct {
        std::string file;
        const char* caption;
    } rows[] = {{folder_.Path("gone.bms"), "FileLoadError!"},
                {folder_.Path("zero.bms"), "FileCompileError!"}};
    for (const auto& row : rows) {
        test::FreshProgram();
        uint64_t frames = 0;
        At(1000, headless::DoubleClick());
        At(1100, Call([&frames] { frames = headless::FrameCount(); }));
        At(1100, ChooseFile(row.file));
        // No command finds a chart to act on inside the box.
        for (const uint32_t message : {1126, 1127, 1128, 1129, 1130, 1134}) {
            At(1200, headless::Remote(message, 1));
        }
        At(1300, headless::AnswerBox());
        EXPECT_EQ(Run("-P "), 0) << row.file;
        ASSERT_EQ(headless::Boxes().size(), 1u) << row.file;
        EXPECT_EQ(headless::Boxes()[0].text, test::TempFolder::Backslashes(row.file));
        EXPECT_EQ(headless::Boxes()[0].caption, row.caption);
        EXPECT_EQ(headless::Boxes()[0].icon, host::BoxIcon::kWarning);
        EXPECT_EQ(headless::FrameCount(), frames) << row.file;
        EXPECT_EQ(headless::FileDialogs().size(), 1u) << row.file;
    }
}

}  // namespace
