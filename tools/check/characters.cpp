#include "check/characters.h"

#include <algorithm>
#include <cstring>

#include "check/finding.h"
#include "platform/files/text.h"

namespace check {
namespace {

// Two-byte sequences are also pairs of half-width katakana; longer ones make no sense in CP932.
bool IsSurelyUtf8(std::string_view line) {
    const auto leads_three = [](char c) { return static_cast<unsigned char>(c) >= 0xE0; };
    return std::any_of(line.begin(), line.end(), leads_three) && IsUtf8(line);
}

}  // namespace

CharacterCounter::CharacterCounter(std::string_view text) : text_(text), utf8_text_(IsUtf8(text)) {
    BeginLine(text.data());
}

void CharacterCounter::BeginLine(const char* line) {
    line_ = to_ = line;
    characters_ = 0;
    if (utf8_text_) return;
    const size_t at = static_cast<size_t>(line - text_.data());
    utf8_ = IsSurelyUtf8(text_.substr(at, text_.find('\n', at) - at));
}

// Of a text whose end is not reached in the middle of a character: counts that one.
int32_t CharacterCounter::Count(const char* from, const char* to) const {
    int32_t count = 0;
    for (const char* p = from; p < to; ++p, ++count) {
        const auto c = static_cast<unsigned char>(*p);
        if (utf8_)
            while (p + 1 < to && (static_cast<unsigned char>(p[1]) & 0xC0) == 0x80) ++p;
        else if (IsCp932Lead(c) && p + 1 < to && Cp932CodePoint(p, 2) != 0)
            ++p;
    }
    return count;
}

void CharacterCounter::MoveTo(int32_t line, int32_t column) {
    const char* end = text_.data() + text_.size();
    const char* begin = line_;
    for (; number_ < line; ++number_) {
        const void* lf = std::memchr(begin, '\n', static_cast<size_t>(end - begin));
        begin = lf ? static_cast<const char*>(lf) + 1 : end;
    }
    if (begin != line_) BeginLine(begin);
    CountTo(line_ + std::min<int64_t>(column - 1, end - line_));
}

void CharacterCounter::MoveTo(int64_t offset) {
    const char *to = text_.data() + offset, *begin = line_;
    while (const void* lf =
               begin < to ? std::memchr(begin, '\n', static_cast<size_t>(to - begin)) : nullptr) {
        begin = static_cast<const char*>(lf) + 1;
        ++number_;
    }
    if (begin != line_) BeginLine(begin);
    CountTo(to);
}

void CharacterCounter::CountTo(const char* to) {
    const bool mark = to_ == text_.data() && text_.starts_with("\xEF\xBB\xBF");  // no character of the text
    if (to > to_) characters_ += Count(to_, to) - mark;
    to_ = std::max(to_, to);
}

void Findings::FindColumns(std::string_view text) {
    CharacterCounter counter(text);
    for (Finding& finding : kept_) {
        counter.MoveTo(finding.place.line, finding.place.column);
        finding.character = counter.Character();
        finding.offset = counter.Offset();
    }
}

}  // namespace check
