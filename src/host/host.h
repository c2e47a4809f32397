// The seam to the machine. It has two implementations, chosen at link time: host/desktop for a user's screen
// and speakers, host/headless for tests and tools, with a virtual clock, scripted input and captured output.
//
// Only platform/ calls this. What can be computed belongs above the seam. Texts are UTF-8. Coordinates are
// logical desktop pixels; the origin is the top left corner of the bounding box of all monitors.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace host {

// ---- the window: one per process ----

constexpr int kDefaultPlace = INT32_MIN;

// Window systems keep places in 16 bits: whoever places a window clamps to this.
constexpr int ClampPlace(int64_t place) {
    constexpr int kMost = 32767;
    return place < -kMost ? -kMost : place > kMost ? kMost : static_cast<int>(place);
}

struct Rect {  // right and bottom exclusive
    int left, top, right, bottom;
};

struct Icon {
    int width, height;
    std::vector<uint32_t> pixels;  // 0xAARRGGBB, top row first
};

struct WindowRequest {
    int x, y;           // outer corner; kDefaultPlace in both lets the window manager choose
    int width, height;  // client area
    bool topmost;
    std::string title;
    Icon icon;  // may be empty
};

struct WindowPlace {
    Rect outer;   // with the frame
    Rect client;  // inside it
};

// Whether a window could be opened at all. Probes the machine each time and keeps no connection.
bool HasDisplay();
bool OpenWindow(const WindowRequest& request);  // shown at once, black; false when there is no display
void CloseWindow();
void HideWindow();  // from the screen; it stays open and keeps its place
WindowPlace GetWindowPlace();
void PlaceWindow(int x, int y, int width, int height);  // outer corner, client size
void KeepOnTop();                                       // cheap when it already is
void SetTitle(const std::string& title);
void Minimize();
void Unminimize();  // without the focus; nothing for a window that is not minimised
void GetDesktopSize(int* width, int* height);
std::vector<Rect> Screens();  // the monitors; none without a display
bool LastPlace(Rect* outer);  // of the window, also when it was hidden or closed; false when it never came
void LeaveFocus();            // the window that opens next does not take the focus, unless the environment
                              // says that the user has just asked for it
void EndLaunch();             // for a start that opens no window: whoever launched it need not wait for one

// Shows pixels 0x00RRGGBB at x, y of the client area, clipped to it. stride: pixels from row to row.
void ShowPixels(int x, int y, int width, int height, const uint32_t* pixels, int stride);

// ---- input ----

enum class EventKind {
    kNone,
    kKeyDown,  // key: virtual-key code (13 Enter, 27 Esc, 32 Space, others as they come); repeats included
    kDoubleClick,  // left button, client area; x, y in it
    kMenu,         // the user asks for the system menu, by mouse or key; x, y desktop pixels
    kClose,        // the window manager asks to close
    kDrop,         // text: a file's path in this machine's form
    kPosted,       // from another instance: message, wparam, lparam
};

struct Event {
    EventKind kind = EventKind::kNone;
    int key = 0;
    int x = 0, y = 0;
    std::string text;
    uint32_t message = 0;
    int64_t wparam = 0, lparam = 0;
};

bool PollEvent(Event* event);      // the next one, in arrival order; never waits
void WaitEvent(int milliseconds);  // until an event arrives or the time has passed

// ---- modal dialogs ----

// Each runs a loop until it is answered, and calls the pump at least whenever a message of another instance
// arrives. The pump delivers what is waiting; it returns false when the dialog must end at once, as if
// cancelled.
using Pump = bool (*)();

enum class BoxIcon { kNone, kWarning, kInformation };

void ShowBox(const std::string& text, const std::string& caption, BoxIcon icon, Pump pump);

struct FileFilter {
    std::string name;      // "BMS(BME)File(*.bms|*.bme)"
    std::string patterns;  // "*.bms;*.bme"
};

struct FileRequest {
    std::string title;
    std::string folder, name;  // where it opens, and the file there that is marked first; may be empty
    FileFilter filter;
    std::string extension;  // of a typed name without one, without the dot; may be empty
    Icon icon;              // of the program, for a dialog before its window; may be empty
};

// The chosen file's path in this machine's form; empty when cancelled.
std::string ChooseFile(const FileRequest& request, Pump pump);

struct MenuItem {
    int id;            // 0: a separator
    std::string text;  // `&` before the letter that chooses it
};

int PopupMenu(const std::vector<MenuItem>& items, int x, int y, Pump pump);  // the chosen id, 0 for none

enum class Modal { kNone, kBox, kFileDialog, kMenu };
Modal InnermostModal();
void CancelFileDialog();  // the innermost modal, when it is one

// ---- clock ----

uint64_t Nanoseconds();  // monotonic, from an arbitrary origin
void SleepMilliseconds(uint32_t milliseconds);

// ---- sound output ----

// Fills frames of interleaved float stereo. time: the clock reading that the first frame stands for. It
// advances by frames / rate from block to block, because a host smooths its device's clock. The callback runs
// only after the clock has passed the end of the block, so the mixer knows everything that starts in it: that
// is the fixed delay of the output. May run on a thread of the host.
using MixCallback = void (*)(void* user, float* out, int frames, uint64_t time);

// False when no output can be opened at all. A machine without a sound card gets a silent one at the right
// pace.
bool OpenSound(int rate, MixCallback callback, void* user);
// No callback runs after it returns. It waits for no driver; Shutdown gives the device a moment to close.
void CloseSound();
bool SoundIsPending();              // opened, and the device has not asked for its first sound yet
void AwaitSound(int milliseconds);  // until it has, at most so long

// ---- other instances: running programs of the same kind ----

struct Instance {
    uint64_t id;
    std::string class_name;
};

// Starts that happen at the same moment run one after the other: from here to the announcement, except while
// a first file dialog is open, other starts wait, but no longer than 200 ms. create: also where no instance
// runs.
void LockStart(bool create);
void UnlockStart();
void LeaveStartToChild();  // after a fork: the child alone holds the lock from now on

// From now on other instances can find this one. Their messages queue in arrival order until PollEvent takes
// them, also while nobody polls. The announcement ends with the process, however that ends.
bool AnnounceInstance(const std::string& class_name);
void WithdrawInstance();
bool ListInstances(std::vector<Instance>* instances);  // the others; needs no window and no display
// Takes no more quits: until then the instance leaves the list when one arrives, before the program ends.
void SetDeaf();
// Returns as soon as the message is in the queue of that instance, after a quit when it has left the list.
// False when it is gone or does not take the message; waits 200 ms at most, in all calls of the process
// together.
bool PostToInstance(uint64_t id, uint32_t message, int64_t wparam, int64_t lparam);
bool PostWasRefused();  // at least one of this process

// ---- the second channel: lines of text with answers, beside the messages ----

// Called on a thread of the host, one line at a time, without its end; at most 64 KiB.
using LineHandler = void (*)(uint64_t client, const std::string& line);
void ServeLines(LineHandler handler);  // before the announcement; from then on other processes can connect
// Any thread; never waits. False when that client is gone, such as one that does not read.
bool SendLine(uint64_t client, const std::string& line);
void LeaveList();  // no other process finds this one any more; who is connected stays so

// Called on the main thread where events are polled, with null, and whenever the title is set, with it: also
// at the beginning and the end of a load.
using PumpHook = void (*)(const std::string* title);
void OnPump(PumpHook hook);

// A connection to another instance.
class LineClient {
public:
    explicit LineClient(uint64_t id);
    LineClient(const LineClient&) = delete;
    LineClient& operator=(const LineClient&) = delete;
    ~LineClient();

    bool Write(const std::string& line);
    bool Read(std::string* line, int milliseconds);  // false when none came in that time or the other is gone
    bool IsOpen() const { return m_fd >= 0; }

private:
    void Close();

    int m_fd = -1;
    std::string m_in;
};

// ---- files that are written ----

// The folders whose files are watched from now on; what happened in those that were watched before is not
// lost. Empty: no more. False when this machine cannot watch, or not all of them, with the reason.
bool WatchFolders(const std::vector<std::string>& folders, std::string* problem);
// The next file in one of them that was closed after writing or was renamed to its name, as folder/name;
// never waits. An empty path: some were lost, any file may have been written.
bool TakeWritten(std::string* path);

// ---- text for a debugger ----

void DebugText(const char* bytes, size_t count);  // unchanged

// ---- the end ----

// Closes whatever is still open; main calls it after the program has returned. False when a sound driver
// hangs: then the process must end without its exit handlers, which could wait for that driver.
bool Shutdown();

}  // namespace host
