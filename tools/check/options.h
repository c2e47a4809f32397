// The command line of lumetra-check.
#pragma once

#include <string>
#include <vector>

#include "check/settings.h"
#include "dialect/lines.h"

namespace check {

enum class Format { kText, kJson, kSarif, kGithub };

struct Options {
    std::vector<std::string> charts;  // files and folders; `-` is standard input
    Format format = Format::kText;
    Rules rules;
    bool color = false;
    bool statistics = false;
    bool all = false;   // text lists every finding
    bool fix = false;   // mend the files
    bool diff = false;  // print what fix would change
    bool modern = false;
    dialect::Choice choice;  // of branches, with modern
    unsigned jobs = 0;       // 0: one for each core
    std::string path;        // of the chart on standard input
    std::string explain;     // a code or `all`; empty: not given
};

extern const char kHelp[];

// Returns an error message, or an empty string.
std::string ParseOptions(int argc, const char* const* argv, Options* options);

}  // namespace check
