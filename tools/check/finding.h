// What the checker has to say about a chart.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace check {

enum class Severity {
    kError,    // something that the chart says is not played, or not as it says
    kWarning,  // most likely not meant so
    kNote,     // without effect, or of interest for other players only
};

// Where in the chart's file: lines are counted by their LF, columns in bytes, both from 1.
struct Place {
    int32_t line = 0;  // 0: nowhere
    int32_t column = 0;
};

struct Finding {
    Place place;
    Severity severity;
    const char* code;  // stable; docs/check.md has them all
    std::string text;
};

// The findings of one chart. Of each code a bounded number is kept, the others are counted: a file may have
// an offence in each of a hundred million lines.
class Findings {
public:
    static constexpr int64_t kMostOfOneCode = 1000;

    // make() gives the sentence; it is called only when the finding is kept.
    template <class Make>
    void Add(Place place, Severity severity, const char* code, Make make) {
        ++counts_[static_cast<int>(severity)];
        if (++of_code_[code] <= kMostOfOneCode) kept_.push_back({place, severity, code, make()});
    }

    int64_t Count(Severity severity) const { return counts_[static_cast<int>(severity)]; }
    void Sort();  // by place
    const std::vector<Finding>& Kept() const { return kept_; }
    std::map<std::string_view, int64_t> LeftOut() const;  // by code, those that were only counted

private:
    int64_t counts_[3] = {};
    std::map<std::string_view, int64_t> of_code_;
    std::vector<Finding> kept_;
};

const char* NameOf(Severity severity);

// Bytes of a chart for a sentence: in quotes, as the player shows them, on one line and of bounded length.
std::string Quote(std::string_view bytes);

// "1 line", "5 lines"
std::string CountOf(int64_t count, const char* thing);

// "its object makes no sound", "its 5 objects make no sound": verb and rest are those of the plural.
std::string ItsObjects(int64_t count, const char* verb, const char* rest);

}  // namespace check
