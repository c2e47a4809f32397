// The bytes of lines: what cuts a line, hides it or keeps it from being a command.
#include "check/line_checker.h"

#include <algorithm>
#include <cstring>

#include "chart/text.h"
#include "check/read.h"
#include "platform/files/lookup.h"

namespace check {
namespace {

// As the player takes a line apart: without the underscores of the data, unless it drops the line.
bool SplitChannel(char* text, int32_t* measure, int32_t* channel) {
    if (!ReadPlace(text, measure, channel)) return false;
    if (*channel >= 0) RemoveUnderscore(text + 7);
    return true;
}

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

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

bool SplitsMeasure(const Line& line) {
    return GetMeasureNo(line.text + 1) >= 0 && line.text[6] == ':';
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
    CheckBlanks(*line);
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
            const bool channel = SplitsMeasure(line);
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

// Whether the command stays what it is, but for its value, when its line ends after so many bytes.
bool LineChecker::MayTrim(const Line& line, int length) {
    if (length >= line.length) return true;  // a TAB or the limit cuts the line before
    char text[LINE_BUFFER] = {};
    std::memcpy(text, line.text, static_cast<size_t>(length));
    if (!IsCommand(text, length)) return false;
    int32_t measure, channel;
    if (SplitChannel(text, &measure, &channel)) return text[7] != '\0';
    if (HasHeadI(text + 1, "PATH_WAV")) return false;  // reading it would act on the lines below
    const Reading before = probe_.Read(line.text, line.length), after = probe_.Read(text, length);
    const bool file = before.keyword == Keyword::kWav || before.keyword == Keyword::kBmp;
    if (file && before.taken && !FindNamed(before.path).empty()) return false;
    return before.SameAs(after);
}

void LineChecker::CheckBlanks(const Line& line) {
    const char* end = Find(line.raw, line.raw_end, '\n');
    const char* last = end;
    while (last[-1] == ' ' || last[-1] == '\t') --last;  // there is a `#` before them
    if (last == end || !MayTrim(line, static_cast<int>(std::min<int64_t>(last - line.raw, LINE_BUFFER))))
        return;
    const Place place = line.At(last - line.raw);
    const bool read = last - line.raw < line.length;
    findings_->Add(place, "trailing-blank", [&] {
        return CountOf(end - last, "blank") + " at the end of the line" +
               (!read                 ? ", without an effect"
                : SplitsMeasure(line) ? ", which the player takes as part of the data"
                                      : ", which the player takes as part of the value");
    });
    findings_->Propose(place, "trailing-blank", {last, end}, "");
}

bool LineChecker::CheckMark(const Line& line) {
    if (line.raw != text_ || !Begins(text_, end_, kByteOrderMark)) return false;
    const bool command = line.length > 7 && line.text[3] == '#';
    findings_->Add(line.place, "byte-order-mark", command ? kError : kNote,
                   command ? "the file begins with a byte order mark, which hides this line; save the file "
                             "without it"
                           : "the file begins with a byte order mark; the player skips this line");
    const char* after = text_;
    while (Begins(after, end_, kByteOrderMark)) after += kByteOrderMark.size();
    findings_->Propose(line.place, "byte-order-mark", {text_, after}, "");
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
