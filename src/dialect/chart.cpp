#include "dialect/chart.h"

#include <algorithm>
#include <limits>

#include "dialect/reader.h"

namespace dialect {

static Chart EmptyChart() {
    constexpr double kUndefined = std::numeric_limits<double>::quiet_NaN();
    Chart chart;
    chart.sounds.resize(kNumbers);
    chart.pictures.resize(kNumbers);
    chart.tempos.assign(kNumbers, kUndefined);
    chart.stops.assign(kNumbers, kUndefined);
    chart.lengths.assign(kMeasures, 1.0);
    return chart;
}

Chart ReadChart(std::string_view bytes, const Choice& choice, Findings* findings) {
    Chart chart = EmptyChart();
    LineTraits traits;
    std::vector<Line> lines = ReadLines(bytes, &traits);
    if (traits.ends || traits.mark || traits.blanks || traits.long_line) chart.needs |= kNeedLines;
    if (TakeBranches(choice, &lines, findings)) chart.needs |= kNeedFlow;
    const int base = ReadBase(lines);
    if (base == 62) chart.needs |= kNeedNumbers;
    Reader reader{&chart, findings, &DigitsOfBase(base), std::vector<bool>(kChannels), {}};
    chart.objects.reserve(bytes.size() / 16);
    for (const Line& line : lines) {
        if (!ReadChannelLine(line, &reader)) ReadKeywordLine(line, &reader);
    }
    for (const TimedStop& stop : chart.timed_stops)
        chart.last_measure = std::max(chart.last_measure, stop.measure);
    if (chart.last_measure == 0) chart.needs |= kNeedMeasure;
    return chart;
}

// By measure first: a file's measures mostly stand together.
static std::vector<Object> GroupByMeasure(const std::vector<Object>& objects, std::vector<size_t>* first) {
    first->assign(kMeasures + 1, 0);
    for (const Object& object : objects) ++(*first)[static_cast<size_t>(object.measure) + 1];
    for (size_t m = 1; m <= kMeasures; ++m) (*first)[m] += (*first)[m - 1];
    std::vector<Object> grouped(objects.size());
    std::vector<size_t> next = *first;
    for (const Object& object : objects) grouped[next[static_cast<size_t>(object.measure)]++] = object;
    return grouped;
}

void SortObjects(Chart* chart) {
    std::vector<size_t> first;
    std::vector<Object> objects = GroupByMeasure(chart->objects, &first);
    size_t kept = 0;
    for (size_t m = 0; m < kMeasures; ++m) {
        const auto begin = objects.begin() + static_cast<ptrdiff_t>(first[m]);
        const auto end = objects.begin() + static_cast<ptrdiff_t>(first[m + 1]);
        std::stable_sort(begin, end, [](const Object& a, const Object& b) {
            return a.at != b.at ? a.at < b.at : a.channel < b.channel;
        });
        for (auto it = begin; it != end; ++it) {
            const bool covered = it + 1 != end && it->at == it[1].at && it->channel == it[1].channel &&
                                 KindOf(it->channel) != ChannelKind::kBackground;
            if (covered) {
                chart->needs |= kNeedOverlay;
            } else {
                objects[kept++] = *it;
            }
        }
    }
    objects.resize(kept);
    chart->objects = std::move(objects);
}

}  // namespace dialect
