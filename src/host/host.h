// The seam to the machine. Two bodies exist, chosen when a program is linked: host/desktop for a user's
// screen and speakers, host/headless for tests and tools, with a virtual clock, scripted input and captured
// output.
//
// Only platform/ calls this. What can be computed belongs above the seam; texts here are UTF-8, coordinates
// are logical desktop pixels with the origin at the top left of the bounding box of all monitors.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace host {

// ---- the window: one for each process ----

constexpr int kDefaultPlace = INT32_MIN;

struct Rect {  // right and bottom exclusive
    int left, top, right, bottom;
};

struct Icon {
    int width, height;
    std::vector<uint32_t> pixels;  // 0xAARRGGBB, top row first
};

struct WindowRequest {
    int x, y;           // outer corner; kDefaultPlace in both for the window manager's choice
    int width, height;  // client area
    bool topmost;
    std::string title;
    Icon icon;  // may be empty
};

struct WindowPlace {
    Rect outer;   // with the frame
    Rect client;  // inside it
};

// Whether a window could be opened at all. Asks the machine afresh and keeps nothing.
bool HasDisplay();
bool OpenWindow(const WindowRequest& request);  // shown at once, black; false when there is no display
void CloseWindow();
WindowPlace GetWindowPlace();
void PlaceWindow(int x, int y, int width, int height);  // outer corner, client size
void KeepOnTop();                                       // cheap when it already is
void SetTitle(const std::string& title);
void Minimize();
void GetDesktopSize(int* width, int* height);

// Shows pixels 0x00RRGGBB at a place of the client area; what lies outside it is cut. stride: pixels from row
// to row.
void ShowPixels(int x, int y, int width, int height, const uint32_t* pixels, int stride);

// ---- input ----

enum class EventKind {
    kNone,
    kKeyDown,  // key: virtual-key code (13 Enter, 27 Esc, 32 Space, others as they come); repeats included
    kDoubleClick,  // left button, client area; x, y in it
    kMenu,         // the system menu is wanted, by mouse or key; x, y desktop pixels
    kClose,        // the window manager's close
    kDrop,         // text: a file's path in this machine's form
    kPosted,       // from another copy: message, wparam, lparam
};

struct Event {
    EventKind kind = EventKind::kNone;
    int key = 0;
    int x = 0, y = 0;
    std::string text;
    uint32_t message = 0;
    int64_t wparam = 0, lparam = 0;
};

bool PollEvent(Event* event);      // the next that has come, in order; never waits
void WaitEvent(int milliseconds);  // until one has come or that time has passed

// ---- modal dialogs ----

// Each runs a loop until it is answered, and calls the pump at least whenever an event of another copy has
// come. The pump delivers what waits and gives false when the dialog must end at once, as if cancelled.
using Pump = bool (*)();

enum class BoxIcon { kNone, kWarning, kInformation };

void ShowBox(const std::string& text, const std::string& caption, BoxIcon icon, Pump pump);

struct FileFilter {
    std::string name;      // "BMS(BME)File(*.bms|*.bme)"
    std::string patterns;  // "*.bms;*.bme"
};

// The chosen file's path in this machine's form; empty when cancelled. folder may be empty.
std::string ChooseFile(const std::string& title, const std::string& folder, const FileFilter& filter,
                       Pump pump);

struct MenuItem {
    int id;            // 0: a separator
    std::string text;  // `&` before the letter that chooses it
};

int PopupMenu(const std::vector<MenuItem>& items, int x, int y, Pump pump);  // the item's id, 0 for none

// ---- clock ----

uint64_t Nanoseconds();  // steady, from an origin of the host's own
void SleepMilliseconds(uint32_t milliseconds);

// ---- sound output ----

// Fills frames of interleaved float stereo. time: the clock reading that the first frame stands for; it
// advances by exactly frames / rate from block to block (a host smooths its device's clock), and everything
// that was started before the end of the block has been told to the mixer by then: that is the fixed delay of
// the output. May run on a thread of the host's own.
using MixCallback = void (*)(void* user, float* out, int frames, uint64_t time);

// False when no output can be had at all. A machine without a sound card gets a silent one at the right pace.
bool OpenSound(int rate, MixCallback callback, void* user);
void CloseSound();  // no callback runs after it returns

// ---- other running copies ----

struct Copy {
    uint64_t id;
    std::string class_name;
};

// From now on other copies find this one; messages wait in order until PollEvent takes them, also while
// nobody polls. Withdrawn by itself when the process ends, however it ends.
bool AnnounceCopy(const std::string& class_name);
void WithdrawCopy();
bool ListCopies(std::vector<Copy>* copies);  // without this process; needs no window and no display
// False when that copy is gone. Returns as soon as the message is in its queue.
bool PostToCopy(uint64_t id, uint32_t message, int64_t wparam, int64_t lparam);

// ---- text for a debugger ----

void DebugText(const char* bytes, size_t count);  // as they are

// ---- the end ----

void Shutdown();  // closes whatever is still open; for main, after the program has returned

}  // namespace host
