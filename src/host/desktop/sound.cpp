// Sound output through SDL's audio subsystem, or a silent device where that has none.
#include <algorithm>
#include <array>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <string>
#include <system_error>
#include <thread>

#include "host/desktop/desktop.h"
#include "host/desktop/drift_tracker.h"
#include "host/desktop/sdl.h"
#include "host/host.h"

namespace {

// Frames per block: 8.7 ms at 44,100 Hz, which gives about 17 ms from a start to the output of a sound
// server. With 256 frames a server underruns now and then while all processors are busy.
constexpr int kFrames = 384;

// How long a device may wait for the first picture.
constexpr std::chrono::milliseconds kPictureFirst(10);

// How often an open device is asked whether it is still there, and a lost one is tried again.
constexpr std::chrono::milliseconds kLookAgain(500);
constexpr std::chrono::hours kForEver(100000);

// One opening of the output. Its thread opens the device, waits for the stop and closes the device: a driver
// may take for ever over either, and nothing else waits for it.
struct Output {
    Output(int rate_, host::MixCallback callback_, void* user_)
        : rate(rate_), callback(callback_), user(user_), clock(rate_, kFrames) {}

    const int rate;
    const host::MixCallback callback;
    void* const user;
    host::DriftTracker clock;          // on SDL's thread while a device is open
    std::shared_ptr<Output> previous;  // closes first: SDL is for one thread at a time
    const host::desktop::Sdl* sdl = nullptr;
    SDL_AudioDeviceID device = 0;

    std::mutex lock;  // guards what follows; held while a block is mixed
    std::condition_variable changed;
    bool stop = false, closed = false, asked = false;
};

// Never destroyed: its thread may outlive main.
std::shared_ptr<Output>& g_output = *new std::shared_ptr<Output>;

// Loading SDL and its forty libraries at the same time would delay the first picture by a quarter: both need
// the memory map and the loader's lock, and on a small machine they take the processors from the X server.
struct FirstPicture {
    std::mutex lock;
    std::condition_variable changed;
    bool shown = false;
};
FirstPicture& g_first = *new FirstPicture;

void AwaitFirstPicture() {
    std::unique_lock<std::mutex> hold(g_first.lock);
    g_first.changed.wait_for(hold, kPictureFirst, [] { return g_first.shown; });
}

void Pause(uint64_t nanoseconds) {
    std::this_thread::sleep_for(std::chrono::nanoseconds(nanoseconds));
}

// False once the output has been stopped.
bool Mix(Output* output, float* out, int frames, uint64_t time) {
    const std::lock_guard<std::mutex> hold(output->lock);
    if (!output->asked) output->changed.notify_all();
    output->asked = true;
    if (!output->stop) output->callback(output->user, out, frames, time);
    return !output->stop;
}

// Runs on SDL's thread, always with the size of one block.
void Fill(void* user, Uint8* bytes, int size) {
    auto& output = *static_cast<Output*>(user);
    const host::DriftTracker::Block block = output.clock.Next(host::Nanoseconds());
    if (block.wait > 0) Pause(block.wait);
    const int frames = size / static_cast<int>(2 * sizeof(float));
    if (!block.silent && Mix(&output, reinterpret_cast<float*>(bytes), frames, block.time)) return;
    std::memset(bytes, 0, static_cast<size_t>(size));
}

// By default SDL's file driver sleeps after each block, so that on a busy machine it falls behind for good.
// The drift tracker already paces it.
void HurryFileDriver() {
    const char* driver = std::getenv("SDL_AUDIODRIVER");
    if (driver != nullptr && std::strcmp(driver, "disk") == 0) setenv("SDL_DISKAUDIODELAY", "0", 0);
}

bool OpenDevice(Output* output) {
    const host::desktop::Sdl* sdl = output->sdl = host::desktop::LoadSdl();
    if (sdl == nullptr) return false;
    host::desktop::QuietAlsa();
    sdl->SetMainReady();
    sdl->SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1");
    sdl->SetHint(SDL_HINT_AUDIO_DEVICE_APP_NAME, "Lumetra");
    if (sdl->InitSubSystem(SDL_INIT_AUDIO) != 0) return false;
    SDL_AudioSpec want = {};
    want.freq = output->rate;
    want.format = AUDIO_F32SYS;
    want.channels = 2;
    want.samples = kFrames;
    want.callback = Fill;
    want.userdata = output;
    output->device = sdl->OpenAudioDevice(nullptr, 0, &want, nullptr, 0);
    if (output->device == 0) {
        sdl->QuitSubSystem(SDL_INIT_AUDIO);
        return false;
    }
    const char* driver = sdl->GetCurrentAudioDriver();
    if (driver != nullptr && (std::strcmp(driver, "disk") == 0 || std::strcmp(driver, "dummy") == 0))
        output->clock.HoldToClock();
    sdl->PauseAudioDevice(output->device, 0);
    return true;
}

bool WaitUntil(Output* output, const bool Output::*flag, std::chrono::milliseconds limit) {
    std::unique_lock<std::mutex> hold(output->lock);
    return output->changed.wait_for(hold, limit, [=] { return output->*flag; });
}

void Set(Output* output, bool Output::*flag) {
    {
        const std::lock_guard<std::mutex> hold(output->lock);
        output->*flag = true;
    }
    output->changed.notify_all();
}

// Mixes at the pace of a device and drops the result, until the output is stopped or the limit has passed.
void RunSilent(Output* output, std::chrono::milliseconds limit) {
    std::array<float, 2 * kFrames> block;
    const double length = output->clock.Length();
    const auto start = static_cast<double>(host::Nanoseconds());
    const double end = start + 1e6 * static_cast<double>(limit.count());
    double time = start;
    do {
        time += length;
        const double ahead = time - static_cast<double>(host::Nanoseconds());
        if (ahead > 0) Pause(static_cast<uint64_t>(ahead));
    } while (Mix(output, block.data(), kFrames, static_cast<uint64_t>(time - length)) && time < end);
}

void Log(const std::string& line) {
    host::DebugText(line.data(), line.size());
}

// Uses the open device and closes it. True when it was lost: unplugged, or its sound server has ended.
bool UseDevice(Output* output) {
    bool lost = false, stop = false;
    while (!stop && !lost) {
        stop = WaitUntil(output, &Output::stop, kLookAgain);
        lost = output->sdl->GetAudioDeviceStatus(output->device) == SDL_AUDIO_STOPPED;
    }
    output->sdl->CloseAudioDevice(output->device);
    output->sdl->QuitSubSystem(SDL_INIT_AUDIO);
    return !stop;
}

// Mixes silently until the device can be opened again; false when the output was stopped before.
bool AwaitDevice(Output* output) {
    do {
        RunSilent(output, kLookAgain);
        if (WaitUntil(output, &Output::stop, std::chrono::milliseconds(0))) return false;
        output->clock = host::DriftTracker(output->rate, kFrames);
    } while (!OpenDevice(output));
    return true;
}

void RunDevice(Output* output) {
    if (!OpenDevice(output)) {
        const std::string why = output->sdl ? output->sdl->GetError() : "SDL is not installed";
        Log("No sound device (" + why + "): playing silently\n");
        return RunSilent(output, kForEver);
    }
    while (UseDevice(output)) {
        Log("The sound device is lost: playing silently until it returns\n");
        if (!AwaitDevice(output)) return;
        Log("The sound device is back\n");
    }
}

// Opening a device takes longer than the rest of the start-up, so it has its own thread. A sound that is
// started meanwhile is heard from where it would be by the time the device runs.
void Run(const std::shared_ptr<Output>& output) {
    while (output->previous && !WaitUntil(output->previous.get(), &Output::closed, std::chrono::hours(1))) {
    }
    output->previous = nullptr;
    AwaitFirstPicture();
    if (!WaitUntil(output.get(), &Output::stop, std::chrono::milliseconds(0))) RunDevice(output.get());
    Set(output.get(), &Output::closed);
}

}  // namespace

namespace host {

bool OpenSound(int rate, MixCallback callback, void* user) {
    if ((g_output && !g_output->stop) || rate <= 0) return false;
    HurryFileDriver();  // here, because changing the environment is not thread-safe
    host::desktop::StartNoSessionBus();
    auto output = std::make_shared<Output>(rate, callback, user);
    output->previous = g_output;
    try {
        std::thread(Run, output).detach();
    } catch (const std::system_error&) {
        return false;
    }
    g_output = std::move(output);
    return true;
}

void CloseSound() {
    if (g_output) Set(g_output.get(), &Output::stop);
}

bool SoundIsPending() {
    return g_output && !WaitUntil(g_output.get(), &Output::asked, std::chrono::milliseconds(0));
}

void AwaitSound(int milliseconds) {
    if (g_output) WaitUntil(g_output.get(), &Output::asked, std::chrono::milliseconds(milliseconds));
}

void desktop::PictureWasShown() {
    {
        const std::lock_guard<std::mutex> hold(g_first.lock);
        if (g_first.shown) return;
        g_first.shown = true;
    }
    g_first.changed.notify_all();
}

bool desktop::SoundHasClosed(int milliseconds) {
    return !g_output || WaitUntil(g_output.get(), &Output::closed, std::chrono::milliseconds(milliseconds));
}

}  // namespace host
