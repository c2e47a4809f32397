// Benchmarks reading, decoding and compiling a chart, and playing its lists.
#include <benchmark/benchmark.h>
#include <sys/mman.h>
#include <unistd.h>

#include <memory>

#include "chart_source.h"
#include "host/headless/headless.h"
#include "platform/timer.h"
#include "playback/playback.h"
#include "shell/shell.h"

namespace {

// A chart in a file that lives in memory.
const std::string& BigChartPath() {
    static const std::string path = [] {
        const std::string text = MakeChart({});
        const int file = memfd_create("chart", 0);
        if (file < 0 || write(file, text.data(), text.size()) != static_cast<ssize_t>(text.size()))
            std::abort();
        return "/proc/self/fd/" + std::to_string(file);
    }();
    return path;
}

void LoadAndCompile(benchmark::State& state) {
    int64_t objects = 0;
    for (auto _ : state) {
        auto chart = std::make_unique<CBMS>(nullptr, nullptr);
        if (chart->Load(BigChartPath().c_str(), 0) == 0 || chart->Compile() != 0)
            state.SkipWithError("refused");
        objects = chart->m_nBgm + chart->m_nBga + chart->m_nTempo + chart->m_nNote;
        benchmark::DoNotOptimize(chart->m_ppNote);
    }
    state.counters["objects"] = static_cast<double>(objects);
}
BENCHMARK(LoadAndCompile)->Unit(benchmark::kMillisecond);

void StartBigChart() {
    static std::unique_ptr<CBMS> chart;
    if (chart) return;
    chart = std::make_unique<CBMS>(nullptr, nullptr);
    if (chart->Load(BigChartPath().c_str(), 0) == 0 || chart->Compile() != 0) std::abort();
    g_pBMS = chart.get();
    InitPlayLists();
}

void BuildPlayLists(benchmark::State& state) {
    StartBigChart();
    for (auto _ : state) {
        FreePlayLists();
        InitPlayLists();
    }
}
BENCHMARK(BuildPlayLists)->Unit(benchmark::kMillisecond);

void Seek(benchmark::State& state) {
    StartBigChart();
    int32_t time = 0;
    for (auto _ : state) benchmark::DoNotOptimize(SeekMeasure(500, &time));
}
BENCHMARK(Seek)->Unit(benchmark::kMicrosecond);

// Without a display: only the walks over five measures of 200 objects, with the clock advancing one frame at
// a time.
void FrameOfADensePassage(benchmark::State& state) {
    StartBigChart();
    g_nStartMeasure = 500;
    SeekMeasure(g_nStartMeasure, &g_dwSeekTime);
    headless::Reset();
    g_dwStartTime = timeGetTime();
    g_bPaused = 0;
    for (auto _ : state) {
        headless::AdvanceClock(16'000'000);
        PlayFrame();
        if (timeGetTime() - g_dwStartTime > 60000) {  // after a minute, back to the start
            g_dwStartTime = timeGetTime();
            SeekMeasure(g_nStartMeasure, &g_dwSeekTime);
        }
    }
}
BENCHMARK(FrameOfADensePassage);

}  // namespace

BENCHMARK_MAIN();
