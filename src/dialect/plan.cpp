#include "dialect/plan.h"

#include <algorithm>
#include <cmath>

namespace dialect {

namespace {

constexpr double kMostShiftMs = 0.5;

// Sounds that would be heard too far from their time are marked: their places are off the player's grid.
void FindShifted(Plan* plan, Findings* findings) {
    const auto moved = [](const Event& event) { return event.moved; };
    if (std::none_of(plan->events.begin(), plan->events.end(), moved)) return;
    plan->needs |= kNeedMixing;
    PlayerClock clock(plan->bpm, plan->lengths, plan->tempos);
    for (Event& event : plan->events) {
        const double shift = clock.Ms(event.measure, event.place.Value()) - event.ms;
        event.moved = std::fabs(shift) > kMostShiftMs;
        if (!event.moved || event.kind == EventKind::kPicture || event.fate != Fate::kOwn) continue;
        findings->Add(Severity::kNote, "off-grid", event.source, [&] {
            return "the player has no place within half a millisecond of this one; its sound is mixed, which keeps "
                   "its time, and its note stands " + std::to_string(shift).substr(0, 5) + " ms beside it";
        });
    }
}

void FindBeyond(Plan* plan, Findings* findings) {
    for (Event& event : plan->events) {
        if (event.ms < kMostMs) continue;
        event.fate = Fate::kBeyond;
        findings->Add(Severity::kWarning, "beyond", event.source, "no clock of the player reaches this time");
    }
}

bool Unchanged(const Chart& chart, const Plan& plan) {
    return plan.needs == 0 || chart.too_large || chart.last_measure < 0;
}

}  // namespace

std::string OwnName(const Chart& chart, std::string_view name) {
    std::string own(name);
    const auto taken = [&](const Definition& definition) {
        return definition.value.size() >= own.size() &&
               std::equal(own.begin(), own.end(), definition.value.begin(),
                          [](char a, char b) { return Upper(a) == Upper(b); });
    };
    while (std::any_of(chart.sounds.begin(), chart.sounds.end(), taken) ||
           std::any_of(chart.pictures.begin(), chart.pictures.end(), taken))
        own.insert(0, 1, 'x');
    return own;
}

Plan MakePlan(std::string_view bytes, const Options& options) {
    Plan plan;
    Findings findings;
    if (bytes.size() > kMostBytes) {
        findings.Add(Severity::kError, "too-large", {}, "the file is too large, it is left as it is");
        plan.unchanged = true;
        plan.findings = findings.Take();
        return plan;
    }
    Chart chart = ReadChart(bytes, options.choice, &findings);
    SortObjects(&chart);
    const TimeMap times(chart, &findings);
    plan.needs = chart.needs | (times.HasStops() || times.HasTroubles() ? kNeedTimes : 0u);
    plan.events = MakeEvents(chart, times, &plan.needs, &findings);
    FindBeyond(&plan, &findings);
    if (chart.too_large) findings.Add(Severity::kError, "too-large", {}, "too many objects, the chart is left as it is");
    if (chart.last_measure < 0) findings.Add(Severity::kError, "empty", {}, "there is nothing to play in this file");
    plan.unchanged = Unchanged(chart, plan);
    if (!plan.unchanged) {
        plan.headers = chart.headers;
        plan.bpm = chart.bpm;
        plan.lengths.assign(chart.lengths.begin(), chart.lengths.begin() + chart.last_measure + 1);
        plan.tempos = PlanTempos(times, plan.bpm, plan.events);
        FindShifted(&plan, &findings);
        PlanSounds(chart, times, options, &plan, &findings);
        PlanPictures(chart, options, &plan, &findings);
    }
    plan.findings = findings.Take();
    return plan;
}

}  // namespace dialect
