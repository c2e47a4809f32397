// When a place of a chart is reached. Times are chart times: measure 0 begins at 1,000 ms.
#pragma once

#include <vector>

#include "dialect/chart.h"

namespace dialect {

constexpr double kLeadInMs = 1000.0;
constexpr double kMeasureMs = 240000.0;  // a measure of length 1 at 1 BPM
constexpr double kMostMs = 2.0e9;        // the player's clock ends a little behind: 23 days

// A change of the tempo or a stop, or both, at one place.
struct Knot {
    Fraction place;
    double value;  // of the place
    double ms;     // the place is reached, and its objects sound
    double after;  // the stop is over
    double bpm;    // from here on
};

// The knots of all measures. The first of each measure stands at its begin and may change nothing.
class TimeMap {
public:
    // Of the chart's sorted objects. Findings tell of tempos and stops that mean nothing.
    TimeMap(const Chart& chart, Findings* findings);

    int32_t Measures() const { return static_cast<int32_t>(first_.size()) - 1; }
    const Knot* Begin(int32_t measure) const { return knots_.data() + first_[static_cast<size_t>(measure)]; }
    const Knot* End(int32_t measure) const { return Begin(measure + 1); }
    double MeasureMs(int32_t measure) const { return Begin(measure)->ms; }
    double Length(int32_t measure) const { return lengths_[static_cast<size_t>(measure)]; }
    // When the place is reached; place 1 is the end of the measure.
    double MsAt(int32_t measure, double place) const;
    bool HasStops() const { return has_stops_; }
    bool HasTroubles() const { return has_troubles_; }  // something that the player reads otherwise

private:
    void AddMeasure(int32_t measure, const std::vector<struct Change>& changes, size_t* next, Knot* last);

    std::vector<Knot> knots_;
    std::vector<size_t> first_;
    std::vector<double> lengths_;
    bool has_stops_ = false, has_troubles_ = false;
};

}  // namespace dialect
