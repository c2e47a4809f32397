// The bytes of lines: what cuts a line, hides it or keeps it from being a command.
#include "check/line_checker.h"

#include <algorithm>
#include <cstring>

#include "chart/text.h"
#include "check/read.h"

namespace check {
namespace {

const char* Find(const char* from, const char* end, char c) {
    const void* found = std::memchr(from, c, static_cast<size_t>(end - from));
    return found ? static_cast<const char*>(found) : end;
}

bool OnlyBlanks(const char* from, const char* end) {
    return std::all_of(from, end, [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; });
}

bool Begins(const char* from, const char* end, std::string_view head) {
    return static_cast<size_t>(end - from) >= head.size() && std::memcmp(from, head.data(), head.size()) == 0;
}

// `00111:` or `WAV01 `: a command without its `#`.
bool LacksHash(const char* text) {
    const auto digit = [text](int i) { return IsDigit(static_cast<unsigned char>(text[i])) != 0; };
    if (GetMeasureNo(text) >= 0) return digit(3) && digit(4) && text[5] == ':';
    const bool definition = HasHeadI(text, "WAV") || HasHeadI(text, "BMP") || HasHeadI(text, "BPM");
    return definition && IsId(text + 3) && text[5] == ' ';
}

}  // namespace

std::string IdOf(int32_t number) {
    const char* digits = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    return {digits[number / 36 % 36], digits[number % 36]};
}

std::string_view PairAt(const char* p) {
    return {p, strnlen(p, 2)};
}

bool IsId(const char* p) {
    return IsBase36(static_cast<unsigned char>(p[0])) && IsBase36(static_cast<unsigned char>(p[1]));
}

bool IsFolded(const char* p) {
    return IsBase36(static_cast<unsigned char>(p[0])) && Base36ToInt(p) != ObjNoToInt(p);
}

LineChecker::LineChecker(const char* text, int64_t size, const char* chart_path, Tables* tables,
                         Findings* findings)
    : text_(text), end_(text + size), tables_(tables), findings_(findings), probe_(chart_path) {}

LineChecker::Group& LineChecker::GroupOf(const std::string& key, Place place, Code code, Severity severity) {
    const auto [it, fresh] = groups_.try_emplace(key, Group{place, code, severity, "", "", 0, 0, {}});
    ++it->second.lines;
    return it->second;
}

void LineChecker::Finish() {
    JudgeFolded();
    JudgeLongNotes();
    for (const auto& [key, group] : groups_) {
        findings_->Add(group.place, group.code, group.severity, [&g = group] {
            std::string many;
            if (g.objects > 0) many = " (" + CountOf(g.objects, "object") + ")";
            if (g.objects == 0 && g.lines > 1) many = " (" + CountOf(g.lines, "line") + ")";
            return g.subject + many + ": " + g.effect;
        });
    }
}

void LineChecker::Check(Line* line) {
    CheckBytes(*line);
    if (!IsCommand(line->text, line->length)) {
        CheckNoCommand(*line);
        return;
    }
    int32_t measure, channel;
    if (SplitChannel(line->text, &measure, &channel))
        CheckChannel(line, measure, channel);
    else
        CheckKeyword(*line);
}

void LineChecker::CheckBytes(const Line& line) {
    cut_ = false;
    const char* lf = Find(line.raw, line.raw_end, '\n');
    if (lf < line.raw_end) CheckLoneLf(line, lf);
    CheckLoneCr(line, lf);
    if (line.raw < lf && *line.raw == '#') CheckCut(line, lf);
    if (line.raw_end < end_ && *line.raw_end == '\0') {
        findings_->Add(line.At(line.raw_end - line.raw), "nul",
                       "a NUL byte ends the line like CR LF; delete it");
    }
}

void LineChecker::CheckLoneLf(const Line& line, const char* lf) {
    int64_t lines = 0;
    bool commands = false;
    for (const char* p = lf; p < line.raw_end; p = Find(p + 1, line.raw_end, '\n')) {
        if (OnlyBlanks(p, Find(p + 1, line.raw_end, '\n'))) continue;
        ++lines;
        commands = commands || p[1] == '#';
    }
    if (lines == 0) return;
    const Severity severity = commands ? kError : kWarning;
    findings_->Add(line.At(lf - line.raw), "lone-lf", severity, [lines] {
        return "a LF without a CR does not end a line: the player skips " + CountOf(lines, "line") +
               " up to the next CR LF; save the file with CR LF line ends";
    });
}

void LineChecker::CheckLoneCr(const Line& line, const char* end) {
    const char* cr = Find(line.raw, end, '\r');
    if (cr == end || (*line.raw != '#' && OnlyBlanks(cr, end))) return;
    // A file whose lines end in LF has none of these; one whose lines end in CR is one line to the player.
    findings_->Add(
        line.At(cr - line.raw), "lone-cr",
        OnlyBlanks(cr, end)
            ? "a CR without a LF does not end a line and becomes part of the value; save the file "
              "with CR LF line ends"
            : "a CR without a LF does not end a line: what follows becomes part of this line; save "
              "the file with CR LF line ends");
}

void LineChecker::CheckCut(const Line& line, const char* end) {
    const char* tab = Find(line.raw, end, '\t');
    if (tab - line.raw > LINE_BUFFER - 1) {
        const int64_t bytes = tab - line.raw;
        findings_->Add(line.At(LINE_BUFFER - 1), "line-too-long", [bytes, &line] {
            const bool channel = GetMeasureNo(line.text + 1) >= 0 && line.text[6] == ':';
            return "the line has " + std::to_string(bytes) + " bytes, and the player reads only " +
                   std::to_string(LINE_BUFFER - 1) +
                   (channel
                        ? ", which moves all objects of the line; split the measure into several lines or "
                          "write it on a coarser grid"
                        : "; shorten it");
        });
    } else if (tab < end) {
        cut_ = true;
        if (OnlyBlanks(tab, end)) return;
        findings_->Add(line.At(tab - line.raw), "tab", [tab, end] {
            return "a TAB ends the line, so the player does not read " +
                   Quote({tab + 1, static_cast<size_t>(end - tab - 1)}) + "; replace the TAB with a blank";
        });
    }
}

bool LineChecker::CheckMark(const Line& line) {
    if (line.raw != text_ || !Begins(text_, end_, "\xEF\xBB\xBF")) return false;
    const bool command = line.length > 7 && line.text[3] == '#';
    findings_->Add(line.place, "byte-order-mark", command ? kError : kNote,
                   command ? "the file begins with a byte order mark, which hides this line; save the file "
                             "without it"
                           : "the file begins with a byte order mark; the player skips this line");
    return true;
}

void LineChecker::CheckNoCommand(const Line& line) {
    if (line.length == 0 || CheckMark(line)) return;
    const char* first = line.text;
    while (*first == ' ') ++first;
    const auto report = [&](Code code, const char* sentence) {
        findings_->Add(line.place, code, [&] { return Quote(line.text) + " " + sentence; });
    };
    if (first > line.text && *first == '#' && std::strlen(first) > 4) {
        report("leading-blank", "begins with a blank, so it is not a command; delete the blank");
    } else if (Begins(first, line.text + line.length, "\x81\x94") ||
               Begins(first, line.text + line.length, "\xEF\xBC\x83")) {
        report("wide-hash", "begins with a full-width number sign, so it is not a command; write `#`");
    } else if (LacksHash(first)) {
        report("missing-hash", "does not begin with `#`, so it is not a command");
    } else if (line.text[0] == '#' && line.length > 1 && IsBase36(static_cast<unsigned char>(line.text[1]))) {
        report("short-line", "has fewer than five characters, so it is not a command");
    } else {
        ++tables_->comments;
    }
}

// In UTF-16 every second byte of a Latin letter is 0.
static bool IsUtf16(const char* text, int64_t size) {
    if (size < 4) return false;
    const std::string_view head(text, 2);
    if (head == "\xFF\xFE" || head == "\xFE\xFF") return true;
    return (text[0] && !text[1] && text[2] && !text[3]) || (!text[0] && text[1] && !text[2] && text[3]);
}

void ReadLines(const char* text, int64_t size, const char* chart_path, Tables* tables, Findings* findings) {
    if (IsUtf16(text, size)) {
        return findings->Add({1, 1}, "utf-16",
                             "the file is UTF-16 text, in which the player finds no command; save it as "
                             "Shift-JIS or UTF-8");
    }
    LineChecker checker(text, size, chart_path, tables, findings);
    LineReader reader(text, size);
    Line line;
    while (reader.Next(&line)) checker.Check(&line);
    checker.Finish();
}

}  // namespace check
