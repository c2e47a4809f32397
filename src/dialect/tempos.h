// The tempos of the compiled text: the player knows no stops, and no places off its grid.
#pragma once

#include <vector>

#include "dialect/events.h"

namespace dialect {

struct Tempo {
    int32_t measure;
    Fraction place;
    double bpm;
};

// Tempos with which the player reaches every place when the chart means it. A stop becomes a slow tempo up to
// a place close behind it, in front of the next object. exact: whether all places are reached exactly, as far
// as they are on the grid.
std::vector<Tempo> PlanTempos(const TimeMap& times, double start_bpm, const std::vector<Event>& events,
                              bool* exact);

// The player's own arithmetic: walks forward through a chart's measures and tempos and gives times as the
// player has them, to the last bit.
class PlayerClock {
public:
    // lengths: of measures 0 to lengths.size() - 1. tempos: in order of place; on equal places the last
    // holds.
    PlayerClock(double start_bpm, const std::vector<double>& lengths, const std::vector<Tempo>& tempos);

    // Calls must come in order of place.
    double Ms(int32_t measure, double place);

private:
    const std::vector<double>& lengths_;
    const std::vector<Tempo>& tempos_;
    std::vector<double> starts_, tempo_ms_;
    double start_bpm_, bpm_, from_place_ = 0, from_ms_ = kLeadInMs;
    size_t next_ = 0;
    int32_t last_ = 0;
};

}  // namespace dialect
