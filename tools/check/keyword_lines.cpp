// Lines with a keyword: what they define, and why they are skipped.
#include <cmath>
#include <cstring>

#include "chart/text.h"
#include "check/line_checker.h"

namespace check {
namespace {

constexpr int kIdColumn = 4, kNameColumn = 7, kNumbersColumn = 10;

// The letters, digits and underscores behind the `#`.
std::string_view WordOf(const Line& line) {
    int end = 1;
    while (IsBase36(static_cast<unsigned char>(line.text[end])) || line.text[end] == '_') ++end;
    return {line.text + 1, static_cast<size_t>(end - 1)};
}

std::string Upper(std::string_view text) {
    std::string upper(text);
    for (char& c : upper) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c;
    return upper;
}

// Up to the end of the line or to a CR, which has a finding of its own.
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
        Group& group = GroupOf(std::string("#") + name, line.place, foreign->severity, foreign->code);
        group.subject = std::string("#") + name;
        group.effect = foreign->effect;
    } else if (GetMeasureNo(line.text + 1) >= 0) {
        findings_->Add(line.place, Severity::kWarning, "bad-channel-line", [&] {
            return Quote(line.text) +
                   " begins like a line of a measure, but has no `:` in column 7, so the player skips it; "
                   "write it "
                   "as #mmmcc:data";
        });
    } else if (reading.keyword == Keyword::kWav || reading.keyword == Keyword::kBmp ||
               reading.keyword == Keyword::kBpmxx) {
        CheckSkippedFile(line, reading);
    } else if (reading.keyword == Keyword::kBga && word.size() <= 5) {
        findings_->Add(line.place, Severity::kWarning, "bga-short", [&] {
            return line.length < 22
                       ? "the player skips #BGA lines of fewer than 22 characters, and this one has " +
                             std::to_string(line.length) + "; write its numbers with more digits"
                       : "the player skips this #BGA line: it needs a blank in column 7";
        });
    } else if (reading.keyword != Keyword::kNone) {
        CheckSkippedHeader(line, word);
    } else if (word.empty()) {
        ++tables_->comments;
    } else {
        findings_->Add(line.place, Severity::kWarning, "unknown-command", [&] {
            return "the player knows no command " + Quote("#" + std::string(word)) + " and skips the line";
        });
    }
}

// #WAV, #BMP and #BPM with a number.
void LineChecker::CheckSkippedFile(const Line& line, const Reading& reading) {
    const std::string head = Upper({line.text + 1, 3});
    const char* id = line.text + kIdColumn;
    if (line.length > 6 && !IsId(id)) {
        findings_->Add(line.At(kIdColumn), Severity::kWarning, "bad-id", [&] {
            return "the player skips the line: #" + head +
                   " needs two digits of 0-9 and A-Z in columns 5 and 6";
        });
    } else if (line.length > 6 && line.text[6] != ' ' && reading.keyword != Keyword::kBpmxx) {
        findings_->Add(line.At(6), Severity::kWarning, "no-blank", [&] {
            return "the player skips the line: #" + head + " needs a blank behind its number, in column 7";
        });
    } else if (line.length < 8) {
        if (cut_) return;  // told already
        findings_->Add(line.place, Severity::kNote, "value-missing",
                       [&] { return "the player skips the line: " + Quote(line.text) + " has no value"; });
    } else {
        findings_->Add(line.At(kIdColumn), Severity::kWarning, "zero-number", [&] {
            return "the player skips the line: the numbers of a " + std::string(ThingOf(reading.keyword)) +
                   " go from 01 to FZ, and " + Quote(PairAt(id)) + " is read as 00; take another number";
        });
    }
}

// A keyword that ends in a blank.
void LineChecker::CheckSkippedHeader(const Line& line, std::string_view word) {
    static constexpr std::string_view kWords[] = {"TITLE", "ARTIST", "GENRE", "BPM",       "PLAYER",
                                                  "RANK",  "VOLWAV", "TOTAL", "PLAYLEVEL", "PATH_WAV"};
    const std::string upper = Upper(word);
    for (const std::string_view known : kWords) {
        if (upper != known) continue;
        const char after = line.text[1 + known.size()];
        if (after != ' ' && after != '\0') {
            findings_->Add(line.place, Severity::kWarning, "no-blank", [&] {
                return "the player skips the line: #" + upper + " needs a blank behind it";
            });
        } else if (!cut_) {
            const bool weighty = known == "BPM" || known == "PATH_WAV";
            findings_->Add(line.place, weighty ? Severity::kWarning : Severity::kNote, "value-missing", [&] {
                return "the player skips the line: " + Quote(line.text) +
                       (known == "PATH_WAV" ? " needs a folder of at least two characters" : " has no value");
            });
        }
        return;
    }
    findings_->Add(line.place, Severity::kWarning, "unknown-command", [&] {
        return "the player knows no command " + Quote("#" + std::string(word)) + " and skips the line";
    });
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
        findings_->Add(line.At(column), Severity::kWarning, "bad-id", [&] {
            return Quote(PairAt(id)) + " are not two digits of 0-9 and A-Z; the player reads the number as " +
                   IdOf(number);
        });
    } else if (IsFolded(id)) {
        findings_->Add(line.At(column), Severity::kWarning, "folded-id", [&] {
            return "the player reads " + Quote(PairAt(id)) + " as " + IdOf(number) +
                   ", since the numbers of a " + thing + " end at FZ; take a number up to FZ";
        });
    }
}

void LineChecker::DefineFile(const Line& line, const Reading& reading) {
    const bool sound = reading.keyword == Keyword::kWav;
    Definition& definition =
        (sound ? tables_->sounds : tables_->pictures)[static_cast<size_t>(reading.number)];
    CheckId(line, kIdColumn, ThingOf(reading.keyword), reading.number);
    if (!sound) tables_->folded_pictures[static_cast<size_t>(Base36ToInt(line.text + kIdColumn))] = true;
    const std::string name = line.text + kNameColumn;
    if (definition.place.line != 0) {
        const bool same = definition.path == reading.path;
        findings_->Add(line.place, same ? Severity::kNote : Severity::kWarning, "defined-twice", [&] {
            return std::string(ThingOf(reading.keyword)) + " " + IdOf(reading.number) +
                   " is defined in line " + std::to_string(definition.place.line) + " too" +
                   (same ? ", with the same file"
                         : "; the player loads " + Quote(name) + " and not " + Quote(definition.name) +
                               "; give one of them another number");
        });
    }
    if (!reading.path.ends_with(name)) {
        findings_->Add(line.At(kNameColumn), Severity::kError, "path-too-long", [&] {
            return "folder and name have more than 259 bytes together, so the player looks for a name "
                   "without its "
                   "end; shorten them";
        });
    }
    definition.place = line.place;
    definition.name = name;
    definition.path = reading.path;
}

// Follows the player from number to number: each begins behind the blank that it finds next.
void LineChecker::CheckBgaNumbers(const Line& line) {
    const char* p = line.text + kNumbersColumn;
    int32_t numbers[6] = {};
    int found = 0;
    for (; found < 6; ++found) {
        if (*p == ' ' && found < 5) {
            findings_->Add(line.At(p - line.text), Severity::kWarning, "bga-blanks", [] {
                return std::string(
                    "two blanks in a row: the player reads the next number twice and the others at "
                    "the wrong places; leave one");
            });
            return;
        }
        numbers[found] = ReadDecimal(p);
        p = std::strchr(p, ' ');
        if (!p) break;
        ++p;
    }
    if (found < 5) {
        findings_->Add(line.place, Severity::kWarning, "bga-numbers", [&] {
            return "the line has " + CountOf(found + 1, "number") +
                   " of six behind its picture, and the player takes the others as 0; write x1 y1 x2 y2 dx "
                   "dy";
        });
    }
    const auto longer = [](int32_t from, int32_t to) { return int64_t{to} - (from < 0 ? 0 : from) > 256; };
    if (longer(numbers[0], numbers[2]) || longer(numbers[1], numbers[3])) {
        findings_->Add(line.place, Severity::kNote, "bga-clipped", [] {
            return std::string(
                "the rectangle is larger than 256 by 256; the player cuts it at its right and lower "
                "edge");
        });
    }
}

void LineChecker::DefineBga(const Line& line, const Reading& reading) {
    if (!IsId(line.text + kIdColumn)) CheckId(line, kIdColumn, "definition", reading.number);
    CheckId(line, kNameColumn, "picture", reading.bga.nBmp);
    CheckBgaNumbers(line);
    Definition& definition = tables_->bgas[static_cast<size_t>(reading.number)];
    if (definition.place.line != 0) {
        findings_->Add(line.place, Severity::kWarning, "defined-twice", [&] {
            return "rectangle " + IdOf(reading.number) + " is defined in line " +
                   std::to_string(definition.place.line) + " too; the player takes this one";
        });
    }
    if (reading.number == 0) {
        findings_->Add(line.At(kIdColumn), Severity::kWarning, "zero-number",
                       [] { return std::string("no object can name rectangle 00; give it another number"); });
    }
    const BgaDef& bga = reading.bga;
    if (bga.nBmp == 0) {
        findings_->Add(line.At(kNameColumn), Severity::kWarning, "zero-number", [] {
            return std::string(
                "a rectangle of picture 00 counts as none for the player; give the picture another "
                "number");
        });
    } else if (bga.nX2 <= bga.nX1 || bga.nY2 <= bga.nY1) {
        findings_->Add(line.place, Severity::kWarning, "bga-empty", [] {
            return std::string(
                "the rectangle has no width or no height, so the player blanks the layer; its numbers "
                "are left, top, right, bottom, and the place of its left and upper edge");
        });
    }
    definition.place = line.place;
}

void LineChecker::DefinePathWav(const Line& line) {
    findings_->Add(line.place, Severity::kWarning, "path-wav", [&] {
        const char first = probe_.Folder()[0];
        const bool relative = first != '\\' && first != '/' && probe_.Folder()[1] != ':';
        return "from here on the player looks for sounds and pictures in " + Quote(probe_.Folder()) +
               " and not in the chart's folder" +
               (relative ? ", counted from the folder in which it is started" : "") +
               "; lines above are not affected; write the folder in front of the names instead";
    });
}

// Says so when a number does not end where its text does.
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
    findings_->Add(line.At(column), Severity::kWarning, "bad-number", [&] {
        return Quote(text) + " is no plain decimal number with a point; the player reads " +
               Shown(ReadFloat(text));
    });
}

void LineChecker::DefineTempo(const Line& line, const Reading& reading) {
    const bool numbered = reading.keyword == Keyword::kBpmxx;
    const int column = numbered ? 7 : 5;
    if (line.text[column - 1] != ' ') {
        findings_->Add(line.place, Severity::kWarning, "bpm-columns", [&] {
            return "the player reads " + Quote(line.text) + " as " +
                   (numbered ? "the extended tempo " + IdOf(reading.number) + " of "
                             : std::string("a tempo of ")) +
                   Shown(reading.tempo) + "; write #BPM, a blank and the tempo";
        });
    } else {
        CheckFloat(line, column);
    }
    if (!(std::isfinite(reading.tempo) && reading.tempo > 0.0)) {
        findings_->Add(line.At(column), Severity::kError, "tempo-not-positive", [&] {
            return "no time can be counted by a tempo of " + Shown(reading.tempo) +
                   "; the player goes on at " + (numbered ? "the tempo before it" : "130") +
                   "; write a tempo above 0";
        });
    }
    Place& before =
        numbered ? tables_->tempos[static_cast<size_t>(reading.number)].place : tables_->first_tempo;
    if (numbered) CheckId(line, kIdColumn, "tempo", reading.number);
    if (before.line != 0) {
        findings_->Add(line.place, Severity::kWarning, "defined-twice", [&] {
            return numbered ? "tempo " + IdOf(reading.number) + " is defined in line " +
                                  std::to_string(before.line) +
                                  " too; each value acts on the lines between it and the next"
                            : "the tempo of line " + std::to_string(before.line) +
                                  " is replaced for the whole chart; change tempos with channel 03 or 08";
        });
    }
    before = line.place;
    if (!numbered) return;
    Definition& definition = tables_->tempos[static_cast<size_t>(reading.number)];
    definition.tempo = reading.tempo;
}

void LineChecker::CheckHeader(const Line& line, const Reading& reading) {
    Place& before = headers_[reading.keyword];
    const std::string word = Upper(WordOf(line));
    if (before.line != 0) {
        findings_->Add(line.place, Severity::kWarning, "defined-twice", [&] {
            return "#" + word + " stands in line " + std::to_string(before.line) +
                   " too; the player takes this one";
        });
    }
    before = line.place;
    if (reading.keyword == Keyword::kPlayer) {
        const char* value = line.text + 8;
        const bool digit = IsDigit(static_cast<unsigned char>(*value)) != 0;
        if (digit && IsBlankRest(value + 1)) return;
        findings_->Add(line.At(8), Severity::kWarning, "bad-number", [&] {
            return "the player takes the one character behind #PLAYER and a blank, and reads " +
                   std::to_string(reading.value) + "; write one digit";
        });
    } else if (reading.keyword == Keyword::kVolWav && reading.value != 100) {
        findings_->Add(line.place, Severity::kNote, "unused-header",
                       [] { return std::string("#VOLWAV: the player plays every sound at full volume"); });
    }
}

}  // namespace check
