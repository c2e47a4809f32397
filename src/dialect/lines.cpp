#include <cstring>

#include "dialect/lines.h"
#include "dialect/text.h"

namespace dialect {

namespace {

const char* Find(const char* from, const char* end, char c) {
    const void* found = std::memchr(from, c, static_cast<size_t>(end - from));
    return found ? static_cast<const char*>(found) : end;
}

// Walks the three kinds of line end, each looked for ahead once, so that a text without one of them costs no
// more than any other.
class Walk {
public:
    Walk(const char* begin, const char* end) : next_(begin), end_(end) {}

    bool Done() const { return next_ >= end_; }

    std::string_view Take(LineTraits* traits) {
        const char* begin = next_;
        const char* stop = Nearest();
        next_ = stop;
        if (stop < end_) {
            const bool both = *stop == '\r' && stop + 1 < end_ && stop[1] == '\n';
            traits->ends |= !both && *stop != '\0';
            next_ += both ? 2 : 1;
        }
        return {begin, static_cast<size_t>(stop - begin)};
    }

private:
    const char* Nearest() {
        const char* nearest = end_;
        for (int i = 0; i < 3; ++i) {
            if (!ahead_[i] || ahead_[i] < next_) ahead_[i] = Find(next_, end_, "\r\n"[i]);
            if (ahead_[i] < nearest) nearest = ahead_[i];
        }
        return nearest;
    }

    const char* next_;
    const char* end_;
    const char* ahead_[3] = {};
};

}  // namespace

std::vector<Line> ReadLines(std::string_view bytes, LineTraits* traits) {
    constexpr std::string_view kMark = "\xEF\xBB\xBF";
    const bool mark = bytes.substr(0, kMark.size()) == kMark;
    if (mark) bytes.remove_prefix(kMark.size());
    std::vector<Line> lines;
    lines.reserve(bytes.size() / 64);
    Walk walk(bytes.data(), bytes.data() + bytes.size());
    for (int32_t number = 1; !walk.Done(); ++number) {
        const std::string_view raw = walk.Take(traits);
        size_t begin = 0;
        while (begin < raw.size() && IsBlank(raw[begin])) ++begin;
        if (begin == raw.size() || raw[begin] != '#') continue;
        const int32_t column = static_cast<int32_t>(begin + 1 + (mark && number == 1 ? kMark.size() : 0));
        lines.push_back({TrimBlanks(raw.substr(begin)), {number, column}, IsBlank(raw.back())});
        traits->mark |= mark && number == 1;
        traits->blanks |= begin > 0 || std::memchr(raw.data(), '\t', raw.size());
        traits->long_line |= raw.size() > 1023;
    }
    return lines;
}

}  // namespace dialect
