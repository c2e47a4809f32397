// Start-up in its order, with every box and exit code; the title; the loop; the end.
#include "shell/startup.h"

#include <functional>

#include "display/ddraw.h"
#include "host/headless/sound.h"
#include "platform/timer.h"
#include "shell_test.h"

namespace {

using namespace headless;

class StartUpTest : public test::ShellTest {
protected:
    using Failure = std::function<void()>;

    // The box, the exit code and the objects that are left to the end of the process, as is the window.
    void ExpectFailure(const Failure& fail, const std::string& line, const std::string& text,
                       const std::string& caption, const std::string& left) {
        Fresh();
        fail();
        At(0, AnswerBox());
        EXPECT_EQ(RunLine(line), -1);
        ExpectOneBox(text, caption);
        EXPECT_EQ(
            std::string(g_pDSound ? "sound " : "") + (g_pDDraw ? "display " : "") + (g_pBMS ? "chart " : ""),
            left);
        EXPECT_TRUE(TheWindow().open);
        EXPECT_EQ(FrameCount(), 0u);
    }
};

TEST_F(StartUpTest, ARefusedWindowEndsWithoutAWord) {
    FailOpenWindow(true);
    EXPECT_EQ(Run("-P "), 0);
    EXPECT_EQ(g_hWnd, nullptr);
    EXPECT_TRUE(Boxes().empty());
    EXPECT_EQ(g_pDSound, nullptr);
}

TEST_F(StartUpTest, TheFirstDialogAndItsCancelling) {
    At(0, CancelFile());
    EXPECT_EQ(RunLine("-P "), -1);
    ASSERT_EQ(FileDialogs().size(), 1u);
    const FileDialog& dialog = FileDialogs()[0];
    EXPECT_EQ(dialog.title, "Open BMS(BME) file");
    EXPECT_EQ(dialog.filter.name, "BMS(BME)File(*.bms|*.bme)");
    EXPECT_EQ(dialog.filter.patterns, "*.bms;*.bme");
    EXPECT_TRUE(Titles().empty());
    EXPECT_TRUE(Boxes().empty());
}

TEST_F(StartUpTest, TheFirstDialogChooses) {
    At(0, ChooseFile(folder_.Path("song.bms")));
    At(100, Key(test::kEscape));
    EXPECT_EQ(RunLine(""), 0);
    EXPECT_EQ(Titles().back(), "-genre- title  [artist] ");
}

TEST_F(StartUpTest, TheSoundDeviceComesFirst) {
    const auto fail = [](test::Call call, int skip = 0) {
        return [=] { test::Order(call, DSERR_INVALIDCALL, skip); };
    };
    const Failure steps[] = {[] { RefuseSound(true); },     fail(test::Call::kDirectSoundCreate),
                             fail(test::Call::kSoundLevel), fail(test::Call::kCreateSoundBuffer),
                             fail(test::Call::kSetFormat),  fail(test::Call::kCreateSoundBuffer, 1),
                             fail(test::Call::kPlay)};
    for (const Failure& step : steps)
        ExpectFailure(step, "missing.bms", "DirectSoundInitError", "Error!", "sound ");
}

TEST_F(StartUpTest, ThenTheDisplayAndThenTheChart) {
    ExpectFailure([] { test::Order(test::Call::kDirectDrawCreate, E_FAIL); }, "missing.bms",
                  "DirectDrawInitError.", "ERROR!", "sound display ");
    const std::string zero = WriteChart("zero.bms", "#WAV01 long.wav\r\n#00011:01\r\n");
    ExpectFailure([] {}, zero, zero, "CompileError!", "sound display chart ");
    ExpectFailure([] {}, "\"missing chart.bms\"", "missing chart.bms", "FileLoadError!",
                  "sound display chart ");
    EXPECT_EQ(Titles(), (std::vector<std::string>{"Lumetra 0.04", "Now Initializing & Loading..."}));
}

TEST_F(StartUpTest, GoesOnWithoutAPartsSurface) {
    for (int passes = 1; passes <= 5; ++passes) {  // the back surface is the first
        Fresh();
        test::Order(test::Call::kCreateSurface, E_FAIL, passes);
        At(10, Remote(WM_REMOTE_RESTART));
        At(10, Remote(WM_REMOTE_SEEK, 1));
        At(10, Remote(WM_REMOTE_LOAD));
        At(20, AnswerBox());
        At(9000, Key(13));
        At(9500, Key(test::kEscape));
        EXPECT_EQ(Run("-P "), 0) << passes;
        ExpectOneBox("CreatePartsError", "ERROR!");
        EXPECT_GT(FrameCount(), 100u);
        EXPECT_TRUE(FileDialogs().empty());
    }
}

TEST_F(StartUpTest, ClosedOrToldToQuitInsideTheBoxOfAMissingSurface) {
    const Action close = Call([] { PostMessageA(g_hWnd, WM_CLOSE, 0, 0); });
    for (int passes = 1; passes <= 5; ++passes) {
        for (const bool quit : {false, true}) {
            Fresh();
            test::Order(test::Call::kCreateSurface, E_FAIL, passes);
            At(10, quit ? Remote(WM_REMOTE_QUIT) : close);
            EXPECT_EQ(Run("-P "), 0) << passes;
            EXPECT_EQ(FrameCount(), 0u);
            EXPECT_EQ(TheWindow().open, quit);
            EXPECT_EQ(test::LiveSurfaces(), 0);
        }
    }
}

TEST_F(StartUpTest, EachCommandInAFailureBoxIsHarmless) {
    const uint32_t messages[] = {1125, 1126, 1127, 1128, 1129, 1130, 1134, 1224, 515, 274, 16};
    const struct {
        const char* line;
        bool sound;
    } starts[] = {{"-P missing.bms", true}, {"missing.bms", true}, {"-P missing.bms", false}};
    for (const auto& start : starts) {
        for (const uint32_t message : messages) {
            Fresh();
            RefuseSound(!start.sound);
            At(10, Remote(message, message == 274 ? IDM_LOAD : 2));
            // Straight to the window too, as its own messages come.
            At(20, Call([message] { PostMessageA(g_hWnd, message, message == 274 ? IDM_LOAD : 2, 0); }));
            At(30, Remote(WM_REMOTE_LOAD));
            At(40, Key(13));
            EXPECT_EQ(RunLine(start.line), -1) << message;
            EXPECT_EQ(Boxes().size(), 1u) << message;
            EXPECT_TRUE(FileDialogs().empty()) << message;
            EXPECT_EQ(g_nStartMeasure, -1) << message;
        }
    }
    Reset();
}

TEST_F(StartUpTest, ASpeedOrAHostGetsThroughAFailureBox) {
    At(10, Remote(WM_REMOTE_SPEED, 300));
    At(20, Remote(WM_REMOTE_HOST));
    At(30, Remote(WM_REMOTE_SPEED, 400));
    At(40, AnswerBox());
    EXPECT_EQ(RunLine("missing.bms"), -1);
    EXPECT_EQ(g_fSpeed, 300 * 0.01f);
    EXPECT_EQ(g_bHost, 1);
}

TEST_F(StartUpTest, WhereTheWindowStands) {
    const struct {
        const char* options;
        int x, y;
    } rows[] = {{"-X40 -Y60 ", 40, 60}, {"", 100, 100}, {"-X100 ", 100, -1}, {"-X0 -Y0 ", 0, 0}};
    for (const auto& row : rows) {
        Fresh();
        At(100, Call([&row] {
               EXPECT_EQ(TheWindow().client.left, row.x) << row.options;
               EXPECT_EQ(TheWindow().client.top, row.y) << row.options;
               EXPECT_EQ(TheWindow().client.right - row.x, 452);
               EXPECT_EQ(TheWindow().client.bottom - row.y, 280);
               EXPECT_TRUE(TheWindow().topmost);
           }));
        At(200, Key(test::kEscape));
        EXPECT_EQ(Run(row.options), 0);
    }
}

TEST_F(StartUpTest, StandsIdleWithoutPlayAndRunsWithIt) {
    At(500, Call([] {
           EXPECT_EQ(g_bPlaying, 0);
           EXPECT_EQ(g_bPaused, 1);
           EXPECT_EQ(g_dwNowTime, g_dwStartTime);
           EXPECT_EQ(g_TimeCaps.wPeriodMin, 1u);
       }));
    At(600, Key(test::kEscape));
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(Titles(), (std::vector<std::string>{"Lumetra 0.04", "Now Initializing & Loading...",
                                                  "-genre- title  [artist] "}));
    EXPECT_EQ(g_TimeCaps.wPeriodMin, 0u);

    Fresh();
    At(500, Call([] {
           EXPECT_EQ(g_bPlaying, 1);
           EXPECT_EQ(g_bPaused, 0);
           EXPECT_GT(g_dwNowTime - g_dwStartTime, 400u);
           EXPECT_EQ(g_dwSeekTime, 4999);
       }));
    At(600, Key(test::kEscape));
    EXPECT_EQ(Run("-N2 -P "), 0);
}

TEST_F(StartUpTest, AMissingResourceIsLoggedOnce) {
    At(100, Key(test::kEscape));
    EXPECT_EQ(WinMain(nullptr, nullptr, std::string(chart_).data(), 1), 0);
    EXPECT_EQ(Log(), "LoadBitmap Error\n");
    EXPECT_GT(FrameCount(), 1u);
}

TEST_F(StartUpTest, Titles) {
    const std::string longText(100, 'x'), cut(70, 'x');
    const std::pair<std::string, std::string> rows[] = {
        {"", "-(no genre)- (no title)  [(no artist)] "},
        {"#TITLE " + longText + "\r\n", "-(no genre)- " + cut + "  [(no artist)] "},
        {"#GENRE g\r\n#TITLE t\r\n#ARTIST " + longText + "\r\n", "-g- t  [" + cut + "] "},
        {"#GENRE " + longText + "\r\n#TITLE " + longText + "\r\n#ARTIST " + longText + "\r\n",
         "-" + cut + "- " + cut + "  [" + cut + "] "},
    };
    for (const auto& [headers, title] : rows) {
        Fresh();
        const std::string chart = WriteChart("title.bms", headers + "#00111:01\r\n");
        At(50, Key(test::kEscape));
        EXPECT_EQ(RunLine(chart), 0);
        EXPECT_EQ(Titles().back(), title);
    }
}

TEST_F(StartUpTest, WaysOut) {
    const struct {
        const char* name;
        Action action;
        bool windowStays;
    } rows[] = {
        {"Esc", Key(test::kEscape), true}, {"1125", Remote(WM_REMOTE_QUIT), true}, {"close", Close(), false}};
    for (const auto& row : rows) {
        Fresh();
        uint64_t frames = 0;
        At(299, Call([&frames] { frames = FrameCount(); }));
        At(300, row.action);
        EXPECT_EQ(Run("-P "), 0) << row.name;
        EXPECT_LE(FrameCount(), frames + 1) << row.name;  // none behind the way out
        EXPECT_EQ(TheWindow().open, row.windowStays) << row.name;
        EXPECT_EQ(g_pDSound, nullptr);
        EXPECT_EQ(g_pDDraw, nullptr);
        EXPECT_EQ(g_pBMS, nullptr);
        EXPECT_EQ(g_pBarList, nullptr);
        EXPECT_EQ(timeEndPeriod(1), TIMERR_NOCANDO);  // the run has ended its own
        Shutdown();                                   // once more does nothing
        EXPECT_FALSE(SoundIsOpen());
    }
}

}  // namespace
