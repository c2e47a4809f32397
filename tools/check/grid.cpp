// Objects that stand beside the grid that nearly all others keep.
#include <algorithm>
#include <cmath>
#include <iterator>

#include "check/objects.h"

namespace check {
namespace {

constexpr int kTicks = 192;  // of a measure of four beats
constexpr int kGrids[] = {16, 24, 32, 48};
constexpr int kOthers[] = {40, 48, 56, 64};  // finer grids, whose places are written on purpose
constexpr int64_t kFewest = 100;             // objects: with fewer there is no grid to speak of
constexpr int64_t kBeside = 33;              // at most one object in so many is off the grid
constexpr double kNear = 2.0;                // ticks, 20 ms at a tempo of 130
constexpr double kExact = 1e-6;

struct Placed {
    double ticks;  // from the measure's start
    double at;     // from the chart's start, in ticks, so that objects have neighbours across measures
    int32_t measure;
    Place place;
};

// Of visible notes and background sounds, in measures whose length is a whole number of ticks.
std::vector<Placed> PlacedOf(const Subject& subject) {
    std::vector<Placed> placed;
    const CBMS& chart = *subject.chart;
    std::vector<double> starts = {0.0};
    for (int32_t i = 0; i < chart.m_nMeasure; ++i)
        starts.push_back(starts.back() + std::max(chart.m_pMeasure[i].dLength, 0.0) * kTicks);
    for (const ObjectList& list : {BgmOf(subject), NotesOf(subject)}) {
        for (int32_t i = 0; i < list.count; ++i) {
            const BmsObject& object = *list.sorted[i];
            const Source* source = list.SourceOf(&object);
            if (!source || !(object.nChannel == 1 || IsVisible(object.nChannel))) continue;
            const double length = chart.m_pMeasure[object.nMeasure].dLength * kTicks;
            if (!(length < 1e6) || std::fabs(length - std::round(length)) > kExact) continue;
            const double ticks = object.dPos * length;
            placed.push_back({ticks, starts[static_cast<size_t>(object.nMeasure)] + ticks, object.nMeasure,
                              source->place});
        }
    }
    std::stable_sort(placed.begin(), placed.end(),
                     [](const Placed& a, const Placed& b) { return a.at < b.at; });
    return placed;
}

// Distance to the nearest line of a grid, in ticks.
double Distance(double ticks, int grid) {
    const double spacing = static_cast<double>(kTicks) / grid;
    return std::fabs(ticks - std::round(ticks / spacing) * spacing);
}

bool IsOn(double ticks, int grid) {
    return Distance(ticks, grid) < kExact;
}

// Near a line of the grid, on no line of a finer one.
bool IsSlip(double ticks, int grid) {
    const auto on = [ticks](int other) { return IsOn(ticks, other); };
    return Distance(ticks, grid) <= std::min(kNear, kTicks / 4.0 / grid) &&
           std::none_of(std::begin(kOthers), std::end(kOthers), on);
}

// Those that stand alone among objects on the grid. None where more do not: what was played in is meant so.
std::vector<const Placed*> SlipsOf(const std::vector<const Placed*>& off, int grid) {
    std::vector<const Placed*> slips;
    size_t meant = 0;
    const auto far = [&](size_t a, size_t b) { return off[b]->at - off[a]->at > kTicks; };
    for (size_t first = 0, end; first < off.size(); first = end) {
        for (end = first + 1; end < off.size() && off[end]->at - off[first]->at < kExact;) ++end;
        const bool alone = (first == 0 || far(first - 1, first)) && (end == off.size() || far(first, end));
        for (size_t i = first; i < end; ++i) {
            if (!IsSlip(off[i]->ticks, grid)) continue;
            if (alone) slips.push_back(off[i]);
            meant += !alone;
        }
    }
    return meant > slips.size() ? std::vector<const Placed*>() : slips;
}

}  // namespace

void CheckGrid(Subject* subject) {
    const std::vector<Placed> placed = PlacedOf(*subject);
    const auto all = static_cast<int64_t>(placed.size());
    if (all < kFewest) return;
    for (const int grid : kGrids) {
        std::vector<const Placed*> off;
        for (const Placed& object : placed) {
            if (!IsOn(object.ticks, grid)) off.push_back(&object);
        }
        if (static_cast<int64_t>(off.size()) * kBeside > all) continue;
        const std::vector<const Placed*> slips = SlipsOf(off, grid);
        if (slips.empty()) return;
        subject->findings.Add(slips[0]->place, "off-grid", [&] {
            const auto count = static_cast<int64_t>(slips.size());
            return CountOf(count, "object") + (count == 1 ? " is" : " are") +
                   " up to 2/192 of a measure beside the grid of 1/" + std::to_string(grid) + " that " +
                   std::to_string((all - static_cast<int64_t>(off.size())) * 100 / all) +
                   " % of all keep; the first is in measure " + std::to_string(slips[0]->measure);
        });
        return;
    }
}

}  // namespace check
