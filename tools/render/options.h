// The command line of lumetra-render.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace render {

// A place of the chart for which a picture is asked.
struct PicturePlace {
    std::string text;  // as it was given; names the picture
    bool in_measure;   // else milliseconds
    double value;      // chart time in ms, or measure number with its part
};

struct Options {
    std::string chart;
    std::string wav, video, trace;  // empty: not asked for; "-": standard output, not for video
    std::string png_folder;
    std::vector<PicturePlace> places;
    int from = -1, to = -1;  // measures, both included; -1: from the lead-in, to the end
    std::string speed;       // empty: 1.0
    int fps = 60;
    int size = 1;  // whole factor of enlargement
};

enum class Parse { kRun, kHelp, kVersion, kWrong };

// kWrong: *why says what is wrong with the line.
Parse ParseOptions(int argc, const char* const* argv, Options* options, std::string* why);

extern const char kHelp[];

}  // namespace render
