// Compiles a chart of today to one that the player plays right: bytes in, a plan out, and from that the text
// of a chart in the player's own dialect. Pure functions: no files, no clock, no state.
#pragma once

#include <functional>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "dialect/events.h"
#include "dialect/finding.h"
#include "dialect/tempos.h"

namespace dialect {

struct FilmLook {
    double ms = 0;    // how long it lasts; 0: no film, or one that cannot be read
    double rate = 0;  // frames in a second
};

struct Options {
    Choice choice;
    uint32_t needs = 0;  // of enum Need: why the caller wants the chart compiled in any case
    int64_t most_findings = kMostOfOneCode;
    // How long the sound of this name lasts, in ms; negative when that is not known. Two numbers of one file
    // share one only where this tells that their sounds never overlap. Asked only when some must be mixed.
    std::function<double(std::string_view name)> sound_ms;
    // What the picture file of this name is when it is a film; when not set, films are pictures like others.
    std::function<FilmLook(std::string_view name)> film;
    // The name that the text has for a file that the author names; the same name when not set.
    std::function<std::string(std::string_view name)> written_name;
};

// A number of the text and the file that it plays or shows.
struct NamedFile {
    int32_t number;       // 1 to 575
    std::string name;     // as the author has it, blanks at its ends cut
    std::string written;  // in the text
};

constexpr double kWhole = std::numeric_limits<double>::infinity();

// One sound within a stem.
struct StemItem {
    int32_t sound;    // of Plan::mixed
    int32_t part;     // of its stem
    double start_ms;  // behind the stem's begin
    double cut_ms;    // the sound ends so long behind its own start; kWhole: it rings out
    Place source;
};

// Sounds that are mixed to one WAV or a few. It plays in the background, at the begin of its measures.
struct Stem {
    std::vector<int32_t> measures;   // the measures at whose begin it starts; several have equal content
    double begin_ms;                 // of the first of them
    int32_t parts = 1;               // WAV files, at least 1
    bool limited = false;            // the mix is to pass a limiter
    std::vector<int32_t> numbers;    // of the parts
    std::vector<std::string> names;  // of the parts, in the text
    std::vector<StemItem> items;     // in order of start
};

constexpr int32_t kSheetCells = 16, kSheetSide = 4, kCellSize = 256;

// Pictures put together, 4 by 4 cells of 256 by 256 pixels from the top left, row by row. A cell shows its
// picture as the player would: centred left to right, at the top, cut at 256 by 256, black around it.
struct Sheet {
    int32_t number;
    std::string name;                // of the BMP, in the text
    std::vector<std::string> cells;  // the author's names, at most kSheetCells
};

// A film as stills: frames at an even rate from its begin on, each a cell of its sheets.
struct Film {
    std::string name;           // as the author has it
    double ms = 0;              // how long it lasts
    double rate = 0;            // stills in a second
    int32_t stills = 0;         // 0: there was no number left
    std::vector<Sheet> sheets;  // full but for the last, their cells have no names
};

// A rectangle of a picture: #BGAxx of the text.
struct WrittenCut {
    int32_t number;   // 1 to 1295
    int32_t picture;  // number of a picture or sheet
    int32_t x1, y1, x2, y2, dx, dy;
};

// All that is decided about a chart. Owns its texts.
struct Plan {
    bool unchanged = false;  // the file plays as it stands; only needs, events and findings are filled then
    uint32_t needs = 0;      // of enum Need: why not
    std::vector<Finding> findings;
    std::vector<LeftOut> findings_left_out;
    std::vector<Event> events;  // in order of place
    std::vector<std::string> headers;
    double bpm = 130;
    std::vector<double> lengths;  // of the measures that are used
    std::vector<Tempo> tempos;
    std::vector<NamedFile> sounds;
    std::vector<std::string> mixed;  // the author's names of sounds that stems hold
    std::vector<Stem> stems;
    std::string stem_head;              // what the names of stems begin with; also when unchanged
    std::vector<int32_t> free_numbers;  // for stems: their parts take the first of these
    std::vector<NamedFile> pictures;
    std::vector<Sheet> sheets;
    std::vector<Film> films;
    std::vector<WrittenCut> cuts;
};

Plan MakePlan(std::string_view bytes, const Options& options);

// How many parts the stems may have beyond what they have.
int32_t SpareParts(const Plan& plan);
// Gives the stems' parts their numbers and names. To be called again when stems were split.
void NumberStems(Plan* plan);

// The text, with CR LF. Of a plan that is not unchanged. When it would take more than kMostTextBytes it is
// empty.
constexpr size_t kMostTextBytes = size_t{64} << 20;
std::string WriteText(const Plan& plan);
// The same. A plan whose text is too large becomes unchanged, with a finding.
std::string WriteOrLeave(Plan* plan);

// How much of a chart is heard when the player reads its file as it stands.
struct Verdict {
    int64_t asked = 0;     // sounds that the chart starts, of numbers with a file
    int64_t played = 0;    // of these, at their time and from their file
    int64_t wrong = 0;     // sounds that the player starts and the chart does not ask for
    bool refused = false;  // the player takes the file for no chart
};
Verdict Judge(std::string_view bytes, const Options& options);
// The same for the text that MakePlan and WriteText make of it. A sound in a stem counts as heard where the
// stem starts it.
Verdict JudgeCompiled(std::string_view bytes, const Options& options);

}  // namespace dialect
