#include "check/finding.h"

#include <algorithm>

#include "platform/files/text.h"

namespace check {

void Findings::Sort() {
    std::stable_sort(kept_.begin(), kept_.end(), [](const Finding& a, const Finding& b) {
        return a.place.line != b.place.line ? a.place.line < b.place.line : a.place.column < b.place.column;
    });
}

std::map<std::string_view, int64_t> Findings::LeftOut() const {
    std::map<std::string_view, int64_t> left_out;
    for (const auto& [code, count] : of_code_) {
        if (count > kMostOfOneCode) left_out[code] = count - kMostOfOneCode;
    }
    return left_out;
}

std::string_view NameOf(Severity severity) {
    constexpr std::string_view kNames[] = {"error", "warning", "note"};
    return kNames[static_cast<int>(severity)];
}

std::string Quote(std::string_view bytes) {
    constexpr size_t kMost = 80;
    const bool cut = bytes.size() > kMost;
    std::string text = DisplayText(bytes.substr(0, kMost));
    for (char& c : text) {
        if (c == '\n' || c == '\t') c = ' ';
    }
    return "`" + text + (cut ? "..." : "") + "`";
}

std::string CountOf(int64_t count, const char* thing) {
    return std::to_string(count) + " " + thing + (count == 1 ? "" : "s");
}

std::string ItsObjects(int64_t count, const char* verb, const char* rest) {
    const std::string who = count == 1 ? "its object " : "its " + std::to_string(count) + " objects ";
    return who + verb + (count == 1 ? "s " : " ") + rest;
}

}  // namespace check
