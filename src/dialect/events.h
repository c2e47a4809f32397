// What of a chart has a time: sounds and pictures.
#pragma once

#include <string>
#include <vector>

#include "dialect/chart.h"
#include "dialect/times.h"

namespace dialect {

enum class EventKind : uint8_t {
    kBackground,
    kNote,
    kLongNote,  // from ms to end_ms
    kPicture,
};

// How an event is played.
enum class Fate : uint8_t {
    kOwn,     // from the file that the author names
    kMixed,   // its sound is part of a stem
    kSilent,  // its number names no file
    kBeyond,  // behind the end of the player's clock
};

struct Event {
    double at;       // measure + place as the author has it
    double ms;       // chart time
    double end_ms;   // ms but for long notes
    Fraction place;  // on the player's grid
    int32_t measure;
    int32_t channel;  // of the compiled text: long notes stand on the channels of notes
    int32_t number;   // the author's
    int32_t written;  // in the compiled text; 0: not there
    Place source;     // the author's line and column
    EventKind kind;
    Fate fate;
    bool moved;  // the place is not exactly the author's
};

// The events in order of place. Long notes are joined to one event each, their ends make no sound. needs:
// what long notes add to it.
std::vector<Event> MakeEvents(const Chart& chart, const TimeMap& times, uint32_t* needs, Findings* findings);

}  // namespace dialect
