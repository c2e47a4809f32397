#include "dialect/finding.h"

#include <algorithm>
#include <cstring>

namespace dialect {

Findings::Count& Findings::CountOf(const char* code) {
    for (Count& count : counts_) {
        if (std::strcmp(count.code, code) == 0) return count;
    }
    return counts_.emplace_back(Count{code, 0});
}

std::vector<Finding> Findings::Take() {
    for (const Count& count : counts_) {
        if (count.count <= kMostOfOneCode) continue;
        kept_.push_back({Severity::kNote,
                         count.code,
                         {},
                         std::to_string(count.count - kMostOfOneCode) + " more of these"});
    }
    std::stable_sort(kept_.begin(), kept_.end(), [](const Finding& a, const Finding& b) {
        return a.place.line != b.place.line ? a.place.line < b.place.line : a.place.column < b.place.column;
    });
    return std::move(kept_);
}

std::string Quote(std::string_view bytes) {
    constexpr size_t kMost = 60;
    std::string text = "`" + std::string(bytes.substr(0, kMost)) + (bytes.size() > kMost ? "...`" : "`");
    for (char& c : text) {
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = ' ';
    }
    return text;
}

}  // namespace dialect
