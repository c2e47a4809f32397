// Decode speed of XA as a multiple of real time. Items are frames; "realtime" is seconds of sound per second.
#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include "sound/xadec.h"
#include "xa/encoder.h"

namespace {

constexpr int kRate = 44100;
constexpr int kSeconds = 4;

std::vector<uint8_t> MakeFile(int channels, xa::Mode mode) {
    std::vector<int16_t> samples(static_cast<size_t>(kRate) * kSeconds * channels);
    uint32_t noise = 1;
    for (size_t i = 0; i < samples.size(); ++i) {
        noise = noise * 1664525 + 1013904223;
        double t = static_cast<double>(i / channels) / kRate;
        samples[i] =
            static_cast<int16_t>(12000 * std::sin(2764.6 * t) + 6000 * std::sin(8293.8 * t) + (noise >> 22));
    }
    return xa::Encode(samples, channels, kRate, mode);
}

void Decode(benchmark::State& state) {
    auto file =
        MakeFile(static_cast<int>(state.range(0)), state.range(1) ? xa::Mode::kFine : xa::Mode::kFast);
    WAVEFORMATEX format = {};
    DWORD length = static_cast<DWORD>(file.size() - XA_HEADER_SIZE), pcm = 0;
    void* sizer = xaDecodeOpen(file.data(), &format);
    xaDecodeSize(sizer, length, &pcm);
    xaDecodeClose(sizer);
    std::vector<uint8_t> out(pcm);
    for (auto _ : state) {
        void* xa = xaDecodeOpen(file.data(), &format);
        XaConvertBlock block = {file.data() + XA_HEADER_SIZE, length, 0, out.data(), pcm, 0};
        if (!xaDecodeConvert(xa, &block) || block.nDstUsed != pcm) state.SkipWithError("decoding failed");
        xaDecodeClose(xa);
        benchmark::DoNotOptimize(out.data());
    }
    state.SetItemsProcessed(state.iterations() * kRate * kSeconds);
    state.counters["realtime"] =
        benchmark::Counter(static_cast<double>(state.iterations()) * kSeconds, benchmark::Counter::kIsRate);
}
BENCHMARK(Decode)->ArgNames({"channels", "fine"})->Args({1, 0})->Args({1, 1})->Args({2, 0})->Args({2, 1});

void Encode(benchmark::State& state) {
    std::vector<int16_t> samples(kRate);
    for (int i = 0; i < kRate; ++i)
        samples[i] = static_cast<int16_t>(12000 * std::sin(0.0627 * i) + 500 * std::sin(1.9 * i));
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            xa::Encode(samples, 1, kRate, state.range(0) ? xa::Mode::kFine : xa::Mode::kFast));
    }
    state.counters["realtime"] =
        benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}
BENCHMARK(Encode)->ArgNames({"fine"})->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
