// Sound output through SDL's audio subsystem, and a silent device where that has none.
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

#include "host/desktop/block_clock.h"
#include "host/desktop/sdl.h"
#include "host/host.h"

namespace {

// Of a block: 8.7 ms at 44,100 Hz. With 256 a sound server runs dry now and then while all processors are
// busy; from a start to the output it takes about 17 ms there.
constexpr int kFrames = 384;

struct Output {
    Output(int rate_, host::MixCallback callback_, void* user_)
        : rate(rate_), callback(callback_), user(user_), clock(rate_, kFrames) {}

    const int rate;
    const host::MixCallback callback;
    void* const user;
    host::BlockClock clock;
    const host::desktop::Sdl* sdl = nullptr;
    SDL_AudioDeviceID device = 0;
    std::atomic<bool> stop = false;
    std::thread opener;
};

Output* g_output = nullptr;  // left alone at the end of a process that does not close it

void Pause(uint64_t nanoseconds) {
    std::this_thread::sleep_for(std::chrono::nanoseconds(nanoseconds));
}

// On SDL's thread. The size is always that of a block.
void Fill(void* user, Uint8* bytes, int size) {
    auto& output = *static_cast<Output*>(user);
    const host::BlockClock::Block block = output.clock.Next(host::Nanoseconds());
    if (block.silent || output.stop) {
        std::memset(bytes, 0, static_cast<size_t>(size));
        if (output.stop) Pause(static_cast<uint64_t>(output.clock.Length()));
        return;
    }
    if (block.wait > 0) Pause(block.wait);
    const int frames = size / static_cast<int>(2 * sizeof(float));
    output.callback(output.user, reinterpret_cast<float*>(bytes), frames, block.time);
}

// Left to itself SDL's file driver rests so long after each block that a busy machine makes it fall behind
// for good; the clock of the blocks is all the pace that it needs.
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

// Mixes as a device would ask for it, to nobody's ears.
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

// Looking for a device takes longer than the rest of the start-up, so it has a thread of its own; what is
// started meanwhile is heard from where it is when the device runs.
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
    HurryFileDriver();  // here, as the environment is not for threads
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
