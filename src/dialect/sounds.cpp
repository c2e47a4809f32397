// Which sounds play from files of their own, and which are mixed.
#include <algorithm>
#include <cmath>
#include <map>

#include "dialect/plan.h"

namespace dialect {

namespace {

constexpr int32_t kPlayerSounds = 575;
constexpr int32_t kMostSpan = 1024;  // measures of one stem: the whole chart

// A file of its own number, for one number of the author or for several that never sound together.
struct Voice {
    std::vector<int32_t> numbers;                     // the author's
    std::vector<std::pair<double, double>> sounding;  // from, to; in order
    int64_t uses = 0, notes = 0;
    bool forced = false;  // must be mixed: some of its places are off the grid
    bool mixed = false;
};

class Planner {
public:
    Planner(const Chart& chart, const TimeMap& times, const Options& options, Plan* plan, Findings* findings)
        : chart_(chart), times_(times), options_(options), plan_(plan), findings_(findings) {}

    void Run();

private:
    static bool IsSound(const Event& event) {
        return event.kind != EventKind::kPicture && event.fate == Fate::kOwn;
    }
    void FindUses();
    void AskLengths();
    void MakeVoices();
    bool Join(Voice* voice, const Voice& other) const;
    void ShareNumbers();
    std::vector<Voice*> MixingOrder();
    bool Mix(int32_t span);
    void MixAll();
    void ChooseMixed();
    void FillMixed(int32_t span, bool share);
    int64_t Voices() const { return static_cast<int64_t>(voices_.size()); }
    void Number();
    int32_t TakeNumber(const std::vector<bool>& taken, int32_t from) const;
    void NumberEvents();

    const Chart& chart_;
    const TimeMap& times_;
    const Options& options_;
    Plan* plan_;
    Findings* findings_;
    std::vector<std::vector<int32_t>> uses_;  // by the author's number: indices of events, in order
    std::vector<double> length_ms_;           // by number; negative: not known
    std::vector<Voice> voices_;
    std::vector<int32_t> written_;  // by number; 0: none
    int32_t silent_ = 0;            // a number without a file
    bool silent_notes_ = false;
};

// Objects whose number names no file make no sound.
void Planner::FindUses() {
    uses_.resize(kNumbers);
    std::vector<bool> told(kNumbers);
    for (size_t i = 0; i < plan_->events.size(); ++i) {
        Event& event = plan_->events[i];
        if (!IsSound(event)) continue;
        const size_t number = static_cast<size_t>(event.number);
        if (!chart_.sounds[number].value.empty()) {
            uses_[number].push_back(static_cast<int32_t>(i));
            continue;
        }
        event.fate = Fate::kSilent;
        silent_notes_ |= event.kind != EventKind::kBackground;
        if (told[number]) continue;
        told[number] = true;
        findings_->Add(Severity::kNote, "no-file", event.source,
                       "no #WAV names a file for this number, it is silent");
    }
}

void Planner::AskLengths() {
    length_ms_.assign(kNumbers, -1.0);
    if (!options_.sound_ms) return;
    for (size_t number = 0; number < kNumbers; ++number) {
        if (!uses_[number].empty()) length_ms_[number] = options_.sound_ms(chart_.sounds[number].value);
    }
}

void Planner::MakeVoices() {
    for (int32_t number = 0; number < kNumbers; ++number) {
        const auto& uses = uses_[static_cast<size_t>(number)];
        if (uses.empty()) continue;
        Voice voice;
        voice.numbers = {number};
        voice.uses = static_cast<int64_t>(uses.size());
        for (const int32_t use : uses) {
            const Event& event = plan_->events[static_cast<size_t>(use)];
            voice.notes += event.kind != EventKind::kBackground;
            voice.forced |= event.moved;
        }
        voices_.push_back(std::move(voice));
    }
}

// Joins the other voice's uses when no sound of either would be cut by one of the other.
bool Planner::Join(Voice* voice, const Voice& other) const {
    std::vector<std::pair<double, double>> all;
    std::merge(voice->sounding.begin(), voice->sounding.end(), other.sounding.begin(), other.sounding.end(),
               std::back_inserter(all));
    for (size_t i = 1; i < all.size(); ++i) {
        if (all[i].first < all[i - 1].second || all[i].first == all[i - 1].first) return false;
    }
    voice->sounding = std::move(all);
    voice->numbers.insert(voice->numbers.end(), other.numbers.begin(), other.numbers.end());
    voice->uses += other.uses;
    voice->notes += other.notes;
    return true;
}

// Numbers that name one file share one where their sounds never overlap.
void Planner::ShareNumbers() {
    constexpr size_t kMostTried = 16;  // voices of one file that a number is tried with
    std::map<std::string_view, std::vector<size_t>> of_file;
    std::vector<Voice> shared;
    for (Voice& voice : voices_) {
        const size_t number = static_cast<size_t>(voice.numbers[0]);
        const double length = length_ms_[number];
        if (voice.forced || length < 0) {
            shared.push_back(std::move(voice));
            continue;
        }
        for (const int32_t use : uses_[number]) {
            const double ms = plan_->events[static_cast<size_t>(use)].ms;
            if (!voice.sounding.empty())
                voice.sounding.back().second = std::min(voice.sounding.back().second, ms);
            if (voice.sounding.empty() || voice.sounding.back().first != ms)
                voice.sounding.push_back({ms, ms + length});
        }
        auto& same = of_file[chart_.sounds[number].value];
        const auto joins = [&](size_t i) { return Join(&shared[i], voice); };
        if (std::any_of(same.begin(), same.end(), joins)) continue;
        if (same.size() < kMostTried) same.push_back(shared.size());
        shared.push_back(std::move(voice));
    }
    voices_ = std::move(shared);
}

// What must be mixed first, then backgrounds, then notes; of these the rarest first, and the short before the
// long, which would make their stems long.
std::vector<Voice*> Planner::MixingOrder() {
    std::vector<Voice*> order;
    for (Voice& voice : voices_) order.push_back(&voice);
    const auto key = [&](const Voice* voice) {
        return std::tuple(!voice->forced, voice->notes > 0, voice->notes > 0 ? voice->notes : voice->uses,
                          length_ms_[static_cast<size_t>(voice->numbers[0])]);
    };
    std::stable_sort(order.begin(), order.end(),
                     [&](const Voice* a, const Voice* b) { return key(a) < key(b); });
    return order;
}

// Numbers that are kept for stems: two each, so that loud ones can be split, but not more than half of all.
int64_t NumbersForStems(int64_t stems) {
    return stems <= kPlayerSounds / 4 ? 2 * stems : std::max<int64_t>(stems, kPlayerSounds / 2);
}

// Mixes voices until the others and the stems have numbers enough; one number stays without a file. False
// when that cannot be.
bool Planner::Mix(int32_t span) {
    std::vector<bool> used(kMeasures);
    int64_t stems = 0, own = Voices();
    for (Voice* voice : MixingOrder()) {
        if (!voice->forced && own + NumbersForStems(stems) <= kPlayerSounds - 1) break;
        voice->mixed = true;
        --own;
        for (const int32_t number : voice->numbers) {
            for (const int32_t use : uses_[static_cast<size_t>(number)]) {
                const size_t group =
                    static_cast<size_t>(plan_->events[static_cast<size_t>(use)].measure / span);
                stems += !used[group];
                used[group] = true;
            }
        }
    }
    return own + stems <= kPlayerSounds - 1;
}

void Planner::MixAll() {
    for (Voice& voice : voices_) voice.mixed = true;
}

void Planner::FillMixed(int32_t span, bool share) {
    std::vector<int32_t> mixed(kNumbers, -1);
    std::vector<double> lengths;
    plan_->mixed.clear();
    std::map<std::string_view, int32_t> of_name;
    for (const Voice& voice : voices_) {
        for (const int32_t number : voice.numbers) {
            if (!voice.mixed) continue;
            const std::string_view name = chart_.sounds[static_cast<size_t>(number)].value;
            const auto [it, fresh] = of_name.emplace(name, static_cast<int32_t>(plan_->mixed.size()));
            if (fresh) {
                plan_->mixed.emplace_back(name);
                lengths.push_back(length_ms_[static_cast<size_t>(number)]);
            }
            mixed[static_cast<size_t>(number)] = it->second;
        }
    }
    for (Event& event : plan_->events) {
        if (IsSound(event) || event.fate == Fate::kMixed)
            event.fate = mixed[static_cast<size_t>(event.number)] >= 0 ? Fate::kMixed : Fate::kOwn;
    }
    FillStems(times_, mixed, lengths, span, share, plan_);
}

void Planner::ChooseMixed() {
    const bool forced =
        std::any_of(voices_.begin(), voices_.end(), [](const Voice& voice) { return voice.forced; });
    if (!forced && Voices() + silent_notes_ <= kPlayerSounds) return;
    AskLengths();
    ShareNumbers();
    if (!forced && Voices() + silent_notes_ <= kPlayerSounds) return;
    plan_->needs |= kNeedMixing;
    if (Mix(1)) return FillMixed(1, false);
    MixAll();
    FillMixed(1, true);
    if (plan_->stems.size() < kPlayerSounds) {
        findings_->Add(Severity::kWarning, "shared-stems", {},
                       "so many measures have mixed sounds that measures of equal content share a stem");
        return;
    }
    int32_t span = 2;
    for (; span < kMostSpan; span *= 2) {
        for (Voice& voice : voices_) voice.mixed = false;
        if (Mix(span)) break;
    }
    FillMixed(span, false);
    findings_->Add(Severity::kWarning, "wide-stems", {}, [&] {
        return "so many measures have mixed sounds that a stem spans " + std::to_string(span) +
               " of them: mixed sounds are missing behind a jump into the middle of these";
    });
}

int32_t Planner::TakeNumber(const std::vector<bool>& taken, int32_t from) const {
    while (from <= kPlayerSounds && taken[static_cast<size_t>(from)]) ++from;
    return from;
}

// The author's numbers where the player has them all, else 1, 2, 3 ...
void Planner::Number() {
    const auto own = [](const Voice& voice) { return !voice.mixed; };
    const bool keep = std::all_of(voices_.begin(), voices_.end(), [](const Voice& voice) {
        return voice.mixed || (voice.numbers.size() == 1 && PlayerNumber(voice.numbers[0]) > 0);
    });
    std::vector<bool> taken(kPlayerSounds + 1);
    taken[0] = true;
    written_.assign(kNumbers, 0);
    int32_t next = 0;
    for (const Voice& voice : voices_) {
        if (!own(voice)) continue;
        next = keep ? PlayerNumber(voice.numbers[0]) : next + 1;
        taken[static_cast<size_t>(next)] = true;
        for (const int32_t number : voice.numbers) written_[static_cast<size_t>(number)] = next;
        const std::string_view name = chart_.sounds[static_cast<size_t>(voice.numbers[0])].value;
        plan_->sounds.push_back({next, std::string(name),
                                 options_.written_name ? options_.written_name(name) : std::string(name)});
    }
    std::sort(plan_->sounds.begin(), plan_->sounds.end(),
              [](const NamedFile& a, const NamedFile& b) { return a.number < b.number; });
    if (silent_notes_ || !plan_->mixed.empty()) {
        silent_ = TakeNumber(taken, 1);
        if (silent_ <= kPlayerSounds) taken[static_cast<size_t>(silent_)] = true;
    }
    for (int32_t n = TakeNumber(taken, 1); n <= kPlayerSounds; n = TakeNumber(taken, n + 1))
        plan_->free_numbers.push_back(n);
}

void Planner::NumberEvents() {
    for (Event& event : plan_->events) {
        if (event.kind == EventKind::kPicture || event.fate == Fate::kBeyond) continue;
        const bool note = event.kind != EventKind::kBackground;
        event.written = event.fate == Fate::kOwn ? written_[static_cast<size_t>(event.number)]
                        : note                   ? silent_
                                                 : 0;
    }
}

void Planner::Run() {
    FindUses();
    MakeVoices();
    ChooseMixed();
    Number();
    NumberEvents();
    NumberStems(plan_);
    if (plan_->mixed.empty()) return;
    findings_->Add(Severity::kNote, "mixed", {}, [&] {
        return std::to_string(plan_->mixed.size()) + " of " +
               std::to_string(plan_->mixed.size() + plan_->sounds.size()) + " sounds are mixed into " +
               std::to_string(plan_->stems.size()) + " stems";
    });
}

}  // namespace

void PlanSounds(const Chart& chart, const TimeMap& times, const Options& options, Plan* plan,
                Findings* findings) {
    Planner(chart, times, options, plan, findings).Run();
}

}  // namespace dialect
