#include "check/finding.h"

#include <algorithm>

#include "common/terminal.h"
#include "platform/files/text.h"

namespace check {

void Findings::Sort() {
    const auto before = [](const auto& a, const auto& b) {
        return a.place.line != b.place.line ? a.place.line < b.place.line : a.place.column < b.place.column;
    };
    std::stable_sort(kept_.begin(), kept_.end(), before);
    std::stable_sort(proposals_.begin(), proposals_.end(), before);
}

std::map<std::string_view, int64_t> Findings::LeftOut() const {
    std::map<std::string_view, int64_t> left_out;
    for (size_t i = 0; i < std::size(kCodes); ++i) {
        if (CountOfCode(i) > kMostOfOneCode) left_out[kCodes[i].name] = CountOfCode(i) - kMostOfOneCode;
    }
    return left_out;
}

static constexpr std::string_view kSeverities[] = {"error", "warning", "note"};

std::string_view NameOf(Severity severity) {
    return kSeverities[static_cast<int>(severity)];
}

std::optional<Severity> SeverityOf(std::string_view name) {
    for (int i = 0; i < 3; ++i) {
        if (kSeverities[i] == name) return static_cast<Severity>(i);
    }
    return std::nullopt;
}

std::string ShownName(std::string_view bytes) {
    if (IsUtf8(bytes)) return tools::CleanText(bytes);
    std::string text;
    for (size_t at = 0; at < bytes.size();) {
        size_t length = IsCp932Lead(static_cast<unsigned char>(bytes[at])) ? 2 : 1;
        if (length == 2 && (at + 1 == bytes.size() || Cp932CodePoint(bytes.data() + at, 2) == 0)) length = 1;
        text += tools::CleanText(bytes.substr(at, length));
        at += length;
    }
    return text;
}

std::string Quote(std::string_view bytes) {
    constexpr int kMost = 80;
    const std::string text = ShownName(bytes);
    size_t end = 0;
    int characters = 0;
    for (; end < text.size(); ++end) {
        const bool first = (static_cast<unsigned char>(text[end]) & 0xC0) != 0x80;
        if (first && ++characters > kMost) break;
    }
    return "`" + text.substr(0, end) + (end < text.size() ? "..." : "") + "`";
}

std::string CountOf(int64_t count, const char* thing) {
    return std::to_string(count) + " " + thing + (count == 1 ? "" : "s");
}

std::string ItsObjects(int64_t count, const char* verb, const char* rest) {
    const std::string who = count == 1 ? "its object " : "its " + std::to_string(count) + " objects ";
    return who + verb + (count == 1 ? "s " : " ") + rest;
}

}  // namespace check
