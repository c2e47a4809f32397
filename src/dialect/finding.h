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

constexpr int32_t kMostOfOneCode = 100;  // findings of a code that are kept with their place

class Findings {
public:
    // `text` is a string, or a function that makes it, called only for what is kept.
    template <class Text>
    void Add(Severity severity, const char* code, Place place, Text text) {
        if (++CountOf(code).count > kMostOfOneCode) return;
        if constexpr (std::is_invocable_v<Text>) {
            kept_.push_back({severity, code, place, text()});
        } else {
            kept_.push_back({severity, code, place, std::string(text)});
        }
    }
    // The kept findings in the order of the file, and one for each code of which some were left out.
    std::vector<Finding> Take();

private:
    struct Count {
        const char* code;
        int64_t count;
    };
    Count& CountOf(const char* code);

    std::vector<Finding> kept_;
    std::vector<Count> counts_;
};

// Foreign bytes for a finding: at most 60, control characters blanked, between backquotes.
std::string Quote(std::string_view bytes);

}  // namespace dialect
