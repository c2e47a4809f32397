#include "check/lines.h"

#include <cstring>

namespace check {

LineReader::LineReader(const char* text, int64_t size) : line_begin_(text), counted_(text) {
    StartLines(&scan_, text, size);
}

bool LineReader::Next(Line* line) {
    const char* begin = scan_.pNext;
    while (const void* lf = std::memchr(counted_, '\n', static_cast<size_t>(begin - counted_))) {
        counted_ = line_begin_ = static_cast<const char*>(lf) + 1;
        ++number_;
    }
    counted_ = begin;
    const char* found = NextLine(&scan_, &line->length);
    if (!found) return false;
    CopyLine(found, line->length, line->text);
    line->place = {number_, static_cast<int32_t>(begin - line_begin_ + 1)};
    line->raw = begin;
    line->raw_end = scan_.pLineEnd;
    return true;
}

}  // namespace check
