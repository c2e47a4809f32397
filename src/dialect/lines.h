// Lines of a chart file, and those of its branches that are taken.
#pragma once

#include <functional>
#include <string_view>
#include <vector>

#include "dialect/finding.h"

namespace dialect {

// A command of the file: it begins with `#`; blanks at both ends are gone.
struct Line {
    std::string_view text;
    Place place;         // of the `#`
    bool blanks_behind;  // that are gone
};

// What of the file's lines the player would read otherwise. Each makes the chart one to compile.
struct LineTraits {
    bool ends = false;       // lines that end with LF or CR alone
    bool mark = false;       // a byte-order mark hides the first command
    bool blanks = false;     // blanks before a command, tabulators in it
    bool long_line = false;  // more than 1,023 bytes
};

// The command lines of a chart in file order, views of its bytes.
std::vector<Line> ReadLines(std::string_view bytes, LineTraits* traits);

// How #RANDOM and #SWITCH choose.
struct Choice {
    enum Kind { kFirst, kSeed, kList };
    Kind kind = kFirst;
    uint64_t seed = 0;
    std::vector<int32_t>
        list;  // for each #RANDOM and #SWITCH that is reached; then 1. Held at the highest branch
};

// Leaves the lines of the branches that are taken, without the commands that control the flow. True when
// there were any.
bool TakeBranches(const Choice& choice, std::vector<Line>* lines, Findings* findings);

}  // namespace dialect
