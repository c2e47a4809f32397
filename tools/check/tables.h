// What the lines of a chart define and what its objects use, with the places.
#pragma once

#include <string>
#include <vector>

#include "chart/bms.h"
#include "check/finding.h"

namespace check {

struct Definition {
    Place place;         // of the line that takes effect; line 0: not defined
    std::string name;    // of a file, as written
    std::string path;    // of a file, as the player opens it
    double tempo = 0.0;  // of an extended tempo
    bool made = false;   // the file is no author's: a stem or a sheet of a compiled chart

    // Of the name of a file: it begins after the blank in column 7.
    Place NamePlace() const { return {place.line, place.column + 7}; }
};

struct Use {
    Place place;  // of the first with an effect, else of the first
    int64_t objects = 0;
    int64_t invisible = 0;  // of these, those on invisible lanes
    Place early;            // tempos: the first use above the definition
    int64_t early_objects = 0;
};

// The pair that an object of the player's lists comes from. The lists are in file order.
struct Source {
    Place place;
    int32_t number;  // of its pair
};

struct Tables {
    std::vector<Definition> sounds = std::vector<Definition>(BMS_SLOTS);
    std::vector<Definition> pictures = std::vector<Definition>(BMS_SLOTS);
    std::vector<Definition> tempos = std::vector<Definition>(BMS_SLOTS);
    std::vector<Definition> bgas = std::vector<Definition>(BMS_BGADEFS);
    std::vector<Use> sound_uses = std::vector<Use>(BMS_SLOTS);
    std::vector<Use> picture_uses = std::vector<Use>(BMS_BGADEFS);  // pictures and definitions
    std::vector<Use> tempo_uses = std::vector<Use>(BMS_SLOTS);
    std::vector<bool> folded_pictures = std::vector<bool>(BMS_BGADEFS);  // #BMP lines beyond FZ, as written
    std::vector<Source> bgm, notes, bga, changes;
    int64_t commands = 0;       // lines with an effect
    int64_t comments = 0;       // lines that neither are commands nor look like them
    int32_t last_acting = -1;   // the highest measure with an object that has an effect
    int32_t last_measure = -1;  // the highest that counts for the chart's length
    Place last_place;           // of the line with that measure
    std::vector<Place> lengths = std::vector<Place>(1000);  // of channel 02 lines, by measure
    Place first_tempo;                                      // of a #BPM line
};

// A number as two digits: `0Z`.
std::string IdOf(int32_t number);

}  // namespace check
