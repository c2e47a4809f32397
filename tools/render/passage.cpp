#include "render/passage.h"

#include <algorithm>
#include <vector>

#include "chart/bms.h"
#include "chart/charttime.h"
#include "playback/playback.h"
#include "render/pass.h"
#include "sound/dsbuffer.h"
#include "sound/dsound.h"
#include "system/globals.h"

namespace render {
namespace {

int64_t EndOfChart() {
    return TruncTime(g_pBMS->m_pMeasure[g_pBMS->m_nMeasure - 1].dStart);
}

}  // namespace

std::vector<int64_t> Starts() {
    std::vector<int64_t> times;
    for (int32_t i = 0; i < g_nNoteCount; ++i) {
        const BmsEvent& note = g_pNoteList[i];
        if (note.nChannel >= 0x11 && note.nChannel <= 0x29) times.push_back(note.nTime);
    }
    if (times.empty()) {
        for (int32_t i = 0; i < g_nBgmCount; ++i) times.push_back(g_pBgmList[i].nTime);
    }
    std::sort(times.begin(), times.end());
    return times;
}

int CountWithin(const std::vector<int64_t>& times, int64_t first, int64_t length) {
    return static_cast<int>(std::lower_bound(times.begin(), times.end(), first + length) -
                            std::lower_bound(times.begin(), times.end(), first));
}

int64_t StartOfPassage(const PassageStart& wanted, int64_t length) {
    const int64_t end = EndOfChart();
    int64_t start = -1;
    switch (wanted.kind) {
        case PassageStart::kMeasure:
            start = ChartTime({"", true, wanted.value});
            break;
        case PassageStart::kSeconds:
            start = static_cast<int64_t>(wanted.value * 1000);
            break;
        case PassageStart::kPercent:
            start = static_cast<int64_t>(BMS_LEAD_IN +
                                         (static_cast<double>(end) - BMS_LEAD_IN) * wanted.value / 100);
            break;
        case PassageStart::kDensest: {
            const std::vector<int64_t> times = Starts();
            for (int i = 0, most = -1; i + 1 < g_nBarCount; ++i) {
                const int count = CountWithin(times, g_pBarList[i].nTime, length);
                if (count <= most) continue;
                most = count;
                start = g_pBarList[i].nTime;
            }
        }
    }
    // Measures that take less than a millisecond begin at the end.
    const bool inside = start < end || (wanted.kind == PassageStart::kDensest && start == end);
    return inside ? start : -1;
}

int64_t EarliestHeard(int64_t time) {
    int64_t longest = 0;
    for (const CDSBuffer* sound : g_pDSound->m_pSlot) {
        if (!sound || sound->m_wfx.nAvgBytesPerSec == 0) continue;
        longest = std::max(longest, int64_t{sound->m_nBufSize} * 1000 / sound->m_wfx.nAvgBytesPerSec);
    }
    constexpr int64_t kLimiter = 10'000;  // it remembers loud moments for less than that
    return time - longest - kLimiter;
}

int32_t MeasureBefore(int64_t time) {
    int32_t measure = -1;
    while (measure + 1 < g_nBarCount && g_pBarList[measure + 1].nTime <= time) ++measure;
    return measure;
}

}  // namespace render
