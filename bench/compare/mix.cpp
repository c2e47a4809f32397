// mix VOICES full|half DIR: the time to mix looping sounds to 44.1 kHz 16-bit stereo in blocks of 1024
// frames, each voice at gain 1/16. half: every second voice plays a 22.05 kHz mono version of its sound.
// Prints the median of 9 batches.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "host/headless/headless.h"
#include "host/headless/sound.h"
#include "platform/sound/directsound.h"

namespace {

constexpr int kBlock = 1024, kRate = 44100;
constexpr LONG kSixteenth = -2408;  // hundredths of a decibel

[[noreturn]] void Die(const std::string& what) {
    std::fprintf(stderr, "error: %s\n", what.c_str());
    std::exit(1);
}

uint32_t Word(const std::vector<char>& bytes, size_t at, size_t size) {
    uint32_t n = 0;
    if (at + size > bytes.size()) Die("a file ends too early");
    std::memcpy(&n, bytes.data() + at, size);
    return n;
}

// Reads the samples of a 44.1 kHz 16-bit stereo file.
std::vector<int16_t> ReadWave(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> bytes((std::istreambuf_iterator<char>(file)), {});
    for (size_t at = 12; at + 8 <= bytes.size(); at += 8 + (Word(bytes, at + 4, 4) + 1) / 2 * 2) {
        if (std::memcmp(bytes.data() + at, "fmt ", 4) == 0) {
            if (Word(bytes, at + 10, 2) != 2 || Word(bytes, at + 12, 4) != kRate ||
                Word(bytes, at + 22, 2) != 16)
                Die("not 44.1 kHz stereo: " + path);
        }
        if (std::memcmp(bytes.data() + at, "data", 4) != 0) continue;
        std::vector<int16_t> samples(std::min<size_t>(Word(bytes, at + 4, 4), bytes.size() - at - 8) / 4 * 2);
        std::memcpy(samples.data(), bytes.data() + at + 8, samples.size() * 2);
        return samples;
    }
    Die("no samples: " + path);
}

std::vector<int16_t> HalveToMono(const std::vector<int16_t>& stereo) {
    std::vector<int16_t> mono(stereo.size() / 4);
    for (size_t k = 0; k < mono.size(); ++k)
        mono[k] = static_cast<int16_t>(
            (stereo[4 * k] + stereo[4 * k + 1] + stereo[4 * k + 2] + stereo[4 * k + 3]) / 4);
    return mono;
}

void StartLoop(IDirectSound* device, const std::vector<int16_t>& samples, bool half) {
    WAVEFORMATEX wfx = {WAVE_FORMAT_PCM, 2, kRate, kRate * 4, 4, 16, 0};
    if (half) wfx = {WAVE_FORMAT_PCM, 1, kRate / 2, kRate, 2, 16, 0};
    const DSBUFFERDESC desc = {sizeof desc, DSBCAPS_CTRLVOLUME, static_cast<DWORD>(samples.size() * 2), 0,
                               &wfx};
    IDirectSoundBuffer* buffer = nullptr;
    void* data = nullptr;
    DWORD bytes = 0;
    if (device->CreateSoundBuffer(&desc, &buffer, nullptr) != DS_OK ||
        buffer->Lock(0, 0, &data, &bytes, nullptr, nullptr, DSBLOCK_ENTIREBUFFER) != DS_OK)
        Die("no buffer");
    std::memcpy(data, samples.data(), samples.size() * 2);
    if (buffer->Unlock(data, bytes, nullptr, 0) != DS_OK || buffer->SetVolume(kSixteenth) != DS_OK ||
        buffer->Play(0, 0, DSBPLAY_LOOPING) != DS_OK)
        Die("a sound does not play");
}

void StartVoices(IDirectSound* device, int voices, bool half, const std::string& folder) {
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        if (entry.path().extension() == ".wav") files.push_back(entry.path().string());
    std::sort(files.begin(), files.end());
    if (files.empty()) Die("no .wav files in " + folder);
    for (size_t i = 0; i < static_cast<size_t>(voices); ++i) {
        std::vector<int16_t> samples = ReadWave(files[i % files.size()]);
        // So that the voices do not all start with an attack.
        const size_t turn = i * 7919 % (samples.size() / 2) * 2;
        std::rotate(samples.begin(), samples.begin() + static_cast<long>(turn), samples.end());
        const bool mono = half && i % 2 == 1;
        headless::SetClock(headless::kClockOrigin);  // otherwise repeated readings would move it
        StartLoop(device, mono ? HalveToMono(samples) : samples, mono);
    }
}

struct Loudness {
    double squares = 0;
    int peak = 0;
    std::vector<int16_t> samples;
};

// Converts to 16 bits, as for a device.
void Take(void* user, const float* in, int frames, int) {
    auto& out = static_cast<Loudness*>(user)->samples;
    out.resize(static_cast<size_t>(2 * frames));
    for (size_t i = 0; i < out.size(); ++i) out[i] = static_cast<int16_t>(in[i] * 32767.0f);
}

double Seconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

// Advances the clock by one block at a time.
class Renderer {
public:
    void Blocks(int count) {
        for (int i = 0; i < count; ++i) {
            m_frames += kBlock;
            headless::SetClock(headless::kClockOrigin + m_frames / kRate * 1'000'000'000 +
                               (m_frames % kRate * 1'000'000'000 + kRate - 1) / kRate);
        }
    }

private:
    uint64_t m_frames = 0;
};

void Result(const char* key, double value) {
    std::printf("RESULT\t%s\t%.12g\n", key, value);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) Die("usage: mix VOICES full|half DIR");
    const int voices = std::atoi(argv[1]);
    IDirectSound* device = nullptr;
    if (voices < 1 || DirectSoundCreate(nullptr, &device, nullptr) != DS_OK) Die("no device");
    Loudness heard;
    headless::SetSoundSink(Take, &heard);
    StartVoices(device, voices, std::strcmp(argv[2], "half") == 0, argv[3]);

    Renderer renderer;
    constexpr int kFirstSecond = 44;
    for (int b = 0; b < kFirstSecond; ++b) {
        renderer.Blocks(1);
        for (const int16_t x : heard.samples) {
            heard.squares += double{1} * x * x;
            heard.peak = std::max(heard.peak, std::abs(int{x}));
        }
    }
    int blocks = 1;  // raised until a batch takes 30 to 60 ms
    for (;; blocks *= 2) {
        const double begin = Seconds();
        renderer.Blocks(blocks);
        if (Seconds() - begin > 0.015) break;
    }
    blocks *= 2;
    std::vector<double> times;
    for (int k = 0; k < 9; ++k) {
        const double begin = Seconds();
        renderer.Blocks(blocks);
        times.push_back(Seconds() - begin);
    }
    std::sort(times.begin(), times.end());
    const double frames = double{kBlock} * blocks, time = times[times.size() / 2];
    Result("ns_per_voice_frame", time * 1e9 / (frames * voices));
    Result("realtime", frames / kRate / time);
    Result("rms_first_second", std::sqrt(heard.squares / (kFirstSecond * kBlock * 2)));
    Result("peak_first_second", heard.peak);
    return 0;
}
