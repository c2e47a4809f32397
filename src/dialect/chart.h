// A chart of today as its file says it: definitions, headers, and the objects of its channel lines.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "dialect/channels.h"
#include "dialect/fraction.h"
#include "dialect/lines.h"
#include "dialect/text.h"

namespace dialect {

constexpr int32_t kMeasures = 1000;  // 000 to 999

// Bounds on what is compiled. A chart beyond them is left as it is.
constexpr size_t kMostBytes = size_t{64} << 20;
constexpr size_t kMostObjects = size_t{2} << 20;

// One pair of a channel line that is not 00.
struct Object {
    double at;  // measure + place; equal only for equal places
    Fraction place;
    int16_t measure;
    int16_t channel;
    int16_t number;  // base-62 digits; on channel 03 the tempo in BPM
    Place source;
};

struct Definition {
    std::string_view value;  // empty: not defined
    Place source;
};

// A rectangle of a picture, from #BGAxx or #@BGAxx.
struct PictureCut {
    int32_t picture = -1;  // -1: not defined
    int32_t x1, y1, x2, y2, dx, dy;
    Place source;
};

// #STP: a stop of so many milliseconds.
struct TimedStop {
    int32_t measure;
    Fraction place;
    double ms;
    Place source;
};

// Why the player would not play the file as it stands.
enum Need : uint32_t {
    kNeedNothing = 0,
    kNeedLines = 1 << 0,    // line ends, a byte-order mark, long lines, blanks and tabulators
    kNeedFlow = 1 << 1,     // #RANDOM, #SWITCH
    kNeedNumbers = 1 << 2,  // numbers beyond FZ, base 62
    kNeedLongNotes = 1 << 3,
    kNeedTimes = 1 << 4,    // stops, tempos and lengths that are read otherwise
    kNeedOverlay = 1 << 5,  // two lines of one channel, one object on the other
    kNeedPictures = 1 << 6,
    kNeedMeasure = 1 << 7,  // nothing behind measure 0
    kNeedNames = 1 << 8,    // names of files that are read otherwise
    kNeedMixing = 1 << 9,   // more sounds than numbers, or places off the player's grid
};

struct Chart {
    // Views of the file's bytes; the numbers index 62 * 62 entries.
    std::vector<Definition> sounds, pictures;
    std::vector<PictureCut> cuts;       // empty when there is none
    std::vector<double> tempos, stops;  // NaN: not defined
    std::vector<std::string> headers;   // the lines that the player reads too, in order
    std::vector<TimedStop> timed_stops;
    std::vector<Object> objects;  // in file order; ReadChart's caller sorts them
    std::vector<double> lengths;  // of each measure
    double bpm = 130;
    int32_t long_type = 1;
    int32_t long_end = -1;  // the number of #LNOBJ
    int32_t last_measure = -1;
    uint32_t needs = 0;
    bool too_large = false;
};

// The views point into bytes.
Chart ReadChart(std::string_view bytes, const Choice& choice, Findings* findings);

// Puts the objects in order of place, and on all channels but 01 leaves the last of those on one place.
void SortObjects(Chart* chart);

}  // namespace dialect
