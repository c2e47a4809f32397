// What sounds when in which stem.
#include <algorithm>
#include <cmath>
#include <unordered_map>

#include "dialect/plan.h"

namespace dialect {

namespace {

// For each event the next one of the same number that sounds, by index; -1 when there is none.
std::vector<int32_t> NextOfNumber(const std::vector<Event>& events) {
    std::vector<int32_t> next(events.size(), -1), seen(kNumbers, -1);
    for (size_t i = events.size(); i-- > 0;) {
        if (events[i].kind == EventKind::kPicture || events[i].fate != Fate::kMixed) continue;
        int32_t& last = seen[static_cast<size_t>(events[i].number)];
        next[i] = last;
        last = static_cast<int32_t>(i);
    }
    return next;
}

// Two stems with the same key hold the same to a hundredth of a millisecond.
std::string KeyOf(const Stem& stem) {
    std::string key;
    for (const StemItem& item : stem.items) {
        const double cut = item.cut_ms == kWhole ? -1.0 : item.cut_ms;
        const int64_t numbers[] = {item.sound, std::llround(item.start_ms * 100), std::llround(cut * 100)};
        key.append(reinterpret_cast<const char*>(numbers), sizeof numbers);
    }
    return key;
}

// How long a stem sounds; kWhole when a length is not known.
double LengthOf(const Stem& stem, const std::vector<double>& lengths_ms) {
    double length = 0;
    for (const StemItem& item : stem.items) {
        const double own = lengths_ms[static_cast<size_t>(item.sound)];
        length = std::max(length, item.start_ms + std::min(item.cut_ms, own < 0 ? kWhole : own));
    }
    return length;
}

// Measures of equal content share a stem when it has rung out before it starts again.
void ShareStems(const TimeMap& times, const std::vector<double>& lengths_ms, std::vector<Stem>* stems) {
    std::unordered_map<std::string, size_t> of_key;
    std::vector<Stem> shared;
    for (Stem& stem : *stems) {
        const auto [it, fresh] = of_key.emplace(KeyOf(stem), shared.size());
        if (!fresh) {
            Stem& other = shared[it->second];
            if (times.MeasureMs(other.measures.back()) + LengthOf(other, lengths_ms) <= stem.begin_ms) {
                other.measures.push_back(stem.measures[0]);
                continue;
            }
            it->second = shared.size();
        }
        shared.push_back(std::move(stem));
    }
    *stems = std::move(shared);
}

}  // namespace

void FillStems(const TimeMap& times, const std::vector<int32_t>& mixed, const std::vector<double>& lengths_ms,
               int32_t span, bool share, Plan* plan) {
    plan->stems.clear();
    const std::vector<int32_t> next = NextOfNumber(plan->events);
    PlayerClock clock(plan->bpm, plan->lengths, plan->tempos);
    int32_t of_measure = -1;
    for (size_t i = 0; i < plan->events.size(); ++i) {
        const Event& event = plan->events[i];
        if (event.kind == EventKind::kPicture || event.fate != Fate::kMixed) continue;
        const int32_t sound = mixed[static_cast<size_t>(event.number)];
        double cut = next[i] < 0 ? kWhole : plan->events[static_cast<size_t>(next[i])].ms - event.ms;
        if (cut <= 0) continue;  // it starts again at once
        const double length = lengths_ms[static_cast<size_t>(sound)];
        if (length >= 0 && cut >= length) cut = kWhole;
        const int32_t measure = event.measure / span * span;
        if (plan->stems.empty() || of_measure != measure) {
            of_measure = measure;
            plan->stems.push_back({{measure}, clock.Ms(measure, 0), 1, false, {}, {}, {}});
        }
        Stem& stem = plan->stems.back();
        stem.items.push_back({sound, 0, std::max(event.ms - stem.begin_ms, 0.0), cut, event.source});
    }
    if (share) ShareStems(times, lengths_ms, &plan->stems);
}

int32_t SpareParts(const Plan& plan) {
    int64_t parts = 0;
    for (const Stem& stem : plan.stems) parts += stem.parts;
    return static_cast<int32_t>(std::max<int64_t>(static_cast<int64_t>(plan.free_numbers.size()) - parts, 0));
}

static std::string NameOf(const Plan& plan, const Stem& stem, int32_t part) {
    std::string digits = std::to_string(stem.measures[0]);
    digits.insert(0, 3 - std::min<size_t>(digits.size(), 3), '0');
    return plan.stem_head + digits + (stem.parts > 1 ? "-" + std::to_string(part + 1) : "") + ".wav";
}

void NumberStems(Plan* plan) {
    size_t next = 0;
    for (Stem& stem : plan->stems) {
        stem.numbers.clear();
        stem.names.clear();
        for (int32_t part = 0; part < stem.parts && next < plan->free_numbers.size(); ++part) {
            stem.numbers.push_back(plan->free_numbers[next++]);
            stem.names.push_back(NameOf(*plan, stem, part));
        }
    }
}

}  // namespace dialect
