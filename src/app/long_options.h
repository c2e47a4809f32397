// The long options, which stand beside the system's command line.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace app {

// Exit codes of the long commands.
constexpr int kDone = 0, kWrongUse = 2, kRefused = 3, kNoneRuns = 4, kCannotTake = 5, kNotStarted = 255;

enum class Verb { kNone, kOpen, kStatus, kPlay, kStop, kRestart, kSeek, kSpeed, kQuit };

struct LongOptions {
    Verb verb = Verb::kNone;  // kNone: the line is the system's
    std::string error;        // wrong use: what to say; empty otherwise
    std::string file;         // of --open, as it was given; empty: ask for one
    std::optional<int> measure, line;
    std::optional<double> speed;
    bool modern = false;  // charts of today are compiled
    bool watch = false;   // the chart is loaded anew when it is written
    bool wait = false, foreground = false, follow = false;
    std::vector<std::string> passed;  // options for a player that is started
};

// Removes a flag from before the chart's name. Whether it was there, or the variable asks for it: any value
// but an empty one or 0.
bool TakeFlag(int* argc, char** argv, const char* flag, const char* variable);

// Looks for a long command before the chart's name.
LongOptions ParseLongOptions(int argc, const char* const* argv);

}  // namespace app
