#include "dialect/plan.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace dialect {

namespace {

constexpr double kMostShiftMs = 0.5;

std::string Short(double ms) {
    char text[32];
    std::snprintf(text, sizeof text, "%.1f ms", ms);
    return text;
}

// Sounds that would be heard too far from their time are marked: their places are off the player's grid.
void FindShifted(bool exact, Plan* plan, Findings* findings) {
    const auto moved = [](const Event& event) { return event.moved; };
    if (exact && std::none_of(plan->events.begin(), plan->events.end(), moved)) return;
    plan->needs |= kNeedMixing;
    PlayerClock clock(plan->bpm, plan->lengths, plan->tempos);
    for (Event& event : plan->events) {
        const double shift = clock.Ms(event.measure, event.place.Value()) - event.ms;
        event.moved = std::fabs(shift) > kMostShiftMs;
        if (!event.moved || event.kind == EventKind::kPicture || event.fate != Fate::kOwn) continue;
        findings->Add(Severity::kNote, "off-grid", event.source, [&] {
            return "no place of the player is within half a millisecond: the sound is mixed" +
                   (event.kind == EventKind::kBackground ? "" : ", its note is off by " + Short(shift));
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

// The player's table of files: a first digit beyond F is 0 to it, so GZ defines 0Z, and the last line counts.
std::vector<Definition> PlayerTable(const std::vector<Definition>& table) {
    std::vector<Definition> folded(kNumbers);
    for (size_t number = 1; number < table.size(); ++number) {
        Definition& entry = folded[number < 16 * 62 ? number : number % 62];
        if (!table[number].value.empty() && entry.source.line <= table[number].source.line)
            entry = table[number];
    }
    folded[0] = {};
    return folded;
}

// Numbers whose file is another to the player. Objects of sounds fold like definitions, those of pictures do
// not: beyond FZ they show nothing but rectangles.
uint32_t FoldedNumbers(const Chart& chart, const std::vector<Event>& events) {
    const std::vector<Definition> sounds = PlayerTable(chart.sounds), pictures = PlayerTable(chart.pictures);
    uint32_t needs = 0;
    for (const Event& event : events) {
        const size_t number = static_cast<size_t>(event.number);
        const bool beyond = PlayerNumber(event.number) == 0;
        if (event.kind != EventKind::kPicture) {
            if (sounds[beyond ? number % 62 : number].value != chart.sounds[number].value)
                needs |= kNeedNumbers;
        } else if (chart.cuts.empty() || chart.cuts[number].picture < 0) {
            const std::string_view seen = beyond ? std::string_view() : pictures[number].value;
            if (seen != chart.pictures[number].value) needs |= kNeedPictures;
        }
    }
    return needs;
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
    Findings findings(options.most_findings);
    if (bytes.size() > kMostBytes) {
        findings.Add(Severity::kError, "too-large", {}, "the file is too large, it is left as it is");
        plan.unchanged = true;
        plan.findings = findings.Take();
        return plan;
    }
    Chart chart = ReadChart(bytes, options.choice, &findings);
    SortObjects(&chart);
    const TimeMap times(chart, &findings);
    plan.stem_head = OwnName(chart, "stem-");
    plan.needs = options.needs | chart.needs | (times.HasStops() || times.HasTroubles() ? kNeedTimes : 0u);
    plan.events = MakeEvents(chart, times, &plan.needs, &findings);
    plan.needs |= FoldedNumbers(chart, plan.events);
    FindFilms(chart, options, &plan);
    if (!plan.films.empty()) plan.needs |= kNeedPictures;
    FindBeyond(&plan, &findings);
    if (chart.too_large)
        findings.Add(Severity::kError, "too-large", {}, "too many objects, the chart is left as it is");
    if (chart.last_measure < 0)
        findings.Add(Severity::kError, "empty", {}, "there is nothing to play in this file");
    plan.unchanged = Unchanged(chart, plan);
    if (!plan.unchanged) {
        plan.headers = chart.headers;
        plan.bpm = chart.bpm;
        plan.lengths.assign(chart.lengths.begin(), chart.lengths.begin() + chart.last_measure + 1);
        bool exact;
        plan.tempos = PlanTempos(times, plan.bpm, plan.events, &exact);
        FindShifted(exact, &plan, &findings);
        PlanSounds(chart, times, options, &plan, &findings);
        PlanPictures(chart, options, &plan, &findings);
        PlanFilms(chart, times, &plan, &findings);
    }
    plan.findings = findings.Take();
    plan.findings_left_out = findings.TellLeftOut();
    return plan;
}

}  // namespace dialect
