// Benchmarks the cost of a start for the caller, and of the mixer's conversions per voice and frame.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "host/headless/headless.h"
#include "host/headless/sound.h"
#include "platform/sound/directsound.h"

namespace {

constexpr int kBlock = 1024;

IDirectSound* Device() {
    static IDirectSound* device = nullptr;
    if (device == nullptr) DirectSoundCreate(nullptr, &device, nullptr);
    headless::Reset();
    headless::SetSoundSink([](void*, const float*, int, int) {}, nullptr);
    return device;
}

IDirectSoundBuffer* MakeSound(int channels, int rate, DWORD frames) {
    const auto align = static_cast<WORD>(channels * 2);
    const auto hertz = static_cast<DWORD>(rate);
    const WAVEFORMATEX wfx = {
        WAVE_FORMAT_PCM, static_cast<WORD>(channels), hertz, hertz * align, align, 16, 0};
    const DSBUFFERDESC desc = {sizeof desc, DSBCAPS_CTRLVOLUME, frames * align, 0, &wfx};
    IDirectSoundBuffer* buffer = nullptr;
    Device()->CreateSoundBuffer(&desc, &buffer, nullptr);
    void* data = nullptr;
    DWORD bytes = 0;
    buffer->Lock(0, 0, &data, &bytes, nullptr, nullptr, DSBLOCK_ENTIREBUFFER);
    for (DWORD i = 0; i < bytes / 2; ++i) {
        const auto x = static_cast<int16_t>(i * 7919 % 1001);
        std::memcpy(static_cast<char*>(data) + 2 * i, &x, 2);
    }
    buffer->Unlock(data, bytes, nullptr, 0);
    return buffer;
}

void MoveByBlock(uint64_t* frames) {
    *frames += kBlock;
    headless::SetClock(headless::kClockOrigin + *frames / 44100 * 1'000'000'000 +
                       (*frames % 44100 * 1'000'000'000 + 44099) / 44100);
}

// The four calls with which the frame restarts a sound that is still playing.
void Restart(benchmark::State& state) {
    IDirectSoundBuffer* sound = MakeSound(2, 44100, 44100 * 5);
    sound->Play(0, 0, 0);
    uint64_t frames = 0;
    int calls = 0;
    for (auto _ : state) {
        DWORD status = 0;
        sound->GetStatus(&status);
        sound->Stop();
        sound->SetCurrentPosition(0);
        benchmark::DoNotOptimize(sound->Play(0, 0, 0));
        if (++calls % 256 == 0) {
            state.PauseTiming();
            MoveByBlock(&frames);
            state.ResumeTiming();
        }
    }
    sound->Release();
}
BENCHMARK(Restart);

// Voices that cannot share a conversion, because each is at a different fraction (as far as its rate has that
// many).
void Convert(benchmark::State& state) {
    const int channels = static_cast<int>(state.range(0)), rate = static_cast<int>(state.range(1));
    const auto voices = static_cast<size_t>(state.range(2));
    std::vector<IDirectSoundBuffer*> sounds;
    uint64_t frames = 0;
    for (size_t v = 0; v < voices; ++v) {
        sounds.push_back(MakeSound(channels, rate, static_cast<DWORD>(rate)));
        sounds.back()->SetVolume(-3000);
    }
    for (size_t v = 0; v < voices; ++v) {
        headless::AdvanceClock(1'000'000);
        sounds[v]->Play(0, 0, DSBPLAY_LOOPING);
    }
    frames = static_cast<uint64_t>(headless::SoundFrame(headless::Clock())) + 1;
    for (auto _ : state) MoveByBlock(&frames);
    state.counters["ns/voice/frame"] =
        benchmark::Counter(static_cast<double>(kBlock) * static_cast<double>(voices) * 1e-9,
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
    for (IDirectSoundBuffer* sound : sounds) sound->Release();
}
BENCHMARK(Convert)
    ->ArgNames({"channels", "rate", "voices"})
    ->Args({2, 44100, 1})
    ->Args({2, 44100, 64})
    ->Args({1, 22050, 1})
    ->Args({1, 22050, 64})
    ->Args({2, 22050, 1})
    ->Args({1, 11025, 1})
    ->Args({1, 8000, 1})
    ->Args({2, 48000, 1})
    ->Args({2, 48000, 64})
    ->Args({2, 96000, 1});

}  // namespace

BENCHMARK_MAIN();
