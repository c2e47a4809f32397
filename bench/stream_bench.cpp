// Decode speed of IMA ADPCM through the converter, compared with the codec library alone, and the cost of
// servicing a stream.
#include <benchmark/benchmark.h>
#include <sndfile.h>
#include <unistd.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "sound/dsbuffer.h"
#include "sound/dsound.h"
#include "xa/encoder.h"

namespace {

constexpr int kRate = 44100, kSeconds = 30, kChannels = 2;

struct File {
    std::string path;
    ~File() { std::filesystem::remove(path); }
};

std::vector<int16_t> Tones() {
    std::vector<int16_t> samples(size_t{kRate} * kSeconds * kChannels);
    for (size_t i = 0; i < samples.size(); ++i) {
        const double t = static_cast<double>(i / kChannels) / kRate;
        samples[i] = static_cast<int16_t>(9000 * std::sin(2764.6 * t) + 4000 * std::sin(8293.8 * t));
    }
    return samples;
}

std::string Name(const char* what) {
    return (std::filesystem::temp_directory_path() /
            (std::string("lumetra-bench-") + what + std::to_string(getpid())))
        .string();
}

const std::string& WavFile(int subtype) {
    static File pcm{Name("pcm")}, ima{Name("ima")};
    File& file = subtype == SF_FORMAT_PCM_16 ? pcm : ima;
    if (!std::filesystem::exists(file.path)) {
        SF_INFO info = {0, kRate, kChannels, SF_FORMAT_WAV | subtype, 0, 0};
        SNDFILE* out = sf_open(file.path.c_str(), SFM_WRITE, &info);
        const std::vector<int16_t> samples = Tones();
        sf_write_short(out, samples.data(), static_cast<sf_count_t>(samples.size()));
        sf_close(out);
    }
    return file.path;
}

const std::string& XaFile() {
    static File file{Name("xa")};
    if (!std::filesystem::exists(file.path)) {
        const std::vector<uint8_t> bytes = xa::Encode(Tones(), kChannels, kRate, xa::Mode::kFast);
        std::ofstream(file.path, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }
    return file.path;
}

const std::string& FileOf(int64_t kind) {
    return kind == 2 ? XaFile() : WavFile(kind == 0 ? SF_FORMAT_PCM_16 : SF_FORMAT_IMA_ADPCM);
}

void SetRealTime(benchmark::State& state) {
    state.counters["realtime"] =
        benchmark::Counter(static_cast<double>(state.iterations()) * kSeconds, benchmark::Counter::kIsRate);
}

CDSound& Device() {
    static CDSound device;
    if (device.m_pDS == nullptr && device.Init(nullptr, 1) != 0) std::abort();
    return device;
}

void LoadWhole(benchmark::State& state) {
    CDSBuffer sound(Device().m_pDS);
    sound.SetFileName(FileOf(state.range(0)).c_str());
    for (auto _ : state) {
        if (sound.Load(0) != 0) state.SkipWithError("load failed");
    }
    SetRealTime(state);
}
BENCHMARK(LoadWhole)->ArgNames({"pcm0_ima1_xa2"})->DenseRange(0, 2)->Unit(benchmark::kMillisecond);

void LibraryAlone(benchmark::State& state) {
    const std::string& path = WavFile(SF_FORMAT_IMA_ADPCM);
    for (auto _ : state) {
        SF_INFO info = {};
        SNDFILE* in = sf_open(path.c_str(), SFM_READ, &info);
        std::vector<int16_t> samples(static_cast<size_t>(info.frames * info.channels));
        if (sf_readf_short(in, samples.data(), info.frames) != info.frames)
            state.SkipWithError("read failed");
        sf_close(in);
        benchmark::DoNotOptimize(samples.data());
    }
    SetRealTime(state);
}
BENCHMARK(LibraryAlone)->Unit(benchmark::kMillisecond);

// Either the cursor is where no refill is due, as in nearly every frame, or alternately where each half is
// due.
void StreamPlay(benchmark::State& state) {
    CDSBuffer sound(Device().m_pDS);
    sound.SetFileName(FileOf(state.range(0)).c_str());
    sound.m_bLoop = 1;
    if (sound.Load(1) != 0 || sound.m_bStream != 1) state.SkipWithError("no stream");
    const bool refill = state.range(1) != 0;
    for (auto _ : state) {
        const DWORD place = refill && sound.m_nHalf == 0 ? sound.m_nBufSize * 5 / 8 : sound.m_nBufSize / 4;
        sound.m_pDSB->SetCurrentPosition(place / 4 * 4);
        if (sound.StreamPlay() != 0) state.SkipWithError("refill failed");
    }
}
BENCHMARK(StreamPlay)->ArgNames({"pcm0_ima1_xa2", "refill"})->ArgsProduct({{0, 1, 2}, {0, 1}});

}  // namespace

BENCHMARK_MAIN();
