// The command line of lumetra-convert.
#pragma once

#include <string>

#include "dialect/lines.h"

namespace convert {

// Values are the exit codes of the program.
enum ExitCode { kGood = 0, kUsage = 1, kChart = 2, kOutput = 3 };

struct Options {
    std::string chart, folder;
    bool copy = false;     // copies instead of links
    bool dry_run = false;  // tells what would be written
    bool all = false;      // every finding
    dialect::Choice choice;
};

// Returns false when the line is wrong; *why then says how.
bool ParseOptions(int argc, const char* const* argv, Options* options, std::string* why);

extern const char kHelp[];

}  // namespace convert
