#include "dialect/finding.h"

#include <algorithm>
#include <cstring>

namespace dialect {

int64_t& Findings::CountOf(Severity severity, const char* code) {
    for (LeftOut& of : counts_) {
        if (of.severity == severity && std::strcmp(of.code, code) == 0) return of.count;
    }
    return counts_.emplace_back(LeftOut{severity, code, 0}).count;
}

std::vector<LeftOut> Findings::TellLeftOut() const {
    std::vector<LeftOut> left_out;
    for (const LeftOut& of : counts_) {
        if (of.count > most_) left_out.push_back({of.severity, of.code, of.count - most_});
    }
    return left_out;
}

std::vector<Finding> Findings::Take() {
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
