#include "check/explain.h"

#include <iterator>

#include "check/explain_lines.h"
#include "check/explain_objects.h"
#include "check/finding.h"

namespace check {
namespace {

// The place of a code in a table; its size if the code is not there.
template <size_t count>
constexpr size_t IndexIn(const Explanation (&table)[count], std::string_view code) {
    size_t i = 0;
    while (i < count && table[i].code != code) ++i;
    return i;
}

constexpr bool IsExplained(std::string_view code) {
    return IndexIn(kLineExplanations, code) < std::size(kLineExplanations) ||
           IndexIn(kObjectExplanations, code) < std::size(kObjectExplanations);
}

constexpr bool AllAreExplained() {
    for (size_t i = 0; i < std::size(kCodes); ++i) {
        if (!IsExplained(kCodes[i].name)) return false;
    }
    return std::size(kLineExplanations) + std::size(kObjectExplanations) == std::size(kCodes);
}
static_assert(AllAreExplained());

const Explanation& Find(std::string_view code) {
    const size_t line = IndexIn(kLineExplanations, code);
    return line < std::size(kLineExplanations) ? kLineExplanations[line]
                                               : kObjectExplanations[IndexIn(kObjectExplanations, code)];
}

std::string Indented(std::string_view lines) {
    std::string text = "    ";
    for (const char c : lines) text += c == '\n' ? std::string("\n    ") : std::string(1, c);
    return text;
}

std::string Severities(const CodeInfo& info) {
    std::string text(NameOf(info.severity));
    if (info.lesser != info.severity) text += " or " + std::string(NameOf(info.lesser));
    return text;
}

}  // namespace

std::string Explain(size_t index) {
    const CodeInfo& info = kCodes[index];
    const Explanation& explanation = Find(info.name);
    std::string text = "## " + std::string(info.name) + "\n\n" + Severities(info) + ": " +
                       std::string(info.meaning) + ".\n\n" + std::string(explanation.why) + "\n\n";
    if (!explanation.example.empty()) text += Indented(explanation.example) + "\n\n";
    text += "To fix it: " + std::string(explanation.fix) + "\n\n";
    if (!explanation.edit.empty()) return text + std::string(explanation.edit) + "\n";
    const bool harmless = explanation.fix.starts_with("Nothing");
    return text + "`--fix` changes nothing here" +
           (harmless ? ".\n" : ": only the author can know what is meant.\n");
}

std::string ExplainAll() {
    std::string text;
    for (size_t i = 0; i < std::size(kCodes); ++i) text += (i > 0 ? "\n" : "") + Explain(i);
    return text;
}

}  // namespace check
