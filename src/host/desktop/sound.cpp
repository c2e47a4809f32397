// Sound output through SDL's audio subsystem, or a silent device where that has none.
#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <system_error>
#include <thread>

#include "host/desktop/drift_tracker.h"
#include "host/desktop/sdl.h"
#include "host/host.h"

namespace {

// Frames per block: 8.7 ms at 44,100 Hz, which gives about 17 ms from a start to the output of a sound
// server. With 256 frames a server underruns now and then while all processors are busy.
constexpr int kFrames = 384;

struct Output {
    Output(int rate_, host::MixCallback callback_, void* user_)
        : rate(rate_), callback(callback_), user(user_), clock(rate_, kFrames) {}

    const int rate;
    const host::MixCallback callback;
    void* const user;
    host::DriftTracker clock;
    const host::desktop::Sdl* sdl = nullptr;
    SDL_AudioDeviceID device = 0;
    std::atomic<bool> stop = false;
    std::thread opener;
};

Output* g_output = nullptr;  // never destroyed when the process ends without closing it

void Pause(uint64_t nanoseconds) {
    std::this_thread::sleep_for(std::chrono::nanoseconds(nanoseconds));
}

// Runs on SDL's thread, always with the size of one block.
void Fill(void* user, Uint8* bytes, int size) {
    auto& output = *static_cast<Output*>(user);
    const host::DriftTracker::Block block = output.clock.Next(host::Nanoseconds());
    if (block.silent || output.stop) {
        std::memset(bytes, 0, static_cast<size_t>(size));
        if (output.stop) Pause(static_cast<uint64_t>(output.clock.Length()));
        return;
    }
    if (block.wait > 0) Pause(block.wait);
    const int frames = size / static_cast<int>(2 * sizeof(float));
    output.callback(output.user, reinterpret_cast<float*>(bytes), frames, block.time);
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

// Mixes at the pace of a device and drops the result.
void RunSilent(Output* output) {
    std::array<float, 2 * kFrames> block;
    const double length = output->clock.Length();
    double time = static_cast<double>(host::Nanoseconds());
    for (; !output->stop; time += length) {
        const double ahead = time + length - static_cast<double>(host::Nanoseconds());
        if (ahead > 0) Pause(static_cast<uint64_t>(ahead));
        output->callback(output->user, block.data(), kFrames, static_cast<uint64_t>(time));
    }
}

// Opening a device takes longer than the rest of the start-up, so it has its own thread. A sound that is
// started meanwhile is heard from where it would be by the time the device runs.
void OpenAndRun(Output* output) {
    if (OpenDevice(output)) return;
    char line[256];
    const int length = std::snprintf(line, sizeof line, "No sound device (%s): playing silently\n",
                                     output->sdl ? output->sdl->GetError() : "SDL is not installed");
    host::DebugText(line, std::min(static_cast<size_t>(length), sizeof line - 1));
    RunSilent(output);
}

}  // namespace

namespace host {

bool OpenSound(int rate, MixCallback callback, void* user) {
    if (g_output != nullptr || rate <= 0) return false;
    HurryFileDriver();  // here, because changing the environment is not thread-safe
    host::desktop::StartNoSessionBus();
    auto output = std::make_unique<Output>(rate, callback, user);
    try {
        output->opener = std::thread(OpenAndRun, output.get());
    } catch (const std::system_error&) {
        return false;
    }
    g_output = output.release();
    return true;
}

void CloseSound() {
    if (g_output == nullptr) return;
    g_output->stop = true;
    g_output->opener.join();
    if (g_output->device != 0) {
        g_output->sdl->CloseAudioDevice(g_output->device);
        g_output->sdl->QuitSubSystem(SDL_INIT_AUDIO);
    }
    delete g_output;
    g_output = nullptr;
}

}  // namespace host
