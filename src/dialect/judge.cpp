// How much of a chart the player plays as it is written.
#include <algorithm>
#include <cmath>

#include "dialect/dialect.h"
#include "dialect/player.h"

namespace dialect {

namespace {

bool Less(const HeardSound& a, const HeardSound& b) {
    return a.name != b.name ? a.name < b.name : a.ms < b.ms;
}

std::vector<HeardSound> Asked(std::string_view bytes, const Options& options) {
    Findings findings;
    Chart chart = ReadChart(bytes, options.choice, &findings);
    SortObjects(&chart);
    const TimeMap times(chart, &findings);
    uint32_t needs = 0;
    std::vector<HeardSound> asked;
    for (const Event& event : MakeEvents(chart, times, &needs, &findings)) {
        const std::string_view name = chart.sounds[static_cast<size_t>(event.number)].value;
        if (event.kind != EventKind::kPicture && !name.empty()) asked.push_back({event.ms, name, false});
    }
    std::sort(asked.begin(), asked.end(), Less);
    return asked;
}

}  // namespace

Verdict Judge(std::string_view bytes, const Options& options) {
    constexpr double kMostOffMs = 1.0;
    if (bytes.size() > kMostBytes) return {0, 0, 0, false};
    const std::vector<HeardSound> asked = Asked(bytes, options);
    std::vector<HeardSound> heard;
    Verdict verdict;
    verdict.refused = !ReadAsPlayer(bytes, &heard);
    verdict.asked = static_cast<int64_t>(asked.size());
    std::erase_if(heard, [](const HeardSound& sound) { return sound.elsewhere; });
    std::sort(heard.begin(), heard.end(), Less);
    // Both in order of file and time: the first of each that are near enough are one sound.
    for (size_t a = 0, h = 0; a < asked.size() && h < heard.size();) {
        const bool near =
            asked[a].name == heard[h].name && std::fabs(asked[a].ms - heard[h].ms) <= kMostOffMs;
        verdict.played += near;
        const bool next = near || Less(asked[a], heard[h]);
        h += near || !next;
        a += next;
    }
    verdict.wrong = static_cast<int64_t>(heard.size()) - verdict.played;
    return verdict;
}

}  // namespace dialect
