#include "check/statistics.h"

#include <algorithm>

namespace check {

void Statistics::Count(const Findings& findings) {
    const bool errors = findings.Count(kError) > 0;
    with_errors += errors;
    with_warnings += !errors && findings.Count(kWarning) > 0;
    for (size_t i = 0; i < std::size(kCodes); ++i) codes[i] += findings.CountOfCode(i);
}

void Statistics::Add(const Statistics& other) {
    charts += other.charts;
    unreadable += other.unreadable;
    with_errors += other.with_errors;
    with_warnings += other.with_warnings;
    for (size_t i = 0; i < std::size(kCodes); ++i) codes[i] += other.codes[i];
}

void WriteStatisticsText(const Statistics& statistics, std::string* out) {
    std::vector<size_t> order;
    for (size_t i = 0; i < std::size(kCodes); ++i) {
        if (statistics.codes[i] > 0) order.push_back(i);
    }
    std::stable_sort(order.begin(), order.end(),
                     [&](size_t a, size_t b) { return statistics.codes[a] > statistics.codes[b]; });
    for (const size_t i : order) {
        const std::string count = std::to_string(statistics.codes[i]);
        const std::string name(kCodes[i].name);
        *out += std::string(10 - std::min<size_t>(count.size(), 10), ' ') + count + "  " + name +
                std::string(20 - name.size(), ' ') + std::string(kCodes[i].meaning) + "\n";
    }
    const int64_t clean =
        statistics.charts - statistics.unreadable - statistics.with_errors - statistics.with_warnings;
    *out += CountOf(statistics.charts, "chart") + ": " + std::to_string(statistics.with_errors) +
            " with errors, " + std::to_string(statistics.with_warnings) + " with warnings only, " +
            std::to_string(clean) + " clean";
    if (statistics.unreadable > 0) *out += ", " + std::to_string(statistics.unreadable) + " unreadable";
    *out += "\n";
}

void WriteStatisticsJson(const Statistics& statistics, Json* json) {
    json->Key("statistics");
    json->Begin('{');
    json->Member("charts", statistics.charts);
    json->Member("unreadable", statistics.unreadable);
    json->Member("withErrors", statistics.with_errors);
    json->Member("withWarnings", statistics.with_warnings);
    json->Key("codes");
    json->Begin('{');
    for (size_t i = 0; i < std::size(kCodes); ++i) {
        if (statistics.codes[i] > 0) json->Member(kCodes[i].name, statistics.codes[i]);
    }
    json->End('}');
    json->End('}');
}

}  // namespace check
