// Workflow commands, which GitHub shows beside the lines of a change.
#include "check/report.h"

namespace check {
namespace {

// property: of the command, not its message.
std::string Escape(std::string_view text, bool property) {
    std::string escaped;
    for (const char c : text) {
        if (c == '%')
            escaped += "%25";
        else if (property && c == ':')
            escaped += "%3A";
        else if (property && c == ',')
            escaped += "%2C";
        else
            escaped += c;
    }
    return escaped;
}

}  // namespace

void WriteGithub(const Subject& subject, bool notes, std::string* out) {
    const std::string file = Escape(ShownName(subject.file_name), true);
    for (const Finding& finding : subject.findings.Kept()) {
        if (finding.severity == kNote && !notes) continue;
        const std::string_view level = finding.severity == kNote ? "notice" : NameOf(finding.severity);
        *out += "::" + std::string(level) + " file=" + file + ",line=" + std::to_string(finding.place.line) +
                ",col=" + std::to_string(finding.character) + ",title=" + std::string(finding.code) +
                "::" + Escape(finding.text, false) + "\n";
    }
}

void WriteGithubFailure(const Failure& failure, std::string* out) {
    *out +=
        "::error file=" + Escape(ShownName(failure.file), true) + "::" + Escape(failure.why, false) + "\n";
}

}  // namespace check
