// The command line of lumetra-render.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "dialect/lines.h"

namespace render {

// A place in the chart of which a picture is wanted.
struct PicturePlace {
    std::string text;  // as given; becomes part of the file name
    bool in_measure;   // otherwise milliseconds
    double value;      // chart time in ms, or measure number with a fraction
};

// Where a preview begins.
struct PassageStart {
    enum Kind { kDensest, kMeasure, kSeconds, kPercent } kind = kDensest;
    double value =
        0;  // a measure with a fraction; seconds of the rendered sound; percent of the chart's length
};

struct AudioQuality {
    int bits = 16;        // or 24; of WAV and FLAC
    bool floats = false;  // 32 bits; of WAV alone
};

struct Options {
    std::string chart;
    std::vector<std::string> charts;  // of --preview: charts and folders
    std::string wav, video, trace;    // empty: not wanted; "-": standard output (not for video)
    std::string png_folder;
    std::vector<PicturePlace> places;
    int from = -1, to = -1;  // measures, both included; -1: from the lead-in, to the end
    std::string speed;       // empty: 1.0
    int fps = 60;
    int size = 1;       // enlargement factor
    bool exact = true;  // one more frame at the time of each record; otherwise the player's frames alone
    bool force = false;
    bool modern = false;     // charts are compiled first
    dialect::Choice choice;  // of branches, when they are
    std::string audio;       // empty: not wanted
    AudioQuality quality;
    std::optional<double> loudness;  // LUFS
    bool preview = false, trim = false;
    double length = 30, fade = -1;  // of a preview, seconds; fade -1: none given, ParseOptions sets it
    PassageStart start;
    std::string output_dir;
    std::string strip;  // empty: not wanted
};

// Returns false when the line is wrong; *why then says how.
bool ParseOptions(int argc, const char* const* argv, Options* options, std::string* why);

extern const char kHelp[];

}  // namespace render
