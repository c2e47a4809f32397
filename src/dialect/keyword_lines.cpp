// Commands: headers and definitions.
#include <algorithm>
#include <cmath>
#include <limits>

#include "dialect/reader.h"

namespace dialect {

namespace {

// A command's word, up to its first blank, and its value, trimmed.
struct Command {
    std::string_view word, value;
    Place place;  // of the `#`
    Place value_place;
    bool plain;          // one blank between them, which the player wants
    bool blanks_behind;  // that the player takes for a part of the value
};

Command Split(const Line& line) {
    const std::string_view text = line.text;
    size_t end = 1;
    while (end < text.size() && !IsBlank(text[end])) ++end;
    size_t value = end;
    while (value < text.size() && IsBlank(text[value])) ++value;
    const Place place{line.place.line, line.place.column + static_cast<int32_t>(value)};
    return {text.substr(1, end - 1), text.substr(value), line.place, place,
            value == end + 1,        line.blanks_behind};
}

// The number behind the head of a word such as WAV01, -1 when the word is no such.
int32_t NumberBehind(std::string_view word, std::string_view head, const DigitTable& digits) {
    if (word.size() != head.size() + 2 || !HasHead(word, head)) return -1;
    return ReadPair(digits, word.data() + head.size());
}

void Define(std::vector<Definition>* table, int32_t number, const Command& command, Reader* reader) {
    if (command.value.empty()) return;
    (*table)[static_cast<size_t>(number)] = {command.value, command.value_place};
    const bool sounds = table == &reader->chart->sounds;
    const bool found = sounds ? EndsLikeSound(command.value) : EndsLikePicture(command.value);
    if (!command.plain || (command.blanks_behind && !found)) reader->chart->needs |= kNeedNames;
}

// #BPMxx and #STOPxx: a value that is no positive finite number defines nothing.
void DefineValue(std::vector<double>* table, int32_t number, const Command& command, Reader* reader) {
    const auto value = ReadNumber(command.value);
    const bool good = value && std::isfinite(*value) && *value > 0;
    double& entry = (*table)[static_cast<size_t>(number)];
    if (!std::isnan(entry)) reader->chart->needs |= kNeedTimes;
    entry = good ? *value : 0;
    if (good) return;
    reader->chart->needs |= kNeedTimes;
    reader->findings->Add(Severity::kWarning, "bad-value", command.value_place, [&] {
        return Quote(command.value) + " is no positive number, its objects do nothing";
    });
}

// Whole numbers of a value, at most `most`; how many there were.
int ReadNumbers(std::string_view text, int32_t* numbers, int most) {
    int count = 0;
    for (text = TrimBlanks(text); count < most && !text.empty(); text = TrimBlanks(text)) {
        const auto number = ReadNumber(text);
        if (!number) break;
        numbers[count++] = static_cast<int32_t>(std::clamp(*number, -32768.0, 32767.0));
        const size_t end = text.find_first_of(" \t");
        text = end == text.npos ? std::string_view{} : text.substr(end);
    }
    return count;
}

// Whether the player reads a #BGAxx line as it is meant: its columns are fixed, single blanks divide its
// numbers, and a rectangle is at most 256 wide and high.
bool PlayerReadsCut(int32_t picture, const int32_t* n, const Command& command) {
    const bool fits = n[0] >= 0 && n[1] >= 0 && n[2] - n[0] <= 256 && n[3] - n[1] <= 256;
    return fits && command.plain && PlayerNumber(picture) > 0 && command.value.size() >= 15 &&
           command.value.find("  ") == std::string_view::npos;
}

// #BGAxx yy x1 y1 x2 y2 dx dy; #@BGAxx yy x y width height dx dy.
void DefineCut(int32_t number, bool sized, const Command& command, Reader* reader) {
    int32_t n[6] = {};
    const size_t end = command.value.find_first_of(" \t");
    const std::string_view name = command.value.substr(0, end);
    const int32_t picture = name.size() == 2 ? ReadPair(*reader->digits, name.data()) : -1;
    const bool good =
        picture >= 0 && end != command.value.npos && ReadNumbers(command.value.substr(end), n, 6) == 6;
    if (sized || !good || !PlayerReadsCut(picture, n, command)) reader->chart->needs |= kNeedPictures;
    if (!good) {
        reader->findings->Add(Severity::kWarning, "bad-picture-cut", command.place,
                              "a picture and six numbers are wanted here, the line is passed over");
        return;
    }
    if (sized) n[2] += n[0], n[3] += n[1];
    auto& cuts = reader->chart->cuts;
    if (cuts.empty()) cuts.resize(kNumbers);
    cuts[static_cast<size_t>(number)] = {picture, n[0], n[1], n[2], n[3], n[4], n[5], command.place};
}

// #STP mmm.ttt ms: a place in thousandths of a measure.
void ReadTimedStop(const Command& command, Reader* reader) {
    const std::string_view value = command.value;
    const size_t blank = std::min(value.find_first_of(" \t"), value.size());
    const auto ms = ReadNumber(value.substr(blank));
    const auto digit = [&](size_t i) { return i < blank && IsDecimal(value[i]) ? value[i] - '0' : -1; };
    const bool place = digit(0) >= 0 && digit(1) >= 0 && digit(2) >= 0 && (blank == 3 || value[3] == '.');
    if (!place || !ms || !std::isfinite(*ms) || *ms <= 0) {
        reader->findings->Add(
            Severity::kWarning, "bad-stop", command.place,
            "a place such as 012.500 and milliseconds are wanted here, the line is passed over");
        return;
    }
    int32_t thousandths = 0;
    for (size_t i = 4; i < 7; ++i) thousandths = thousandths * 10 + std::max(digit(i), 0);
    reader->chart->timed_stops.push_back(
        {digit(0) * 100 + digit(1) * 10 + digit(2), {thousandths, 1000}, *ms, command.place});
    reader->chart->needs |= kNeedTimes;
}

void ReadStartTempo(const Command& command, Reader* reader) {
    const std::string_view text = command.value.empty() ? command.word.substr(3) : command.value;
    const auto bpm = ReadNumber(text);
    if (command.word.size() > 3) reader->chart->needs |= kNeedTimes;
    if (bpm && std::isfinite(*bpm) && *bpm > 0) {
        reader->chart->bpm = *bpm;
        return;
    }
    reader->chart->needs |= kNeedTimes;
    reader->findings->Add(Severity::kWarning, "bad-tempo", command.place,
                          "this is no tempo, it is passed over");
}

// Commands of others that leave the sound and picture of an automatic player as they are.
constexpr const char* kSilent[] = {
    "SUBTITLE", "SUBARTIST", "MAKER",      "COMMENT",   "STAGEFILE",  "BANNER",
    "BACKBMP",  "CHARFILE",  "DIFFICULTY", "DEFEXRANK", "PREVIEW",    "LNMODE",
    "URL",      "EMAIL",     "BASE",       "CHARSET",   "DIVIDEPROP",
};

// Commands with a number behind them, told once whatever the number.
constexpr std::string_view kNumbered[] = {"SCROLL", "SPEED", "TEXT", "SONG",         "EXRANK",
                                          "ARGB",   "SWBGA", "SEEK", "CHANGEOPTION", "WAVCMD"};

void TellWord(const Command& command, Reader* reader) {
    constexpr size_t kMostWords = 50;
    for (const char* word : kSilent) {
        if (IsWord(command.word, word)) return;
    }
    size_t letters = 0;
    while (letters < command.word.size() && (command.word[letters] == '_' || IsLetter(command.word[letters])))
        ++letters;
    std::string word(command.word.substr(0, letters));
    for (char& c : word) c = Upper(c);
    for (const std::string_view head : kNumbered) {
        if (HasHead(word, head)) word = head;
    }
    const auto& words = reader->words;
    if (word.size() < 3 || words.size() >= kMostWords ||
        std::find(words.begin(), words.end(), word) != words.end())
        return;
    reader->words.push_back(word);
    reader->findings->Add(Severity::kNote, "no-effect", command.place, "#" + word + " has no effect");
}

// The headers that the player reads. Each goes into the compiled text as it is.
bool ReadHeader(const Command& command, Reader* reader) {
    constexpr const char* kKept[] = {"TITLE",     "ARTIST", "GENRE",  "PLAYER",
                                     "PLAYLEVEL", "RANK",   "VOLWAV", "TOTAL"};
    for (const char* word : kKept) {
        if (!IsWord(command.word, word)) continue;
        if (IsWord(command.word, "VOLWAV") && ReadCount(command.value) != 100) TellWord(command, reader);
        if (command.value.empty()) return true;
        std::string line = "#" + std::string(word) + " " + std::string(command.value.substr(0, 1000));
        std::replace(line.begin(), line.end(), '\t', ' ');
        reader->chart->headers.push_back(std::move(line));
        if (!command.plain) reader->chart->needs |= kNeedLines;
        return true;
    }
    return false;
}

// #EXWAVxx and #EXBMPxx: the name stands behind other values, which have no effect: as many as the first word
// has letters, or one.
Command BehindValues(Command command, bool listed) {
    std::string_view rest = command.value;
    size_t end = std::min(rest.find_first_of(" \t"), rest.size());
    for (size_t values = listed ? end : 0;; --values) {
        rest = TrimBlanks(rest.substr(end));
        if (values == 0) break;
        end = std::min(rest.find_first_of(" \t"), rest.size());
    }
    command.value_place.column += static_cast<int32_t>(rest.data() - command.value.data());
    command.value = rest;
    command.plain = false;
    return command;
}

bool ReadIndexed(const Command& command, Reader* reader) {
    Chart* chart = reader->chart;
    const auto behind = [&](std::string_view head) {
        return NumberBehind(command.word, head, *reader->digits);
    };
    int32_t n;
    if ((n = behind("WAV")) > 0) return Define(&chart->sounds, n, command, reader), true;
    if ((n = behind("BMP")) >= 0) return Define(&chart->pictures, n, command, reader), true;
    if ((n = behind("EXWAV")) > 0)
        return Define(&chart->sounds, n, BehindValues(command, true), reader), true;
    if ((n = behind("EXBMP")) > 0)
        return Define(&chart->pictures, n, BehindValues(command, false), reader), true;
    if (!command.value.empty() && (n = behind("BPM")) > 0) {
        if (PlayerNumber(n) == 0) chart->needs |= kNeedNumbers;
        if (!chart->objects.empty() || !command.plain) chart->needs |= kNeedTimes;
        return DefineValue(&chart->tempos, n, command, reader), true;
    }
    if ((n = behind("EXBPM")) > 0) {
        chart->needs |= kNeedTimes;
        return DefineValue(&chart->tempos, n, command, reader), true;
    }
    if ((n = behind("STOP")) > 0) return DefineValue(&chart->stops, n, command, reader), true;
    if ((n = behind("BGA")) > 0) return DefineCut(n, false, command, reader), true;
    if ((n = behind("@BGA")) > 0) return DefineCut(n, true, command, reader), true;
    return false;
}

void ReadLongNotes(const Command& command, Reader* reader) {
    if (IsWord(command.word, "LNTYPE")) {
        reader->chart->long_type = ReadCount(command.value) == 2 ? 2 : 1;
    } else {
        reader->chart->long_end =
            command.value.size() >= 2 ? ReadPair(*reader->digits, command.value.data()) : -1;
    }
}

}  // namespace

void ReadKeywordLine(const Line& line, Reader* reader) {
    const Command command = Split(line);
    if (ReadIndexed(command, reader) || ReadHeader(command, reader)) return;
    if (IsWord(command.word, "STP")) {
        ReadTimedStop(command, reader);
    } else if (IsWord(command.word, "LNTYPE") || IsWord(command.word, "LNOBJ")) {
        ReadLongNotes(command, reader);
    } else if (HasHead(command.word, "BPM") && (command.word.size() == 3 || IsDecimal(command.word[3]))) {
        ReadStartTempo(command, reader);
    } else {
        if (IsWord(command.word, "PATH_WAV")) reader->chart->needs |= kNeedNames;
        TellWord(command, reader);
    }
}

int ReadBase(const std::vector<Line>& lines) {
    int base = 36;
    for (const Line& line : lines) {
        if (line.text.size() < 6 || !HasHead(line.text.substr(1), "BASE")) continue;
        const Command command = Split(line);
        if (IsWord(command.word, "BASE")) base = ReadCount(command.value) == 62 ? 62 : 36;
    }
    return base;
}

}  // namespace dialect
