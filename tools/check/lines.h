// The lines of a chart as the player splits them, with their places in the file.
#pragma once

#include "chart/reader.h"
#include "check/finding.h"

namespace check {

struct Line {
    Place place;          // of its first byte
    const char* raw;      // in the file's text
    const char* raw_end;  // after its last byte: a CR LF, a NUL or the end
    int length;           // of text
    char text[LINE_BUFFER];

    Place At(int64_t offset) const { return {place.line, static_cast<int32_t>(place.column + offset)}; }
};

class LineReader {
public:
    LineReader(const char* text, int64_t size);
    bool Next(Line* line);  // false at the end

private:
    LineScan scan_;
    const char* line_begin_;  // of the line of the file
    const char* counted_;     // LFs before this are in number_
    int32_t number_ = 1;
};

}  // namespace check
