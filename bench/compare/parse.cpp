// parse CHART: Load and Compile of a chart without devices, timed from before the file is opened until every
// object has its time.
#include <chrono>
#include <cstdio>
#include <memory>

#include "chart/bms.h"

namespace {

struct Totals {
    long objects = 0;
    double seconds = 0.0;  // sum of the times, relative to the start of measure 0
};

// Channels 01, 03, 04, 08, 11 to 19 and 21 to 29.
bool IsCounted(int32_t channel) {
    if (channel >= BGADEF_CHANNEL_BASE) channel -= BGADEF_CHANNEL_BASE;
    return channel == 1 || channel == 3 || channel == 4 || channel == 8 ||
           (channel >= 0x11 && channel <= 0x29);
}

void Add(Totals* totals, BmsObject* const* list, int32_t count) {
    for (int32_t i = 0; i < count; ++i) {
        if (!IsCounted(list[i]->nChannel)) continue;
        ++totals->objects;
        totals->seconds += (list[i]->dTime - BMS_LEAD_IN) / 1000.0;
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: parse CHART\n");
        return 2;
    }
    auto chart = std::make_unique<CBMS>(nullptr, nullptr);
    const auto start = std::chrono::steady_clock::now();
    const bool ready = chart->Load(argv[1], 0) != 0 && chart->Compile() == 0;
    const std::chrono::duration<double> cold = std::chrono::steady_clock::now() - start;
    if (!ready) {
        std::fprintf(stderr, "parse: cannot read %s\n", argv[1]);
        return 1;
    }
    Totals totals;
    Add(&totals, chart->m_ppBgm, chart->m_nBgm);
    Add(&totals, chart->m_ppTempo, chart->m_nTempo);
    Add(&totals, chart->m_ppBga, chart->m_nBga);
    Add(&totals, chart->m_ppNote, chart->m_nNote);
    std::printf("RESULT\tcold_s\t%.9f\nRESULT\tobjects\t%ld\nRESULT\tsum_of_times_s\t%.9f\n", cold.count(),
                totals.objects, totals.seconds);
    return 0;
}
