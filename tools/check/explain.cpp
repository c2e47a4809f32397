#include "check/explain.h"

#include <iterator>

#include "check/explain_lines.h"
#include "check/explain_objects.h"
#include "check/finding.h"

namespace check {
namespace {

constexpr const Explanation* Find(std::string_view code) {
    for (const Explanation& explanation : kLineExplanations) {
        if (explanation.code == code) return &explanation;
    }
    for (const Explanation& explanation : kObjectExplanations) {
        if (explanation.code == code) return &explanation;
    }
    return nullptr;
}

constexpr bool AllAreExplained() {
    for (const CodeInfo& info : kCodes) {
        if (!Find(info.name)) return false;
    }
    return std::size(kLineExplanations) + std::size(kObjectExplanations) == std::size(kCodes);
}
static_assert(AllAreExplained());

std::string Indented(std::string_view lines) {
    std::string text = "    ";
    for (const char c : lines) text += c == '\n' ? std::string("\n    ") : std::string(1, c);
    return text;
}

// As a paragraph: without a capital, since most begin with code or follow a colon.
std::string Severities(const CodeInfo& info) {
    std::string text(NameOf(info.severity));
    if (info.lesser != info.severity) text += " or " + std::string(NameOf(info.lesser));
    return text;
}

}  // namespace

std::string Explain(size_t index) {
    const CodeInfo& info = kCodes[index];
    const Explanation& explanation = *Find(info.name);
    std::string text = "## " + std::string(info.name) + "\n\n" + Severities(info) + ": " +
                       std::string(info.meaning) + ".\n\n" + std::string(explanation.why) + "\n\n";
    if (!explanation.example.empty()) text += Indented(explanation.example) + "\n\n";
    return text + "To fix it: " + std::string(explanation.fix) + "\n";
}

std::string ExplainAll() {
    std::string text;
    for (size_t i = 0; i < std::size(kCodes); ++i) text += (i > 0 ? "\n" : "") + Explain(i);
    return text;
}

}  // namespace check
