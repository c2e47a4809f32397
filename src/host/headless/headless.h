// The headless host's own interface: the script that goes in and the captures that come out.
//
// Nothing here waits for real time. The clock is virtual: it moves when the program sleeps or waits, when a
// modal dialog takes the script's next action, and a little when the program spins on it. So a run is the
// same each time, and takes no longer than its own work. Single-threaded. `ms` counts from kClockOrigin, the
// start of a run.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "host/host.h"

namespace headless {

// Back to the state of a fresh process: clock at kClockOrigin, no script, no captures, no window, no
// instances, default desktop, no failures asked for.
void Reset();

// ---- clock: moved by sleeping, by the script and by a reader that spins ----
constexpr uint64_t kClockOrigin = 1'000'000'000;  // ns
void SetClock(uint64_t nanoseconds);
void AdvanceClock(uint64_t nanoseconds);
uint64_t Clock();  // without counting as a reading
uint64_t Now();    // ms since the origin

// Called whenever the clock has moved forward, with its readings before and after; the sound output mixes in
// it. A hook stays for the whole process, also across Reset; adding it twice has no effect. It may read the
// clock but not move it.
using ClockHook = void (*)(uint64_t before, uint64_t now);
void OnClock(ClockHook hook);

// Asked by each sleep for the reading at which it ends, from now on; end: as the program asked. Null, as
// after Reset: sleeps last as asked.
using WakeHook = std::function<uint64_t(uint64_t now, uint64_t end)>;
void OnSleep(WakeHook hook);

// Called by Reset, so that other files of the host can reset their state. Kept like a clock hook.
using ResetHook = void (*)();
void OnReset(ResetHook hook);

// ---- script ----
//
// An action happens when the program first polls for events at or after its time, or inside a modal dialog. A
// dialog takes the actions in order, jumps the clock to their times and delivers messages after each, until
// one answers it. Keys answer too: Enter, Space and Esc close a box; Esc cancels the file dialog and the
// menu. Other input does not reach the program while a dialog is open, as on a desktop. When the script ends
// first, the dialog is dismissed and a fault is recorded. An answer goes to the innermost open dialog of its
// kind; without one it is a fault.
enum class ActionKind {
    kEvent,       // event, as PollEvent returns it: user input or a message of another instance
    kMoveWindow,  // the user moves the window's outer corner to x, y
    kResize,      // ... or resizes the client area to x, y
    kAnswerBox,
    kAnswerFile,  // text: the path chosen, in this machine's form; empty: cancelled
    kAnswerMenu,  // id; 0: dismissed
    kCall,        // call, to look at the program's state or change the host's
};

struct Action {
    ActionKind kind = ActionKind::kEvent;
    host::Event event;
    int x = 0, y = 0, id = 0;
    std::string text;
    std::function<void()> call;
};

Action Key(int key);  // 13 Enter, 27 Esc, 32 Space
Action DoubleClick(int x = 0, int y = 0);
Action WantMenu(int x = 0, int y = 0);  // right button, Menu key
Action Close();
Action Drop(const std::string& path);
Action Remote(uint32_t message, int64_t wparam = 0, int64_t lparam = 0);
Action MoveWindow(int x, int y);
Action ResizeWindow(int width, int height);
Action AnswerBox();
Action ChooseFile(const std::string& path);
Action CancelFile();
Action ChooseMenu(int id);
Action DismissMenu();
Action Call(std::function<void()> call);

struct Step {
    uint64_t ms;
    Action action;
};
using Script = std::vector<Step>;

void At(uint64_t ms, Action action);  // after what is already scheduled for that time
void AddScript(const Script& script);
size_t ActionsLeft();

// From this time on the host asks the program to close, once a second, so that no run goes on for ever. A
// program that ignores ten requests is aborted. Dialogs that are still open then are dismissed.
constexpr uint64_t kDefaultEnd = 120'000;  // ms
void EndAt(uint64_t ms);
bool EndReached();  // the host has asked at least once

// What did not follow the script: dialogs left unanswered, answers without a dialog. Empty in a good run.
const std::vector<std::string>& Faults();

// ---- captures ----

// A picture that was shown: a rectangle of the client area. Valid during the call only.
struct Frame {
    uint64_t time;  // ns, as Clock()
    int x, y, width, height;
    const uint32_t* pixels;  // 0x00RRGGBB
    int stride;
};
using FrameCallback = std::function<void(const Frame&)>;
void OnFrame(FrameCallback callback);  // called for each picture; null for none. Reset drops it
uint64_t FrameCount();

// What the client area shows, while KeepPicture is on (the default after Reset). Costs a copy per frame.
struct Picture {
    int width = 0, height = 0;
    std::vector<uint32_t> pixels;  // 0x00RRGGBB, top row first
};
void KeepPicture(bool keep);
const Picture& ShownPicture();

struct Box {
    uint64_t ms;
    std::string text, caption;
    host::BoxIcon icon;
    bool answered;  // by the script; false while it is open
};
const std::vector<Box>& Boxes();

struct FileDialog {
    uint64_t ms;
    std::string title, folder;
    host::FileFilter filter;
    bool answered;
    std::string answer;
    std::string name, extension;
};
const std::vector<FileDialog>& FileDialogs();

struct Menu {
    uint64_t ms;
    std::vector<host::MenuItem> items;
    int x, y;
    bool answered;
    int answer;
};
const std::vector<Menu>& Menus();

const std::vector<std::string>& Titles();  // all titles in order, the first one included
const std::string& Log();                  // text for the debugger, as one string

// ---- the window and its desktop ----

struct Window {
    bool open = false, topmost = false, minimized = false, hidden = false;
    host::Rect client{};
    host::Icon icon;
    int placed = 0;  // calls of host::PlaceWindow
    int raised = 0;  // calls of host::KeepOnTop
};
const Window& TheWindow();

struct Extents {
    int left = 0, top = 0, right = 0, bottom = 0;
};
void SetDesktop(int width, int height);      // 1280 by 1024 after Reset
void SetFrameExtents(const Extents& frame);  // for windows opened later; none after Reset
void SetDefaultPlace(int x, int y);          // of a window that asks for no place; 100, 100 after Reset

// ---- other instances ----

struct PostedMessage {
    uint64_t ms;
    uint64_t instance;
    uint32_t message;
    int64_t wparam, lparam;
};
void AddInstance(uint64_t id, const std::string& class_name);
void RemoveInstance(uint64_t id);
const std::vector<PostedMessage>&
PostedToInstances();                  // in order; without those to instances that did not exist
const std::string& AnnouncedClass();  // empty: not announced

// ---- the second channel: what a client sends and receives ----
void ReceiveLine(uint64_t client, const std::string& line);
struct SentLine {
    uint64_t client;
    std::string line;
};
const std::vector<SentLine>& SentLines();
bool HasLeftList();

// ---- files that are written ----
void WriteEvent(const std::string& path);  // of a file; reported when its folder is watched
const std::vector<std::string>& WatchedFolders();

// ---- failures ----

void FailOpenWindow(bool fail);
void FailListInstances(bool fail);
void FailWatch(bool fail);

}  // namespace headless
