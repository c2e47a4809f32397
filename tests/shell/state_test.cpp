#include "shell_test.h"

#include <functional>

#include "shell/startup.h"
#include "sound/dsbuffer.h"
#include "sound/dsound.h"

namespace {

enum State { kIdle, kRunning, kPaused, kHeld, kEnded, kSame };
constexpr const char* kNames[] = {"Idle", "Running", "Paused", "Held", "Ended"};

constexpr uint64_t kMs = 1'000'000;

CDSBuffer* Sound() {
    return g_pDSound->m_pSlot[1];
}

struct Snapshot {
    std::string state = test::StateName();
    uint32_t pauseTime = g_dwPauseTime, startTime = g_dwStartTime, now = timeGetTime();
    int32_t seekTime = g_dwSeekTime;
    int sounding = Sound()->IsPlaying(), wasPlaying = Sound()->m_bWasPlaying;
    bool operator==(const Snapshot&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Snapshot& s) {
    return out << s.state << ", paused " << s.pauseTime << ", started " << s.startTime << ", now " << s.now
               << ", seek " << s.seekTime << ", sounds " << s.sounding << ", did " << s.wasPlaying;
}

void Key(WPARAM key) {
    WindowProc(g_hWnd, WM_KEYDOWN, key, 0);
}
void Tell(UINT message, WPARAM wParam = 0) {
    WindowProc(g_hWnd, message, wParam, 0);
}

void PosChanging(UINT flags) {
    WINDOWPOS pos{g_hWnd, nullptr, 0, 0, 0, 0, flags};
    WindowProc(g_hWnd, WM_WINDOWPOSCHANGING, 0, reinterpret_cast<LPARAM>(&pos));
}

// Opens the about box or the dialog, which is answered three seconds later.
void InModal(const headless::Action& answer, WPARAM command) {
    headless::At(headless::Now() + 3000, answer);
    if (command) {
        WindowProc(g_hWnd, WM_SYSCOMMAND, command, 0);
    } else {
        WindowProc(g_hWnd, WM_LBUTTONDBLCLK, 0, 0);
    }
}

void RunTo(uint64_t milliseconds) {
    headless::AdvanceClock(milliseconds * kMs);
    PlayFrame();
}

// A fresh start, then the way into the state as a user would take it. The sound has begun in all but Idle.
void Enter(State state, const std::string& chart) {
    test::ShellTest::Fresh();
    ASSERT_EQ(StartUp(chart.c_str(), -1, -1), START_PLAY);
    if (state == kIdle) return;
    Key(VK_RETURN);
    RunTo(1500);
    ASSERT_EQ(Sound()->IsPlaying(), 1);
    if (state == kPaused) Key(VK_SPACE);
    if (state == kHeld) Tell(WM_NCLBUTTONDOWN);
    if (state == kEnded) RunTo(test::kChartEnd);
    headless::AdvanceClock(2000 * kMs);
}

struct Event {
    const char* name;
    std::function<void()> act;
    State to[5];  // from Idle, Running, Paused, Held, Ended
};

void CheckCell(const Event& event, State from, const std::string& chart) {
    SCOPED_TRACE(std::string(event.name) + " in " + kNames[from]);
    ASSERT_NO_FATAL_FAILURE(Enter(from, chart));
    const Snapshot before;
    ASSERT_EQ(before.state, kNames[from]);
    event.act();
    const Snapshot after;
    const State to = event.to[from];
    Snapshot wanted = before;
    wanted.now = after.now;
    if (to != kSame) {
        const bool runs = to == kRunning, restarts = event.to[kIdle] == kRunning;
        const uint32_t pausedAt = before.pauseTime ? before.pauseTime : before.now;
        wanted.state = kNames[to];
        wanted.pauseTime = runs ? 0 : before.now;
        if (runs) wanted.startTime = restarts ? after.now : before.startTime + (after.now - pausedAt);
        if (restarts) wanted.seekTime = g_nStartMeasure < 0 ? 0 : 999 + 2000 * g_nStartMeasure;
        wanted.sounding = runs && !restarts;
        wanted.wasPlaying = !runs;
    }
    EXPECT_EQ(after, wanted);
}

class StateTest : public test::ShellTest {};

TEST_F(StateTest, EveryEventInEveryState) {
    const Event events[] = {
        {"Space", [] { Key(VK_SPACE); }, {kSame, kPaused, kRunning, kSame, kSame}},
        {"1126", [] { Tell(WM_REMOTE_STOP); }, {kSame, kPaused, kSame, kSame, kSame}},
        {"1127", [] { Tell(WM_REMOTE_PLAY); }, {kSame, kSame, kRunning, kSame, kSame}},
        {"Enter", [] { Key(VK_RETURN); }, {kRunning, kRunning, kRunning, kRunning, kRunning}},
        {"1128", [] { Tell(WM_REMOTE_RESTART); }, {kRunning, kRunning, kRunning, kRunning, kRunning}},
        {"1129", [] { Tell(WM_REMOTE_SEEK, 1); }, {kRunning, kRunning, kRunning, kRunning, kRunning}},
        {"1130", [] { Tell(WM_REMOTE_SPEED, 200); }, {kSame, kSame, kSame, kSame, kSame}},
        {"161", [] { Tell(WM_NCLBUTTONDOWN); }, {kSame, kHeld, kSame, kSame, kPaused}},
        {"529", [] { Tell(WM_ENTERMENULOOP); }, {kSame, kHeld, kSame, kSame, kPaused}},
        {"530", [] { Tell(WM_EXITMENULOOP); }, {kSame, kSame, kSame, kRunning, kSame}},
        {"562", [] { Tell(WM_EXITSIZEMOVE); }, {kSame, kSame, kSame, kRunning, kSame}},
        {"70 with 3", [] { PosChanging(3); }, {kSame, kSame, kSame, kRunning, kSame}},
        {"70 with 7", [] { PosChanging(7); }, {kSame, kSame, kSame, kSame, kSame}},
        {"about box",
         [] { InModal(headless::AnswerBox(), IDM_ABOUT); },
         {kSame, kRunning, kSame, kRunning, kPaused}},
        {"dialog cancelled",
         [] { InModal(headless::CancelFile(), 0); },
         {kSame, kRunning, kSame, kRunning, kSame}},
        {"file chosen",
         [&] { InModal(headless::ChooseFile(folder_.Path("song.bms")), 0); },
         {kRunning, kRunning, kRunning, kRunning, kRunning}},
        {"another key", [] { Key('A'); }, {kSame, kSame, kSame, kSame, kSame}},
    };
    for (const Event& event : events) {
        for (const State from : {kIdle, kRunning, kPaused, kHeld, kEnded}) CheckCell(event, from, chart_);
    }
}

TEST_F(StateTest, TheChartsEnd) {
    for (const State from : {kRunning, kHeld}) {
        ASSERT_NO_FATAL_FAILURE(Enter(from, chart_));
        Snapshot wanted;
        RunTo(test::kChartEnd);
        wanted.state = from == kRunning ? "Ended" : "Paused";
        wanted.startTime = wanted.now = g_dwNowTime;
        wanted.seekTime = 0;
        EXPECT_EQ(Snapshot(), wanted);  // the last sounds ring out
    }
}

TEST_F(StateTest, TheClockOfAPauseIsExactAcrossItsWrap) {
    constexpr uint64_t kWrap = uint64_t{1} << 32;
    // The second pause begins when the clock shows 0, and can be ended all the same.
    for (const uint64_t start : {kWrap - 10'000, kWrap - 7'000}) {
        Fresh();
        headless::SetClock(start * kMs);
        ASSERT_EQ(StartUp(chart_.c_str(), -1, -1), START_PLAY);
        Key(VK_RETURN);
        EXPECT_EQ(g_dwStartTime, static_cast<uint32_t>(start));
        RunTo(7'000);
        Key(VK_SPACE);
        EXPECT_EQ(test::StateName(), "Paused");
        RunTo(5'000);
        Key(VK_SPACE);
        EXPECT_EQ(test::StateName(), "Running");
        EXPECT_NEAR(g_dwStartTime, static_cast<uint32_t>(start + 5'000), start == kWrap - 7'000 ? 1 : 0);
    }
}

}  // namespace
