// Compiling a chart of today against reading it with the player's own reader: a ratio of the two times.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>

#include "chart/bms.h"
#include "chart_source.h"
#include "dialect/dialect.h"

namespace {

// A chart of its own, or the file that the environment names in LUMETRA_CHART.
std::string Source() {
    if (const char* path = std::getenv("LUMETRA_CHART")) {
        std::ifstream in(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    std::string text = MakeChart({300, 200});
    text += "#STOP01 48\r\n#00309:0001\r\n#LNOBJ ZZ\r\n";
    for (char c = 'G'; c <= 'Z'; ++c) {
        for (char d = 'A'; d <= 'Y'; ++d) {
            const std::string id{c, d};
            text += "#WAV" + id + " late" + id + ".wav\r\n#10001:" + id + "\r\n";
        }
    }
    return text;
}

void Compile(benchmark::State& state) {
    const std::string bytes = Source();
    for (auto _ : state) {
        const dialect::Plan plan = dialect::MakePlan(bytes, {});
        if (!plan.unchanged) benchmark::DoNotOptimize(dialect::WriteText(plan));
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes.size()));
}
BENCHMARK(Compile);

void ReadByThePlayer(benchmark::State& state) {
    const std::string bytes = Source();
    const auto path = std::filesystem::temp_directory_path() / "lumetra-dialect-bench.bms";
    std::ofstream(path, std::ios::binary) << bytes;
    for (auto _ : state) {
        auto chart = std::make_unique<CBMS>(nullptr, nullptr);
        benchmark::DoNotOptimize(chart->Load(path.c_str(), 0) + chart->Compile());
    }
    std::filesystem::remove(path);
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes.size()));
}
BENCHMARK(ReadByThePlayer);

}  // namespace

BENCHMARK_MAIN();
