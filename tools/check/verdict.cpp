#include "check/verdict.h"

#include "check/finding.h"

namespace check {
namespace {

std::string ManySounds(int64_t count) {
    return WithCommas(count) + " sound" + (count == 1 ? "" : "s");
}

const char* Are(int64_t count) {
    return count == 1 ? " is" : " are";
}

// What is heard, as a sentence about all of the chart's sounds.
std::string Heard(const dialect::Verdict& verdict) {
    if (verdict.asked == 0) return "the chart has no sounds";
    if (verdict.played == verdict.asked)
        return (verdict.asked == 1 ? "its " : "all ") + ManySounds(verdict.asked) + Are(verdict.asked) +
               " played as written";
    const int64_t percent = verdict.played * 100 / verdict.asked;
    const std::string share =
        percent == 0 && verdict.played > 0 ? "less than 1 %" : std::to_string(percent) + " %";
    return share + " of " + ManySounds(verdict.asked) + Are(verdict.asked) + " played as written";
}

bool IsRight(const dialect::Verdict& verdict) {
    return !verdict.refused && verdict.wrong == 0 && verdict.played == verdict.asked;
}

// Sounds that are started and not asked for. Where sounds are lost, others mostly take their place, and the
// share has said enough.
std::string Others(const dialect::Verdict& verdict) {
    if (verdict.refused) return ": the player refuses the chart";
    if (verdict.played < verdict.asked || verdict.wrong == 0) return "";
    return ", and " + WithCommas(verdict.wrong) + " more that the chart does not ask for";
}

std::string Remedy(const dialect::Verdict& plain, const dialect::Verdict& modern) {
    if (IsRight(plain)) return "";
    if (IsRight(modern))
        return plain.played == plain.asked ? "; --modern plays only what it asks for"
                                           : "; --modern plays them all";
    if (modern.refused || modern.played <= plain.played) return "; --modern does not change that";
    return "; --modern plays " + WithCommas(modern.played) + " of them";
}

}  // namespace

std::string WithCommas(int64_t count) {
    std::string text = std::to_string(count);
    for (size_t at = text.size(); at > 3; at -= 3) text.insert(at - 3, 1, ',');
    return text;
}

Verdict JudgeChart(std::string_view bytes, const dialect::Choice& choice, bool compiled) {
    dialect::Options options;
    options.choice = choice;
    return {dialect::Judge(bytes, options), dialect::JudgeCompiled(bytes, options), compiled};
}

std::string SentenceOf(const Verdict& verdict) {
    if (verdict.compiled) return "with --modern " + Heard(verdict.modern) + Others(verdict.modern);
    return Heard(verdict.plain) + Others(verdict.plain) + Remedy(verdict.plain, verdict.modern);
}

}  // namespace check
