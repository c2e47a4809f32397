#include "shell_test.h"

#include <functional>

#include "shell/startup.h"
#include "sound/dsbuffer.h"
#include "sound/dsound.h"

namespace {

enum State { kIdle, kRunning, kPaused, kHeld, kEnded, kSame };
constexpr const char* kNames[] = {"Idle", "Running", "Paused", "Held", "Ended"};

constexpr uint64_t kMs = 1'000'000;

struct Snapshot {
    int playing, paused;
    uint32_t pauseTime, startTime, now;
    int32_t seekTime;
    int sounding, wasPlaying;
    bool operator==(const Snapshot&) const = default;
};

Snapshot Later(Snapshot s, uint32_t now) {
    s.now = now;
    return s;
}

CDSBuffer* Sound() {
    return g_pDSound->m_pSlot[1];
}

Snapshot Take() {
    return {g_bPlaying,    g_bPaused,    g_dwPauseTime,        g_dwStartTime,
            timeGetTime(), g_dwSeekTime, Sound()->IsPlaying(), Sound()->m_bWasPlaying};
}

State StateOf(const Snapshot& s) {
    if (s.playing && !s.paused && !s.pauseTime) return kRunning;
    if (!s.playing && s.paused && s.pauseTime) return kPaused;
    if (!s.playing && !s.paused && s.pauseTime) return kHeld;
    if (s.playing && s.paused && !s.pauseTime) return kEnded;
    if (!s.playing && s.paused && !s.pauseTime) return kIdle;
    return kSame;  // none of the five
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

void ExpectPause(const Snapshot& before, const Snapshot& after, const std::string& where) {
    EXPECT_EQ(after.pauseTime, before.now) << where;
    EXPECT_EQ(after.startTime, before.startTime) << where;
    EXPECT_EQ(after.sounding, 0) << where;
    EXPECT_EQ(after.wasPlaying, 1) << where;
}

void ExpectResume(const Snapshot& before, const Snapshot& after, const std::string& where) {
    const uint32_t pausedAt = before.pauseTime ? before.pauseTime : before.now;
    EXPECT_EQ(after.startTime, before.startTime + (after.now - pausedAt)) << where;
    EXPECT_EQ(after.seekTime, before.seekTime) << where;
    EXPECT_EQ(after.sounding, 1) << where;
    EXPECT_EQ(after.wasPlaying, 0) << where;
}

void ExpectRestart(const Snapshot& before, const Snapshot& after, const std::string& where) {
    EXPECT_EQ(after.startTime, after.now) << where;
    EXPECT_EQ(after.seekTime, g_nStartMeasure < 0 ? 0 : 999 + 2000 * g_nStartMeasure) << where;
    EXPECT_EQ(after.sounding, 0) << where;
    EXPECT_EQ(after.wasPlaying, 0) << where;
}

void CheckCell(const Event& event, State from, const std::string& chart) {
    const std::string where = std::string(event.name) + " in " + kNames[from];
    ASSERT_NO_FATAL_FAILURE(Enter(from, chart)) << where;
    const Snapshot before = Take();
    ASSERT_EQ(StateOf(before), from) << where;
    event.act();
    const Snapshot after = Take();
    const State to = event.to[from];
    EXPECT_EQ(StateOf(after), to == kSame ? from : to) << where;
    if (to == kSame) {
        EXPECT_EQ(after, Later(before, after.now)) << where;
    } else if (event.to[kIdle] == kRunning) {
        ExpectRestart(before, after, where);
    } else if (to == kRunning) {
        ExpectResume(before, after, where);
    } else {
        ExpectPause(before, after, where);
    }
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
        const Snapshot before = Take();
        RunTo(test::kChartEnd);
        const Snapshot after = Take();
        EXPECT_EQ(StateOf(after), from == kRunning ? kEnded : kPaused);
        EXPECT_EQ(after.startTime, after.now);
        EXPECT_EQ(g_dwNowTime, after.now);
        EXPECT_EQ(after.seekTime, 0);
        EXPECT_EQ(after.pauseTime, before.pauseTime);
        EXPECT_EQ(after.sounding, before.sounding);  // the last sounds ring out
        EXPECT_EQ(after.wasPlaying, before.wasPlaying);
    }
}

TEST_F(StateTest, TheClockOfAPauseIsExactAcrossItsWrap) {
    Fresh();
    constexpr uint64_t kWrap = uint64_t{1} << 32;
    headless::SetClock((kWrap - 10'000) * kMs);
    ASSERT_EQ(StartUp(chart_.c_str(), -1, -1), START_PLAY);
    Key(VK_RETURN);
    EXPECT_EQ(g_dwStartTime, static_cast<uint32_t>(kWrap - 10'000));
    RunTo(7'000);
    Key(VK_SPACE);
    RunTo(5'000);
    Key(VK_SPACE);
    EXPECT_EQ(g_dwStartTime, static_cast<uint32_t>(kWrap - 5'000));

    // A pause that begins when the clock shows 0 can be ended too.
    Fresh();
    headless::SetClock((kWrap - 5'000) * kMs);
    ASSERT_EQ(StartUp(chart_.c_str(), -1, -1), START_PLAY);
    Key(VK_RETURN);
    RunTo(5'000);
    ASSERT_EQ(timeGetTime(), 0u);
    Key(VK_SPACE);
    EXPECT_EQ(StateOf(Take()), kPaused);
    Key(VK_SPACE);
    EXPECT_EQ(StateOf(Take()), kRunning);
}

}  // namespace
