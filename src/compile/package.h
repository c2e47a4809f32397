// A chart of today with its files: the text that the player plays, and the bytes of the files that the text
// names beside the author's own.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "dialect/dialect.h"
#include "platform/substitutes/door.h"
#include "platform/substitutes/media.h"

namespace compile {

// What the stems of a chart may take together, as WAV bytes; those behind it are left out, with a finding.
constexpr uint64_t kMostStemBytes = uint64_t{2} << 30;
constexpr int kStemRate = 44100;  // Hz; stems are 16 bits and stereo

// A file of the author's that the text names.
struct UsedFile {
    std::string name;     // as the author has it
    std::string written;  // in the text
    MediaKind kind;
    std::string path;       // on this machine, also of a substitute; empty: it is not there
    dialect::Place source;  // of the line that names it
};

struct Settings {
    dialect::Choice choice;
    int64_t most_findings = dialect::kMostOfOneCode;  // that are kept, of each code and severity
    bool list_used = false;  // fill Package::used; looks for all files and decodes substitutes
    // Asked on any thread, also by the makers. Once true, files are passed over, so that all ends soon.
    std::function<bool()> stopped;
    // What the film of this path is; when not set, films stay blank. Called on one thread.
    std::function<dialect::FilmLook(const std::string& path)> film;
    // The name that the text has for a used file, when set. A chart that needs nothing else is changed for
    // it. Asked again, it answers the same. `own` is a beginning that no name of the chart has.
    std::function<std::string(const UsedFile& file, const std::string& own)> written_name;
};

// A file that does not exist: a stem or a sheet.
struct MadeFile {
    std::string name;  // in the text: no folders, letters, digits, `-` and `.`
    MediaKind kind;
    // Safe on any thread, also several at once. Shares the decoded sounds with the others of its package, at
    // most 1 GiB of them, and lives without the package.
    FileMaker make;
};

// A film that is shown as stills. Its sheets are no made files: the caller makes them.
struct FilmFile {
    std::string path;  // on this machine
    dialect::Film film;
};

struct Package {
    bool unchanged = false;  // the chart's own bytes are to be played; text and made are empty
    std::string text;
    std::vector<MadeFile> made;
    std::vector<FilmFile> films;
    std::vector<UsedFile> used;  // sounds, then pictures; when asked for
    std::vector<dialect::Finding> findings;
    std::vector<dialect::LeftOut> findings_left_out;
    uint32_t needs = 0;  // of enum dialect::Need
};

// folder: what stands before the names when they are opened, with its closing separator, as FileOpen takes
// it; empty for the working directory. The player opens made files as folder + name, cut to 259 bytes.
// Decodes sounds that are to be mixed, on all cores; uses nothing of the door. A chart that needs nothing
// costs its reading.
Package CompileChart(std::string_view bytes, const std::string& folder, const Settings& settings);

}  // namespace compile
