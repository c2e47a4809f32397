// Lines with a keyword: what they define, or why the player skips them.
#include <cmath>
#include <cstring>

#include "chart/text.h"
#include "check/line_checker.h"
#include "platform/ascii.h"

namespace check {
namespace {

constexpr int kIdColumn = 4, kNameColumn = 7;

// The letters, digits and underscores after the `#`.
std::string_view WordOf(const Line& line) {
    int end = 1;
    while (IsBase36(static_cast<unsigned char>(line.text[end])) || line.text[end] == '_') ++end;
    return {line.text + 1, static_cast<size_t>(end - 1)};
}

// Up to the end of the line or a CR, which has a finding of its own.
bool IsBlankRest(const char* text) {
    const char end = text[std::strspn(text, " ")];
    return end == '\0' || end == '\r';
}

const char* ThingOf(Keyword keyword) {
    switch (keyword) {
        case Keyword::kWav:
            return "sound";
        case Keyword::kBmp:
            return "picture";
        default:
            return "tempo";
    }
}

std::string Shown(double number) {
    char text[40];
    std::snprintf(text, sizeof text, "%.6g", number);
    return text;
}

}  // namespace

void LineChecker::CheckKeyword(const Line& line) {
    const Reading reading = probe_.Read(line.text, line.length);
    if (reading.taken) {
        ++tables_->commands;
        Define(line, reading);
    } else {
        CheckSkippedKeyword(line, reading, WordOf(line));
    }
}

void LineChecker::CheckSkippedKeyword(const Line& line, const Reading& reading, std::string_view word) {
    const char* name = nullptr;
    if (const Foreign* foreign = FindForeignCommand(word, &name)) {
        Group& group = GroupOf(std::string("#") + name, line.place, foreign->code, foreign->severity);
        group.subject = std::string("#") + name;
        group.effect = foreign->effect;
    } else if (GetMeasureNo(line.text + 1) >= 0) {
        findings_->Add(line.place, "bad-channel-line", [&] {
            return Quote(line.text) +
                   " looks like a line of a measure but has no `:` in column 7, so the player skips it; "
                   "write "
                   "it as #mmmcc:data";
        });
    } else if (reading.keyword == Keyword::kWav || reading.keyword == Keyword::kBmp ||
               reading.keyword == Keyword::kBpmxx) {
        CheckSkippedFile(line, reading);
    } else if (reading.keyword == Keyword::kBga && word.size() <= 5) {
        findings_->Add(line.place, "bga-short", [&] {
            return line.length < 22
                       ? "the player skips #BGA lines of fewer than 22 characters, and this one has " +
                             std::to_string(line.length) + "; write its numbers with more digits"
                       : "the player skips the line: #BGA needs a blank in column 7";
        });
    } else if (reading.keyword != Keyword::kNone) {
        CheckSkippedHeader(line, word);
    } else if (word.empty()) {
        ++tables_->comments;
    } else {
        ReportUnknown(line, word);
    }
}

void LineChecker::ReportUnknown(const Line& line, std::string_view word) {
    findings_->Add(line.place, "unknown-command", [&] {
        return "no player knows a command " + Quote("#" + std::string(word)) + "; the line is skipped";
    });
}

// #WAV, #BMP and #BPM with a number.
void LineChecker::CheckSkippedFile(const Line& line, const Reading& reading) {
    const std::string head = AsciiUpper(std::string(line.text + 1, 3));
    const char* id = line.text + kIdColumn;
    if (line.length > 6 && !IsId(id)) {
        findings_->Add(line.At(kIdColumn), "bad-id", [&] {
            return "the player skips the line: #" + head +
                   " needs two digits of 0-9 and A-Z in columns 5 and 6";
        });
    } else if (line.length > 6 && line.text[6] != ' ' && reading.keyword != Keyword::kBpmxx) {
        findings_->Add(line.At(6), "no-blank", [&] {
            return "the player skips the line: #" + head + " needs a blank after its number, in column 7";
        });
    } else if (line.length < 8) {
        if (cut_) return;  // reported already
        findings_->Add(line.place, "value-missing", kNote,
                       [&] { return "the player skips the line: " + Quote(line.text) + " has no value"; });
    } else {
        findings_->Add(line.At(kIdColumn), "zero-number", [&] {
            return "the player skips the line: " + std::string(ThingOf(reading.keyword)) +
                   " numbers go from 01 to FZ, and " + Quote(PairAt(id)) +
                   " is read as 00; use another number";
        });
    }
}

// A keyword that ends in a blank.
void LineChecker::CheckSkippedHeader(const Line& line, std::string_view word) {
    static constexpr std::string_view kWords[] = {"TITLE", "ARTIST", "GENRE", "BPM",       "PLAYER",
                                                  "RANK",  "VOLWAV", "TOTAL", "PLAYLEVEL", "PATH_WAV"};
    const std::string upper = AsciiUpper(std::string(word));
    for (const std::string_view known : kWords) {
        if (upper != known) continue;
        const char after = line.text[1 + known.size()];
        if (after != ' ' && after != '\0') {
            findings_->Add(line.place, "no-blank", [&] {
                return "the player skips the line: #" + upper + " needs a blank after it";
            });
        } else if (!cut_) {
            const bool weighty = known == "BPM" || known == "PATH_WAV";
            findings_->Add(line.place, "value-missing", weighty ? kWarning : kNote, [&] {
                return "the player skips the line: " + Quote(line.text) +
                       (known == "PATH_WAV" ? " needs a folder of at least two characters" : " has no value");
            });
        }
        return;
    }
    ReportUnknown(line, word);
}

void LineChecker::Define(const Line& line, const Reading& reading) {
    switch (reading.keyword) {
        case Keyword::kWav:
        case Keyword::kBmp:
            return DefineFile(line, reading);
        case Keyword::kBga:
            return DefineBga(line, reading);
        case Keyword::kPathWav:
            return DefinePathWav(line);
        case Keyword::kBpm:
        case Keyword::kBpmxx:
            return DefineTempo(line, reading);
        default:
            return CheckHeader(line, reading);
    }
}

// The id of a definition, at a column of its line.
void LineChecker::CheckId(const Line& line, int column, const char* thing, int32_t number) {
    const char* id = line.text + column;
    if (!IsId(id)) {
        findings_->Add(line.At(column), "bad-id", [&] {
            return Quote(PairAt(id)) + " is not two digits of 0-9 and A-Z; the player reads the number as " +
                   IdOf(number);
        });
    } else if (IsFolded(id)) {
        NoteFolded(line.At(column), id, thing, false);
    }
}

void LineChecker::DefineFile(const Line& line, const Reading& reading) {
    const bool sound = reading.keyword == Keyword::kWav;
    Definition& definition =
        (sound ? tables_->sounds : tables_->pictures)[static_cast<size_t>(reading.number)];
    CheckId(line, kIdColumn, ThingOf(reading.keyword), reading.number);
    if (!sound) tables_->folded_pictures[static_cast<size_t>(Base36ToInt(line.text + kIdColumn))] = true;
    const std::string name = line.text + kNameColumn;
    if (sound) written_[AsciiUpper(std::string(line.text + kIdColumn, 2))] = name;
    if (definition.place.line != 0) {
        const bool same = definition.path == reading.path;
        findings_->Add(line.place, "defined-twice", same ? kNote : kWarning, [&] {
            return "line " + std::to_string(definition.place.line) + " also defines " +
                   ThingOf(reading.keyword) + " " + IdOf(reading.number) +
                   (same ? ", with the same file"
                         : "; the player loads " + Quote(name) + " instead of " + Quote(definition.name) +
                               "; give one of them another number");
        });
    }
    if (!reading.path.ends_with(name)) {
        findings_->Add(
            line.At(kNameColumn), "path-too-long",
            "folder and name together are longer than 259 bytes, so the player cuts the end of the "
            "name; shorten them");
    }
    definition.place = line.place;
    definition.name = name;
    definition.path = reading.path;
}

void LineChecker::DefinePathWav(const Line& line) {
    findings_->Add(line.place, "path-wav", [&] {
        const char first = probe_.Folder()[0];
        const bool relative = first != '\\' && first != '/' && probe_.Folder()[1] != ':';
        return "from here on the player looks for sounds and pictures in " + Quote(probe_.Folder()) +
               (relative ? ", relative to the folder it was started in," : "") +
               " and not in the chart's folder; the lines above are not affected; write the folder before "
               "each name instead";
    });
}

// Reports a number that ends before its text does.
void LineChecker::CheckFloat(const Line& line, int column) {
    const char* text = line.text + column;
    const char* p = text + std::strspn(text, " ");
    if (*p == '-' || *p == '+') ++p;
    const size_t whole = std::strspn(p, "0123456789");
    const char* point = p + whole;
    const size_t part = *point == '.' ? std::strspn(point + 1, "0123456789") : 0;
    const char* rest = whole + part == 0 ? p : *point == '.' ? point + 1 + part : point;
    if (rest != p && (*rest == 'e' || *rest == 'E')) {
        const char* exponent = rest + 1 + (rest[1] == '-' || rest[1] == '+');
        const size_t digits = std::strspn(exponent, "0123456789");
        if (digits > 0) rest = exponent + digits;
    }
    if (rest != p && (*rest == '\0' || *rest == ' ')) return;
    findings_->Add(line.At(column), "bad-number", [&] {
        return Quote(text) + " is not a plain decimal number; the player reads " + Shown(ReadFloat(text));
    });
}

void LineChecker::DefineTempo(const Line& line, const Reading& reading) {
    const bool numbered = reading.keyword == Keyword::kBpmxx;
    const int column = numbered ? 7 : 5;
    if (line.text[column - 1] != ' ') {
        findings_->Add(line.place, "bpm-columns", [&] {
            return "the player reads " + Quote(line.text) + " as " +
                   (numbered ? "extended tempo " + IdOf(reading.number) + " with the value "
                             : std::string("a tempo of ")) +
                   Shown(reading.tempo) + "; write #BPM, a blank and the tempo";
        });
    } else {
        CheckFloat(line, column);
    }
    if (!(std::isfinite(reading.tempo) && reading.tempo > 0.0)) {
        findings_->Add(line.At(column), "tempo-not-positive", [&] {
            return "a tempo of " + Shown(reading.tempo) + " has no effect; the player " +
                   (numbered ? "keeps the tempo before it" : "uses 130") + "; write a tempo above 0";
        });
    }
    Place& before =
        numbered ? tables_->tempos[static_cast<size_t>(reading.number)].place : tables_->first_tempo;
    if (numbered) CheckId(line, kIdColumn, "tempo", reading.number);
    if (before.line != 0) {
        findings_->Add(line.place, "defined-twice", [&] {
            const std::string other = "line " + std::to_string(before.line);
            return numbered ? other + " also defines tempo " + IdOf(reading.number) +
                                  "; each value applies to the lines between it and the next definition"
                            : "this replaces the tempo of " + other +
                                  " for the whole chart; change tempos with channel 03 or 08";
        });
    }
    before = line.place;
    if (!numbered) return;
    Definition& definition = tables_->tempos[static_cast<size_t>(reading.number)];
    definition.tempo = reading.tempo;
}

void LineChecker::CheckHeader(const Line& line, const Reading& reading) {
    Place& before = headers_[reading.keyword];
    const std::string word = AsciiUpper(std::string(WordOf(line)));
    if (before.line != 0) {
        findings_->Add(line.place, "defined-twice", [&] {
            return "line " + std::to_string(before.line) + " also has #" + word +
                   "; the player uses this one";
        });
    }
    before = line.place;
    if (reading.keyword == Keyword::kPlayer) {
        const char* value = line.text + 8;
        const bool digit = IsDigit(static_cast<unsigned char>(*value)) != 0;
        if (digit && IsBlankRest(value + 1)) return;
        findings_->Add(line.At(8), "bad-number", [&] {
            return "the player reads only one character after #PLAYER and a blank, here as " +
                   std::to_string(reading.value) + "; write one digit";
        });
    } else if (reading.keyword == Keyword::kVolWav && reading.value != 100) {
        findings_->Add(line.place, "unused-header", "#VOLWAV: the player plays every sound at full volume");
    }
}

}  // namespace check
