#include <cstdarg>
#include <cstdio>

#include "check/report.h"

namespace check {
namespace {

// Numbers of the C locale: the program sets no other.
__attribute__((format(printf, 1, 2))) std::string Format(const char* format, ...) {
    char text[200];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    return text;
}

std::string MegabytesOf(int64_t bytes) {
    return Format("%.1f MB", static_cast<double>(bytes) / 1e6);
}

void WriteLanes(const Figures& figures, std::string* out) {
    *out += "  notes     " + std::to_string(figures.notes);
    const char* before = ": ";
    for (int channel = 0x11; channel <= 0x29; ++channel) {
        if (figures.lanes[channel] == 0) continue;
        *out +=
            before + Format("%02x ", static_cast<unsigned>(channel)) + std::to_string(figures.lanes[channel]);
        before = ", ";
    }
    if (figures.invisible > 0) *out += before + std::to_string(figures.invisible) + " invisible";
    *out += "\n";
}

void WriteFigures(const Subject& subject, std::string* out) {
    const Figures& figures = subject.figures;
    *out += "  length    " + CountOf(figures.measures, "measure") + ", " + TimeOf(figures.end_ms) + "\n";
    if (figures.first_sound_ms >= 0.0)
        *out += "  sounds    first at " + TimeOf(figures.first_sound_ms) + ", last at " +
                TimeOf(figures.last_sound_ms) + ", until " + TimeOf(figures.sound_end_ms) + "\n";
    *out += "  tempo     " + Format("%.6g", figures.slowest);
    if (figures.fastest != figures.slowest) *out += " to " + Format("%.6g", figures.fastest);
    *out += "\n";
    WriteLanes(figures, out);
    *out += "  others    " + CountOf(figures.bgm, "background sound") + ", " +
            CountOf(figures.pictures, "picture") + ", " + CountOf(figures.tempos, "tempo") + "\n";
    if (figures.notes > 0)
        *out += "  densest   " + CountOf(figures.densest, "note") + " in the second from " +
                TimeOf(figures.densest_ms) + "\n";
    if (figures.voices > 0)
        *out += "  voices    at most " + std::to_string(figures.voices) + ", at " +
                TimeOf(figures.voices_ms) + "\n";
    *out += "  memory    " + MegabytesOf(figures.sound_bytes) + " of sounds, " +
            MegabytesOf(figures.picture_bytes) + " of pictures\n";
}

void WriteSummary(const std::string& name, const Subject& subject, bool notes_listed, std::string* out) {
    const Findings& findings = subject.findings;
    if (subject.edited >= 0) *out += name + ": " + CountOf(subject.edited, "finding") + " fixed\n";
    const int64_t notes = findings.Count(kNote);
    *out += name + ": " + CountOf(findings.Count(kError), "error") + ", " +
            CountOf(findings.Count(kWarning), "warning") + ", " + CountOf(notes, "note");
    if (notes > 0 && !notes_listed) *out += " (shown with --strict)";
    if (!subject.edits.Empty()) *out += "; --fix mends " + std::to_string(subject.edits.Mended());
    *out += "\n";
}

std::string Severe(Severity severity, bool color) {
    constexpr const char* kColors[] = {"\x1b[1;31m", "\x1b[1;33m", "\x1b[1;36m"};
    const std::string name(NameOf(severity));
    return color ? kColors[static_cast<int>(severity)] + name + "\x1b[0m" : name;
}

void WriteFinding(const std::string& name, const Finding& finding, const std::string& more, bool color,
                  std::string* out) {
    *out += name + ":" + std::to_string(finding.place.line) + ":" + std::to_string(finding.place.column) +
            ": " + Severe(finding.severity, color) + ": " + finding.text + more + " [" +
            std::string(finding.code) + "]\n";
}

void WriteAll(const std::string& name, const Findings& findings, const TextStyle& style, std::string* out) {
    for (const Finding& finding : findings.Kept()) {
        if (finding.severity != kNote || style.notes) WriteFinding(name, finding, "", style.color, out);
    }
    for (const auto& [code, count] : findings.LeftOut())
        *out += name + ": " + std::to_string(count) + " more of [" + std::string(code) + "]\n";
}

// The most severe finding of each code, the first of them.
void WriteOneOfEach(const std::string& name, const Findings& findings, const TextStyle& style,
                    std::string* out) {
    const Finding* shown[std::size(kCodes)] = {};
    for (const Finding& finding : findings.Kept()) {
        const Finding*& best = shown[*IndexOfCode(finding.code)];
        if (finding.severity != kNote || style.notes)
            best = !best || finding.severity < best->severity ? &finding : best;
    }
    for (const Finding& finding : findings.Kept()) {
        const size_t index = *IndexOfCode(finding.code);
        if (shown[index] != &finding) continue;
        const int64_t notes = style.notes ? 0 : findings.CountOfCode(index, kNote);
        const int64_t more = findings.CountOfCode(index) - notes - 1;
        WriteFinding(name, finding, more > 0 ? " (and " + WithCommas(more) + " more, --all shows them)" : "",
                     style.color, out);
    }
}

}  // namespace

std::string TimeOf(double ms) {
    if (!(ms < 1e15)) return "never";
    const auto whole = static_cast<int64_t>(ms + 0.5);
    return Format("%lld:%02d.%03d", static_cast<long long>(whole / 60000),
                  static_cast<int>(whole / 1000 % 60), static_cast<int>(whole % 1000));
}

void WriteText(const Subject& subject, const TextStyle& style, std::string* out) {
    const std::string name = ShownName(subject.file_name);
    *out += name + ": " + SentenceOf(subject.verdict) + "\n";
    (style.all ? WriteAll : WriteOneOfEach)(name, subject.findings, style, out);
    WriteSummary(name, subject, style.notes, out);
    if (!subject.refused) WriteFigures(subject, out);
}

}  // namespace check
