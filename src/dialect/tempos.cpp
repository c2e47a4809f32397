#include "dialect/tempos.h"

#include <algorithm>
#include <cmath>

namespace dialect {

namespace {

// The knots that come to stand on one place of the grid.
struct Group {
    Fraction place;
    double value;
    double before, after;  // ms; objects here sound at `before`
    double bpm;
    bool exact;  // all of them stand on the place itself
};

// In a measure with more knots than this, they are put on a coarse grid: each line of the text has as many
// pairs as its grid. What is heard at the wrong time then is mixed.
constexpr ptrdiff_t kCrowd = 100;

Fraction CoarsePlace(const Knot& knot) {
    constexpr int32_t kGrid = kMostPairs / 2;
    return {std::min(static_cast<int32_t>(std::lround(knot.value * kGrid)), kGrid - 1), kGrid};
}

class Planner {
public:
    Planner(const TimeMap& times, double start_bpm, const std::vector<Event>& events)
        : times_(times), events_(events), current_(start_bpm) {}

    std::vector<Tempo> Run(bool* exact) {
        for (int32_t m = 0; m + 1 < times_.Measures(); ++m) {
            ReadGroups(m);
            while (next_event_ < events_.size() && events_[next_event_].measure < m) ++next_event_;
            for (size_t i = 0; i < groups_.size(); ++i) Place(m, i);
            for (const Group& group : groups_) *exact &= group.exact;
        }
        return std::move(tempos_);
    }

private:
    void ReadGroups(int32_t measure);
    void Place(int32_t measure, size_t index);
    double NextObject(int32_t measure, double place);
    void Emit(int32_t measure, Fraction place, double bpm) {
        if (bpm == current_) return;
        current_ = bpm;
        tempos_.push_back({measure, place, bpm});
    }

    const TimeMap& times_;
    const std::vector<Event>& events_;
    double current_;              // the player's tempo
    double reached_ = kLeadInMs;  // when the player reaches the next group
    bool crowd_ = false;
    size_t next_event_ = 0;
    std::vector<Group> groups_;
    std::vector<Tempo> tempos_;
};

// A knot that moves takes the line of time before it and the line behind it along.
void Planner::ReadGroups(int32_t measure) {
    groups_.clear();
    const double length = times_.Length(measure);
    double bpm = times_.Begin(measure)->bpm;
    crowd_ = times_.End(measure) - times_.Begin(measure) > kCrowd;
    for (const Knot* knot = times_.Begin(measure); knot != times_.End(measure); ++knot) {
        const Fraction place = crowd_ ? CoarsePlace(*knot) : NearestPlace(knot->place);
        const double shift = place.Value() - knot->value;
        if (groups_.empty() || groups_.back().value != place.Value()) {
            const double before = knot->ms + shift * length * (kMeasureMs / bpm);
            groups_.push_back({place, place.Value(), before, before, knot->bpm, shift == 0});
        }
        Group& group = groups_.back();
        group.exact &= shift == 0;
        if (knot->after > knot->ms || shift == 0) {
            group.after = std::max(group.before, knot->after + shift * length * (kMeasureMs / knot->bpm));
        }
        group.bpm = bpm = knot->bpm;
    }
}

// The first place of an event behind the given one, 1 when there is none in the measure.
double Planner::NextObject(int32_t measure, double place) {
    for (size_t i = next_event_; i < events_.size() && events_[i].measure == measure; ++i) {
        if (events_[i].place.Value() > place) return events_[i].place.Value();
        next_event_ = i;
    }
    return 1.0;
}

// Where a place was reached too late for a group, or too early, the tempo up to the next group makes up for
// it.
void Planner::Place(int32_t measure, size_t index) {
    constexpr double kOnTimeMs = 1e-4, kLeastMs = 1e-6;
    const Group& group = groups_[index];
    const bool last = index + 1 == groups_.size();
    const double next = last ? 1.0 : groups_[index + 1].value;
    const double next_ms = last ? times_.MeasureMs(measure + 1) : groups_[index + 1].before;
    const double length = times_.Length(measure);
    const auto tempo_for = [&](double span, double ms) { return kMeasureMs * span * length / ms; };
    const bool exact = group.exact && std::fabs(reached_ - group.before) < kOnTimeMs;
    const double from = exact ? group.before : reached_, after = std::max(from, group.after);
    const double left = std::max(next_ms - after, kLeastMs);
    const double bpm = exact ? group.bpm : tempo_for(next - group.value, left);
    reached_ = exact ? next_ms : after + left;
    if (group.after <= group.before) return Emit(measure, group.place, bpm);
    const double limit = crowd_ ? next : std::min(next, NextObject(measure, group.value));
    const Fraction behind = PlaceBehind(group.place, limit);
    const double span = behind.Value() - group.value;
    const double ms = std::max(after - from + span * length * (kMeasureMs / bpm), kLeastMs);
    Emit(measure, group.place, tempo_for(span, ms));
    if (behind.Value() < next) Emit(measure, behind, bpm);
}

}  // namespace

std::vector<Tempo> PlanTempos(const TimeMap& times, double start_bpm, const std::vector<Event>& events,
                              bool* exact) {
    *exact = true;
    return Planner(times, start_bpm, events).Run(exact);
}

// The two walks of the player's compiler. Terms and their order are the player's.
PlayerClock::PlayerClock(double start_bpm, const std::vector<double>& lengths,
                         const std::vector<Tempo>& tempos)
    : lengths_(lengths), tempos_(tempos), start_bpm_(start_bpm), bpm_(start_bpm) {
    double t = kLeadInMs, bpm = start_bpm;
    size_t i = 0;
    for (size_t m = 0; m < lengths.size(); ++m) {
        const double length = lengths[m];
        double w = kMeasureMs / bpm;
        starts_.push_back(t);
        double d = length * w;
        for (; i < tempos.size() && tempos[i].measure == static_cast<int32_t>(m); ++i) {
            const double r = 1.0 - tempos[i].place.Value();
            d = d - length * w * r;
            tempo_ms_.push_back(t + d);
            bpm = tempos[i].bpm;
            w = kMeasureMs / bpm;
            d = d + length * w * r;
        }
        t = t + d;
    }
}

double PlayerClock::Ms(int32_t measure, double place) {
    if (last_ < measure) {
        from_place_ = 0;
        from_ms_ = starts_[static_cast<size_t>(measure)];
    }
    last_ = measure;
    for (; next_ < tempos_.size(); ++next_) {
        const Tempo& tempo = tempos_[next_];
        if (tempo.measure + tempo.place.Value() > measure + place) break;
        bpm_ = tempo.bpm;
        if (tempo.measure == measure) {
            from_place_ = tempo.place.Value();
            from_ms_ = tempo_ms_[next_];
        }
    }
    return kMeasureMs / bpm_ * lengths_[static_cast<size_t>(measure)] * (place - from_place_) + from_ms_;
}

}  // namespace dialect
