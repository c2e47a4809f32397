// The two kinds of command lines.
#pragma once

#include "dialect/chart.h"

namespace dialect {

// What the readers of single lines share.
struct Reader {
    Chart* chart;
    Findings* findings;
    const DigitTable* digits;
    std::vector<bool> told;          // channels without effect that were told
    std::vector<std::string> words;  // likewise words
    int32_t sounds_before = 0;
};

// `#mmmcc:data`. False for any other line.
bool ReadChannelLine(const Line& line, Reader* reader);
// Every other command.
void ReadKeywordLine(const Line& line, Reader* reader);
// The base of a chart's numbers, by its last #BASE.
int ReadBase(const std::vector<Line>& lines);

}  // namespace dialect
