// What there is to say about a chart: what has no counterpart in the player, and what was chosen for it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace dialect {

// In the author's file: lines end with CR LF, LF, CR or NUL, columns are bytes, both counted from 1.
struct Place {
    int32_t line = 0;  // 0: the whole chart
    int32_t column = 0;
};

enum class Severity {
    kError,    // something of the chart is lost
    kWarning,  // most likely not meant so, or heard or seen a little otherwise
    kNote,
};

struct Finding {
    Severity severity;
    const char* code;  // a static text
    Place place;
    std::string text;  // one sentence without a full stop
};

// Findings of a code that were not kept.
struct LeftOut {
    Severity severity;
    const char* code;
    int64_t count;
};

constexpr int64_t kMostOfOneCode = 100;  // findings that are kept, of each code and severity

class Findings {
public:
    explicit Findings(int64_t most_of_one_code = kMostOfOneCode) : most_(most_of_one_code) {}

    // `text` is a string, or a function that makes it, called only for what is kept.
    template <class Text>
    void Add(Severity severity, const char* code, Place place, Text text) {
        if (++CountOf(severity, code) > most_) return;
        if constexpr (std::is_invocable_v<Text>) {
            kept_.push_back({severity, code, place, text()});
        } else {
            kept_.push_back({severity, code, place, std::string(text)});
        }
    }
    std::vector<Finding> Take();  // those that were kept, in the order of the file
    std::vector<LeftOut> TellLeftOut() const;

private:
    int64_t& CountOf(Severity severity, const char* code);

    const int64_t most_;
    std::vector<Finding> kept_;
    std::vector<LeftOut> counts_;  // of all
};

// Foreign bytes for a finding: at most 60, control characters blanked, between backquotes.
std::string Quote(std::string_view bytes);

}  // namespace dialect
