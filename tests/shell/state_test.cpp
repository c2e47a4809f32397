#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "fresh.h"
#include "host/headless/headless.h"
#include "playback/layout.h"
#include "playback/playback.h"
#include "shell/shell.h"
#include "shell/startup.h"
#include "small_chart.h"
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

void RunTo(uint64_t milliseconds) {
    headless::AdvanceClock(milliseconds * kMs);
    PlayFrame();
}

// A fresh start, then the way into the state as a user would take it. The sound has begun in all but Idle.
void Enter(State state, const std::string& chart) {
    test::FreshProgram();
    ASSERT_EQ(StartUp(chart.c_str(), -1, -1), START_PLAY);
    if (state == kIdle) return;
    Key(VK_RETURN);
    RunTo(1500);
    ASSERT_EQ(Sound()->IsPlaying(), 1);
    if (state == kPaused) Key(VK_SPACE);
    if (state == kHeld) Tell(WM_NCLBUTTONDOWN);
    if (state == kEnded) RunTo(60'000 - 1500 - 5000);
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
    EXPECT_EQ(after.startTime, before.startTime + (before.now - before.pauseTime)) << where;
    EXPECT_EQ(after.seekTime, before.seekTime) << where;
    EXPECT_EQ(after.sounding, 1) << where;
    EXPECT_EQ(after.wasPlaying, 0) << where;
}

void ExpectRestart(const Snapshot& before, const Snapshot& after, const std::string& where) {
    EXPECT_EQ(after.startTime, before.now) << where;
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
    const bool restart = to == kRunning &&
                         (from == kIdle || from == kRunning || from == kEnded || event.to[kIdle] == kRunning);
    if (to == kSame) {
        EXPECT_EQ(after, before) << where;
    } else if (restart) {
        ExpectRestart(before, after, where);
    } else if (to == kRunning) {
        ExpectResume(before, after, where);
    } else {
        ExpectPause(before, after, where);
    }
}

TEST(State, EveryEventInEveryState) {
    test::TempFolder folder;
    const std::string chart = test::WriteChart(folder);
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
        {"another key", [] { Key('A'); }, {kSame, kSame, kSame, kSame, kSame}},
    };
    for (const Event& event : events) {
        for (const State from : {kIdle, kRunning, kPaused, kHeld, kEnded}) CheckCell(event, from, chart);
    }
}

}  // namespace
