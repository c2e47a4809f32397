// The command line of lumetra-render.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace render {

// A place in the chart of which a picture is wanted.
struct PicturePlace {
    std::string text;  // as given; becomes part of the file name
    bool in_measure;   // otherwise milliseconds
    double value;      // chart time in ms, or measure number with a fraction
};

struct Options {
    std::string chart;
    std::string wav, video, trace;  // empty: not wanted; "-": standard output (not for video)
    std::string png_folder;
    std::vector<PicturePlace> places;
    int from = -1, to = -1;  // measures, both included; -1: from the lead-in, to the end
    std::string speed;       // empty: 1.0
    int fps = 60;
    int size = 1;       // enlargement factor
    bool exact = true;  // one more frame at the time of each record; otherwise the player's frames alone
    bool force = false;
};

// Returns false when the line is wrong; *why then says how.
bool ParseOptions(int argc, const char* const* argv, Options* options, std::string* why);

extern const char kHelp[];

}  // namespace render
