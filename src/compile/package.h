// A chart of today with its files: the text that the player plays, and the bytes of the files that the text
// names beside the author's own.
#pragma once

#include <cstdint>
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

struct Settings {
    dialect::Choice choice;
    // Names that lead out of the chart's folder, and names that this machine has under an absolute path, are
    // written as names of this kind in the text, "PREFIXnamed-001.wav"; false: as the author has them.
    bool own_names = false;
};

// A file that does not exist: a stem or a sheet.
struct MadeFile {
    std::string name;  // in the text: no folders, letters, digits, `-` and `.`
    MediaKind kind;
    // Safe on any thread, also several at once. Shares the decoded sounds with the others of its package, at
    // most 512 MiB of them, and lives without the package.
    FileMaker make;
};

// A file of the author's that the text names.
struct UsedFile {
    std::string name;     // as the author has it
    std::string written;  // in the text
    MediaKind kind;
    std::string path;  // on this machine, also of a substitute; empty: it is not there
};

struct Package {
    bool unchanged = false;  // the chart's own bytes are to be played; text and made are empty
    std::string text;
    std::vector<MadeFile> made;
    std::vector<UsedFile> used;  // each path of it once for each name
    std::vector<dialect::Finding> findings;
    uint32_t needs = 0;  // of enum dialect::Need
};

// folder: what stands before the names when they are opened, with its closing separator, as FileOpen takes
// it; empty for the working directory. The player opens made files as folder + name, cut to 259 bytes.
// Decodes sounds that are to be mixed, on all cores; calls nothing of the door. A chart that needs nothing
// opens no file, and its list of used files is left empty unless list_used.
Package CompileChart(std::string_view bytes, const std::string& folder, const Settings& settings,
                     bool list_used = false);

// How long the sound of a name lasts when the player opens it, in ms; negative when it cannot be read.
// Decodes it. Safe on any thread.
double SoundMs(const std::string& name);

}  // namespace compile
