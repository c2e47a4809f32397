#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <utility>

#include "host/headless/internal.h"

namespace headless {
namespace {

constexpr uint64_t kMillisecond = 1'000'000;
constexpr uint64_t kCloseEvery = 1000;  // ms
constexpr int kMaxCloses = 10;

struct State {
    std::deque<Step> script;  // sorted by time
    std::deque<host::Event> events;
    std::vector<std::string> faults;
    uint64_t end = kDefaultEnd;
    uint64_t next_close = kDefaultEnd;
    int closes = 0;
};
State g_script;

[[maybe_unused]] const bool kHooked = (OnReset([] { g_script = State(); }), true);

Action EventAction(host::Event event) {
    Action action;
    action.event = std::move(event);
    return action;
}

Action Simple(ActionKind kind) {
    Action action;
    action.kind = kind;
    return action;
}

void Answer(ModalKind kind, const char* name, const Action& action) {
    Modal* modal = FindModal(kind);
    if (!modal) {
        AddFault(std::string("an answer without a ") + name);
        return;
    }
    modal->answered = true;
    modal->path = action.text;
    modal->id = action.id;
}

void Perform(const Action& action) {
    switch (action.kind) {
        case ActionKind::kEvent:
            if (InModal() && action.event.kind != host::EventKind::kPosted)
                InputToModal(action.event);
            else
                g_script.events.push_back(action.event);
            break;
        case ActionKind::kMoveWindow:
            MoveTo(action.x, action.y);
            break;
        case ActionKind::kResize:
            ResizeTo(action.x, action.y);
            break;
        case ActionKind::kAnswerBox:
            Answer(ModalKind::kBox, "box", action);
            break;
        case ActionKind::kAnswerFile:
            Answer(ModalKind::kFile, "file dialog", action);
            break;
        case ActionKind::kAnswerMenu:
            Answer(ModalKind::kMenu, "menu", action);
            break;
        case ActionKind::kCall:
            action.call();
            break;
    }
}

// A dialog takes its actions one by one, because those after its answer are not for it.
void PerformDue() {
    if (InModal()) return;
    while (!g_script.script.empty() && g_script.script.front().ms <= Now()) {
        const Action action = std::move(g_script.script.front().action);
        g_script.script.pop_front();
        Perform(action);
    }
}

void CloseAtEnd() {
    if (Now() < g_script.next_close) return;
    if (++g_script.closes > kMaxCloses) {
        std::fprintf(stderr, "headless host: the program does not end\n");
        std::abort();
    }
    g_script.next_close = Now() + kCloseEvery;
    host::Event event;
    event.kind = host::EventKind::kClose;
    g_script.events.push_back(event);
}

}  // namespace

uint64_t Now() {
    return Clock() < kClockOrigin ? 0 : (Clock() - kClockOrigin) / kMillisecond;
}

Action Key(int key) {
    host::Event event;
    event.kind = host::EventKind::kKeyDown;
    event.key = key;
    return EventAction(event);
}

Action DoubleClick(int x, int y) {
    host::Event event;
    event.kind = host::EventKind::kDoubleClick;
    event.x = x;
    event.y = y;
    return EventAction(event);
}

Action WantMenu(int x, int y) {
    host::Event event;
    event.kind = host::EventKind::kMenu;
    event.x = x;
    event.y = y;
    return EventAction(event);
}

Action Close() {
    host::Event event;
    event.kind = host::EventKind::kClose;
    return EventAction(event);
}

Action Drop(const std::string& path) {
    host::Event event;
    event.kind = host::EventKind::kDrop;
    event.text = path;
    return EventAction(event);
}

Action Remote(uint32_t message, int64_t wparam, int64_t lparam) {
    host::Event event;
    event.kind = host::EventKind::kPosted;
    event.message = message;
    event.wparam = wparam;
    event.lparam = lparam;
    return EventAction(event);
}

Action MoveWindow(int x, int y) {
    Action action = Simple(ActionKind::kMoveWindow);
    action.x = x;
    action.y = y;
    return action;
}

Action ResizeWindow(int width, int height) {
    Action action = Simple(ActionKind::kResize);
    action.x = width;
    action.y = height;
    return action;
}

Action AnswerBox() {
    return Simple(ActionKind::kAnswerBox);
}

Action ChooseFile(const std::string& path) {
    Action action = Simple(ActionKind::kAnswerFile);
    action.text = path;
    return action;
}

Action CancelFile() {
    return ChooseFile("");
}

Action ChooseMenu(int id) {
    Action action = Simple(ActionKind::kAnswerMenu);
    action.id = id;
    return action;
}

Action DismissMenu() {
    return ChooseMenu(0);
}

Action Call(std::function<void()> call) {
    Action action = Simple(ActionKind::kCall);
    action.call = std::move(call);
    return action;
}

void At(uint64_t ms, Action action) {
    auto& script = g_script.script;
    const auto later = std::upper_bound(script.begin(), script.end(), ms,
                                        [](uint64_t time, const Step& step) { return time < step.ms; });
    script.insert(later, {ms, std::move(action)});
}

void AddScript(const Script& script) {
    for (const Step& step : script) At(step.ms, step.action);
}

size_t ActionsLeft() {
    return g_script.script.size();
}

void EndAt(uint64_t ms) {
    g_script.end = g_script.next_close = ms;
}

bool EndReached() {
    return g_script.closes > 0;
}

const std::vector<std::string>& Faults() {
    return g_script.faults;
}

void AddFault(const std::string& what) {
    g_script.faults.push_back(what + " at " + std::to_string(Now()) + " ms");
}

bool TakeNextAction() {
    if (g_script.script.empty() || g_script.script.front().ms > g_script.end) return false;
    const Step step = std::move(g_script.script.front());
    g_script.script.pop_front();
    if (step.ms > Now()) SetClock(kClockOrigin + step.ms * kMillisecond);
    Perform(step.action);
    return true;
}

}  // namespace headless

namespace host {

bool PollEvent(Event* event) {
    headless::Pump(nullptr);
    headless::PerformDue();
    headless::CloseAtEnd();
    auto& events = headless::g_script.events;
    if (events.empty()) return false;
    *event = std::move(events.front());
    events.pop_front();
    return true;
}

void WaitEvent(int milliseconds) {
    headless::PerformDue();
    const auto& state = headless::g_script;
    if (!state.events.empty() || milliseconds <= 0) return;
    uint64_t until = headless::Now() + static_cast<uint64_t>(milliseconds);
    until = std::min(until, state.next_close);
    if (!state.script.empty()) until = std::min(until, state.script.front().ms);
    const uint64_t target = headless::kClockOrigin + until * headless::kMillisecond;
    if (target > headless::Clock()) headless::SetClock(target);
}

}  // namespace host
