// The start in its order, with every box and exit code; the window and the clock; the ways out.
#include "shell/startup.h"

#include <functional>
#include <new>

#include "chart/bms.h"
#include "display/ddraw.h"
#include "host/headless/sound.h"
#include "platform/timer.h"
#include "shell_test.h"
#include "sound/dsound.h"

namespace {
size_t g_refused = 0;  // blocks of this size are refused
}

// Only the objects that may be missing are asked for in this way.
void* operator new(size_t size, const std::nothrow_t&) noexcept {
    return size == g_refused ? nullptr : ::operator new(size);
}

namespace {

using namespace headless;
using test::Call;

class StartUpTest : public test::ShellTest {};

TEST_F(StartUpTest, ARefusedWindowFailsSilently) {
    FailOpenWindow(true);
    EXPECT_EQ(Run("-P "), 0);
    EXPECT_EQ(g_hWnd, nullptr);
    EXPECT_TRUE(Boxes().empty());
    EXPECT_EQ(g_pDSound, nullptr);
}

TEST_F(StartUpTest, TheFirstDialog) {
    At(0, CancelFile());
    EXPECT_EQ(RunLine("-P "), -1);
    EXPECT_EQ(FileDialogs().at(0).title, "Open BMS(BME) file");
    EXPECT_EQ(FileDialogs()[0].filter.name, "BMS(BME)File(*.bms|*.bme)");
    EXPECT_EQ(FileDialogs()[0].filter.patterns, "*.bms;*.bme");
    EXPECT_TRUE(Titles().empty() && Boxes().empty());
    Fresh();
    At(0, ChooseFile(folder_.Path("song.bms")));
    At(100, Key(test::kEscape));
    EXPECT_EQ(RunLine(""), 0);
    EXPECT_EQ(Titles(), (std::vector<std::string>{"Lumetra 0.04", "Now Initializing & Loading...",
                                                  "-genre- title  [artist] "}));
}

// Each step that can fail, in their order: a later one is not reached. Objects stay until the process ends.
TEST_F(StartUpTest, FailuresInTheirOrder) {
    const auto sound = [](Call call, int skip = 0) {
        return [=] { test::Order(call, DSERR_INVALIDCALL, skip); };
    };
    const auto memory = [](size_t size) { return [=] { g_refused = size; }; };
    const std::string zero = WriteChart("zero.bms", "#WAV01 long.wav\r\n#00011:01\r\n");
    const struct {
        std::function<void()> fail;
        std::string line, text, caption, left;
    } rows[] = {
        {memory(sizeof(CDSound)), chart_, "OutOfMemoryError", "Error!", ""},
        {[] { RefuseSound(true); }, "none.bms", "DirectSoundInitError", "Error!", "sound "},
        {sound(Call::kDirectSoundCreate), "none.bms", "DirectSoundInitError", "Error!", "sound "},
        {sound(Call::kSoundLevel), "none.bms", "DirectSoundInitError", "Error!", "sound "},
        {sound(Call::kCreateSoundBuffer), "none.bms", "DirectSoundInitError", "Error!", "sound "},
        {sound(Call::kSetFormat), "none.bms", "DirectSoundInitError", "Error!", "sound "},
        {sound(Call::kCreateSoundBuffer, 1), "none.bms", "DirectSoundInitError", "Error!", "sound "},
        {sound(Call::kPlay), "none.bms", "DirectSoundInitError", "Error!", "sound "},
        {memory(sizeof(CDDraw)), "none.bms", "OutOfMemoryError", "Error!", "sound "},
        {[] { test::Order(Call::kDirectDrawCreate, E_FAIL); }, "none.bms", "DirectDrawInitError.", "ERROR!",
         "sound display "},
        {memory(sizeof(CBMS)), "none.bms", "OutOfMemoryError", "Error!", "sound display "},
        {[] {}, zero, zero, "CompileError!", "sound display chart "},
        {[] {}, "\"a none.bms\"", "a none.bms", "FileLoadError!", "sound display chart "},
    };
    for (const auto& row : rows) {
        Fresh();
        row.fail();
        At(10, Remote(WM_REMOTE_RESTART));
        At(20, AnswerBox());
        EXPECT_EQ(RunLine("-P " + row.line), -1);
        g_refused = 0;
        RefuseSound(false);
        test::ForgetCalls();
        ExpectOneBox(row.text, row.caption);
        EXPECT_EQ(
            std::string(g_pDSound ? "sound " : "") + (g_pDDraw ? "display " : "") + (g_pBMS ? "chart " : ""),
            row.left);
        EXPECT_TRUE(TheWindow().open);
        EXPECT_EQ(FrameCount(), 0u);
    }
}

TEST_F(StartUpTest, NoMemoryForAnotherChartEndsTheProgram) {
    At(1000, DoubleClick());
    At(1100, headless::Call([] { g_refused = sizeof(CBMS); }));
    At(1100, ChooseFile(folder_.Path("song.bms")));
    At(1200, Remote(WM_REMOTE_RESTART));
    At(1300, AnswerBox());
    EXPECT_EQ(Run("-P "), 0);
    g_refused = 0;
    ExpectOneBox("OutOfMemoryError", "Error!");
    EXPECT_EQ(Now(), 1300u);
}

TEST_F(StartUpTest, EveryLoadCompactsTheSoundMemory) {
    At(100, DoubleClick());
    At(200, ChooseFile(folder_.Path("song.bms")));
    At(300, Key(test::kEscape));
    const int before = test::Calls(Call::kCompact);
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(test::Calls(Call::kCompact), before + 2);
}

// The box delivers messages: the player goes on, is told to quit, or its window is closed.
TEST_F(StartUpTest, InTheBoxOfAMissingPartsSurface) {
    enum { kGoesOn, kQuits, kCloses };
    for (int passes = 1; passes <= 5; ++passes) {  // the back surface is the first
        for (const int way : {kGoesOn, kQuits, kCloses}) {
            SCOPED_TRACE(testing::Message() << "surface " << passes << " way " << way);
            Fresh();
            test::Order(Call::kCreateSurface, E_FAIL, passes);
            if (way == kGoesOn) {
                for (const uint32_t message : {1128, 1129, 1134}) At(10, Remote(message, 1));
                At(20, AnswerBox());
                At(9000, Key(test::kEscape));
            }
            if (way == kQuits) At(10, Remote(WM_REMOTE_QUIT));
            if (way == kCloses) At(10, headless::Call([] { PostMessageA(g_hWnd, WM_CLOSE, 0, 0); }));
            EXPECT_EQ(Run("-P "), 0);
            EXPECT_EQ(FrameCount() > 100, way == kGoesOn);
            EXPECT_EQ(TheWindow().open, way != kCloses);
            EXPECT_TRUE(FileDialogs().empty());
            if (way == kGoesOn) ExpectOneBox("CreatePartsError", "ERROR!");
            EXPECT_EQ(test::LiveSurfaces(), 0);
        }
    }
}

TEST_F(StartUpTest, CommandsInAFailureBoxAreHarmless) {
    for (const uint32_t message : {1125, 1126, 1127, 1128, 1129, 1130, 1134, 1224, 515, 274, 16}) {
        for (const bool sound : {true, false}) {
            Fresh();
            RefuseSound(!sound);
            At(10, Remote(WM_REMOTE_SPEED, 300));
            At(10, Remote(message, message == 274 ? IDM_LOAD : 2));
            // Straight to the window too, as its own messages come.
            At(20, headless::Call(
                       [message] { PostMessageA(g_hWnd, message, message == 274 ? IDM_LOAD : 2, 0); }));
            At(30, Remote(WM_REMOTE_LOAD));
            At(40, Key(13));
            EXPECT_EQ(RunLine("-P missing.bms"), -1) << message;
            EXPECT_EQ(Boxes().size(), 1u) << message;
            EXPECT_TRUE(FileDialogs().empty()) << message;
            EXPECT_EQ(g_nStartMeasure, -1) << message;
            EXPECT_EQ(g_fSpeed, (message == 1130 ? 50 : 300) * 0.01f);
            EXPECT_EQ(g_bHost, message == 1224);
        }
    }
    Reset();
}

TEST_F(StartUpTest, TheWindowAndTheClock) {
    const struct {
        const char* options;
        int x, y, playing;
        int32_t seek;
    } rows[] = {{"-X40 -Y60 ", 40, 60, 0, 0},
                {"-P -N2 ", 100, 100, 1, 4999},
                {"-X100 ", 100, -1, 0, 0},
                {"-X0 -Y0 ", 0, 0, 0, 0}};
    for (const auto& row : rows) {
        Fresh();
        At(500, headless::Call([&row] {
               const host::Rect& client = TheWindow().client;
               EXPECT_EQ(client.left, row.x) << row.options;
               EXPECT_EQ(client.top, row.y) << row.options;
               EXPECT_EQ(client.right - row.x, 452);
               EXPECT_EQ(client.bottom - row.y, 280);
               EXPECT_TRUE(TheWindow().topmost);
               EXPECT_EQ(g_bPlaying, row.playing);
               EXPECT_EQ(g_bPaused, !row.playing);
               EXPECT_EQ(g_dwNowTime - g_dwStartTime > 400, row.playing) << g_dwNowTime - g_dwStartTime;
               EXPECT_EQ(g_dwSeekTime, row.seek);
               EXPECT_EQ(g_TimeCaps.wPeriodMin, 1u);
           }));
        At(600, Key(test::kEscape));
        EXPECT_EQ(Run(row.options), 0);
        EXPECT_EQ(g_TimeCaps.wPeriodMin, 0u);
    }
}

TEST_F(StartUpTest, AMissingResourceIsLoggedOnce) {
    At(100, Key(test::kEscape));
    EXPECT_EQ(WinMain(nullptr, nullptr, std::string(chart_).data(), 1), 0);
    EXPECT_EQ(Log(), "LoadBitmap Error\n");
    EXPECT_GT(FrameCount(), 1u);
}

TEST_F(StartUpTest, WaysOut) {
    const struct {
        const char* name;
        Action action;
        bool stays;
    } rows[] = {
        {"Esc", Key(test::kEscape), true}, {"1125", Remote(WM_REMOTE_QUIT), true}, {"close", Close(), false}};
    for (const auto& row : rows) {
        Fresh();
        uint64_t frames = 0;
        At(299, headless::Call([&frames] { frames = FrameCount(); }));
        At(300, row.action);
        EXPECT_EQ(Run("-P "), 0) << row.name;
        EXPECT_LE(FrameCount(), frames + 1) << row.name;
        EXPECT_EQ(TheWindow().open, row.stays) << row.name;
        EXPECT_TRUE(!g_pDSound && !g_pDDraw && !g_pBMS && !g_pBarList);
        EXPECT_EQ(timeEndPeriod(1), TIMERR_NOCANDO);  // the run has ended its own
        Shutdown();                                   // once more does nothing
        EXPECT_FALSE(SoundIsOpen());
    }
}

}  // namespace
