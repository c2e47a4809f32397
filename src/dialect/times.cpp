#include "dialect/times.h"

#include <algorithm>
#include <cmath>

namespace dialect {

// What stands on one place: its last 03, its last 08, its stops.
struct Change {
    double at;
    Fraction place;
    int32_t measure;
    double tempo = 0, tempo_ref = 0;  // 0: none
    double stop_units = 0;            // 192nds of a measure of length 1
    double stop_ms = 0;
};

namespace {

double HeldMs(double ms) {
    return ms < 1e12 ? ms : 1e12;  // keeps sums of a chart's times finite
}

// The value of a number's definition; 0 with a finding when there is none.
double Defined(const std::vector<double>& table, const Object& object, const char* what, Findings* findings) {
    const double value = table[static_cast<size_t>(object.number)];
    if (!std::isnan(value)) return value;
    findings->Add(Severity::kWarning, "undefined", object.source,
                  [&] { return "there is no " + std::string(what) + " of this number, it does nothing"; });
    return 0;
}

Change* ChangeAt(double at, Fraction place, int32_t measure, std::vector<Change>* changes) {
    if (changes->empty() || changes->back().at != at) changes->push_back({at, place, measure});
    return &changes->back();
}

std::vector<Change> Collect(const Chart& chart, bool* troubles, Findings* findings) {
    std::vector<Change> changes;
    for (const Object& object : chart.objects) {
        const ChannelKind kind = KindOf(object.channel);
        if (kind != ChannelKind::kTempo && kind != ChannelKind::kTempoRef && kind != ChannelKind::kStop)
            continue;
        Change* change = ChangeAt(object.at, object.place, object.measure, &changes);
        if (kind == ChannelKind::kTempo) {
            change->tempo = object.number;
        } else if (kind == ChannelKind::kTempoRef) {
            change->tempo_ref = Defined(chart.tempos, object, "#BPM", findings);
            *troubles |= change->tempo_ref == 0;
        } else {
            change->stop_units = Defined(chart.stops, object, "#STOP", findings);
        }
    }
    for (const TimedStop& stop : chart.timed_stops) {
        Change change{stop.measure + stop.place.Value(), stop.place, stop.measure};
        change.stop_ms = stop.ms;
        changes.push_back(change);
    }
    if (!chart.timed_stops.empty()) {
        std::stable_sort(changes.begin(), changes.end(),
                         [](const Change& a, const Change& b) { return a.at < b.at; });
    }
    return changes;
}

}  // namespace

TimeMap::TimeMap(const Chart& chart, Findings* findings) : lengths_(chart.lengths) {
    const std::vector<Change> changes = Collect(chart, &has_troubles_, findings);
    const size_t measures = static_cast<size_t>(std::max(chart.last_measure, 0)) + 2;
    lengths_.resize(measures, 1.0);
    if (chart.last_measure + 1 < kMeasures) lengths_[measures - 1] = 1.0;
    first_.reserve(measures + 1);
    Knot last{{0, 1}, 0, kLeadInMs, kLeadInMs, chart.bpm};
    size_t next = 0;
    for (size_t m = 0; m < measures; ++m) {
        first_.push_back(knots_.size());
        AddMeasure(static_cast<int32_t>(m), changes, &next, &last);
    }
    first_.push_back(knots_.size());
}

// last: the state at the measure's begin, then at its end.
void TimeMap::AddMeasure(int32_t measure, const std::vector<Change>& changes, size_t* next, Knot* last) {
    const double length = Length(measure);
    const auto move = [&](double to) {
        last->ms = last->after = last->after + HeldMs((to - last->value) * length * (kMeasureMs / last->bpm));
        last->value = to;
    };
    knots_.push_back(*last);
    while (*next < changes.size() && changes[*next].measure == measure) {
        const Change& change = changes[(*next)++];
        const double value = change.place.Value();
        const bool same = value == last->value;
        if (!same) move(value);
        last->place = change.place;
        const double bpm = change.tempo_ref > 0 ? change.tempo_ref : change.tempo;
        if (bpm > 0) last->bpm = bpm;
        const double stop = change.stop_units / 192 * (kMeasureMs / last->bpm) + change.stop_ms;
        last->after += HeldMs(stop);
        has_stops_ |= stop > 0;
        if (same) {
            knots_.back() = *last;
        } else {
            knots_.push_back(*last);
        }
    }
    move(1.0);
    last->place = {0, 1};
    last->value = 0;
}

double TimeMap::MsAt(int32_t measure, double place) const {
    const Knot* begin = Begin(measure);
    const Knot* end = End(measure);
    const Knot* knot =
        end - begin == 1 ? end : std::lower_bound(begin, end, place, [](const Knot& k, double value) {
            return k.value < value;
        });
    if (place == 0) return begin->ms;
    if (knot != end && knot->value == place) return knot->ms;
    const Knot& before = knot[-1];
    return before.after + HeldMs((place - before.value) * Length(measure) * (kMeasureMs / before.bpm));
}

}  // namespace dialect
