// Columns in characters, for programs that do not count bytes.
#pragma once

#include <cstdint>
#include <string_view>

namespace check {

// Finds places in a text, which have to come in order. A text that is not UTF-8 as a whole is CP932, except
// for lines that can hardly be anything but UTF-8.
class CharacterCounter {
public:
    explicit CharacterCounter(std::string_view text);
    void MoveTo(int32_t line, int32_t column);  // as Place has them
    void MoveTo(int64_t offset);
    int32_t Line() const { return number_; }
    int64_t Offset() const { return to_ - text_.data(); }
    int32_t Character() const { return characters_ + 1; }  // its column in characters

private:
    void BeginLine(const char* line);
    void CountTo(const char* to);  // in the current line
    int32_t Count(const char* from, const char* to) const;

    std::string_view text_;
    const bool utf8_text_;
    bool utf8_ = true;        // the current line
    const char *line_, *to_;  // its begin, and the place
    int32_t number_ = 1, characters_ = 0;
};

}  // namespace check
