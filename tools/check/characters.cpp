// Columns in characters, for programs that do not count bytes.
#include <algorithm>
#include <cstring>

#include "check/finding.h"
#include "platform/files/text.h"

namespace check {
namespace {

// Of a text whose end is not reached in the middle of a character: counts that one.
int32_t CountCharacters(const char* from, const char* to, bool utf8) {
    int32_t count = 0;
    for (const char* p = from; p < to; ++p, ++count) {
        const auto c = static_cast<unsigned char>(*p);
        if (utf8)
            while (p + 1 < to && (static_cast<unsigned char>(p[1]) & 0xC0) == 0x80) ++p;
        else if (IsCp932Lead(c) && p + 1 < to)
            ++p;
    }
    return count;
}

}  // namespace

void Findings::CountCharacterColumns(std::string_view text) {
    const bool utf8 = IsUtf8(text);
    const char *end = text.data() + text.size(), *line = text.data(), *counted = line;
    int32_t number = 1, characters = 0;
    for (Finding& finding : kept_) {
        for (; number < finding.place.line; ++number) {
            const void* lf = std::memchr(line, '\n', static_cast<size_t>(end - line));
            line = counted = lf ? static_cast<const char*>(lf) + 1 : end;
            characters = 0;
        }
        const char* to = line + std::min<int64_t>(finding.place.column - 1, end - line);
        if (to > counted) characters += CountCharacters(counted, to, utf8);
        counted = std::max(counted, to);
        finding.character = characters + 1;
    }
}

}  // namespace check
