// How much of a chart the player plays as it is written.
#include <algorithm>
#include <cmath>
#include <map>

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
    return asked;
}

// Takes both out of order.
Verdict Compare(std::vector<HeardSound> asked, std::vector<HeardSound> heard) {
    constexpr double kMostOffMs = 1.0;
    std::erase_if(heard, [](const HeardSound& sound) { return sound.elsewhere; });
    std::sort(asked.begin(), asked.end(), Less);
    std::sort(heard.begin(), heard.end(), Less);
    Verdict verdict;
    verdict.asked = static_cast<int64_t>(asked.size());
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

// Puts the sounds of stems in their place.
std::vector<HeardSound> WithoutStems(const Plan& plan, const std::vector<HeardSound>& heard) {
    std::map<std::string_view, std::pair<const Stem*, int32_t>> parts;
    for (const Stem& stem : plan.stems) {
        for (size_t part = 0; part < stem.names.size(); ++part)
            parts[stem.names[part]] = {&stem, static_cast<int32_t>(part)};
    }
    std::vector<HeardSound> sounds;
    for (const HeardSound& sound : heard) {
        const auto found = parts.find(sound.name);
        if (found == parts.end()) {
            sounds.push_back(sound);
            continue;
        }
        const auto [stem, part] = found->second;
        for (const StemItem& item : stem->items) {
            if (item.part == part)
                sounds.push_back(
                    {sound.ms + item.start_ms, plan.mixed[static_cast<size_t>(item.sound)], false});
        }
    }
    return sounds;
}

}  // namespace

Verdict Judge(std::string_view bytes, const Options& options) {
    if (bytes.size() > kMostBytes) return {0, 0, 0, false};
    std::vector<HeardSound> heard;
    const bool taken = ReadAsPlayer(bytes, &heard);
    Verdict verdict = Compare(Asked(bytes, options), std::move(heard));
    verdict.refused = !taken;
    return verdict;
}

Verdict JudgeCompiled(std::string_view bytes, const Options& options) {
    Plan plan = MakePlan(bytes, options);
    if (plan.unchanged) return Judge(bytes, options);
    NumberStems(&plan);
    const std::string text = WriteText(plan);
    if (text.empty()) return Judge(bytes, options);
    std::vector<HeardSound> heard;
    const bool taken = ReadAsPlayer(text, &heard);
    std::map<std::string_view, std::string_view> names;  // the author's by those of the text
    for (const NamedFile& file : plan.sounds) names[file.written] = file.name;
    for (HeardSound& sound : heard) {
        const auto name = names.find(sound.name);
        if (name != names.end()) sound.name = name->second;
    }
    Verdict verdict = Compare(Asked(bytes, options), WithoutStems(plan, heard));
    verdict.refused = !taken;
    return verdict;
}

}  // namespace dialect
