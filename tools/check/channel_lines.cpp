// Lines of measures: their shape, their pairs, and what the pairs name.
#include <cmath>
#include <cstring>

#include "chart/channels.h"
#include "chart/digits.h"
#include "chart/text.h"
#include "check/line_checker.h"

namespace check {
namespace {

constexpr int kChannelColumn = 4, kDataColumn = 7;
constexpr int32_t kFirstInvisible = 0x31;

int64_t CountPairs(const char* data, bool rests_too) {
    const size_t pairs = std::strlen(data) / 2;
    int64_t count = 0;
    for (size_t i = 0; i < pairs; ++i) count += rests_too || PairToBase36(data + 2 * i) > 0;
    return count;
}

bool IsHexPair(const char* p) {
    return DIGIT_HEX[static_cast<uint8_t>(p[0])] != NO_DIGIT &&
           DIGIT_HEX[static_cast<uint8_t>(p[1])] != NO_DIGIT;
}

bool IsPoor(int32_t channel) {
    return channel == 6;
}

}  // namespace

// A column of the data, also where the player has taken underscores out of it.
int LineChecker::ColumnOf(const Line& line, size_t at) const {
    if (!underscores_) return kDataColumn + static_cast<int>(at);
    const char* p = line.raw + kDataColumn;
    for (; p < line.raw_end; ++p) {
        if (*p == '_') continue;
        if (at-- == 0) break;
    }
    return static_cast<int>(p - line.raw);
}

void LineChecker::CheckChannel(Line* line, int32_t measure, int32_t channel) {
    underscores_ = std::memchr(line->raw, '_', static_cast<size_t>(line->length)) != nullptr;
    const char* data = line->text + kDataColumn;
    const std::string name(line->text + kChannelColumn, 2);
    const ChannelKind kind = channel < 0 ? KIND_NONE : GetChannelKind(channel);
    if (kind == KIND_LENGTH) {
        CheckLength(*line, measure);
    } else if (kind != KIND_NONE) {
        CheckPairs(*line, measure, channel);
    } else if (const int64_t objects = CountPairs(data, false)) {
        const Foreign* foreign = FindForeignChannel(name);
        const char* code = foreign ? foreign->code : channel < 0 ? "channel-letters" : "unknown-channel";
        Group& group =
            GroupOf("channel " + name, line->place, foreign ? foreign->severity : Severity::kWarning, code);
        group.objects += objects;
        group.subject = "channel " + Quote(name);
        group.effect = foreign ? foreign->effect
                       : channel < 0
                           ? "the player knows channels of two decimal digits alone and skips the line"
                           : "the player knows no such channel; its objects do nothing but lengthen the "
                             "chart";
    }
    if (channel < 0) return;
    ++tables_->commands;
    const bool counts = kind == KIND_LENGTH || CountPairs(data, false) > 0;
    if (!counts || measure <= tables_->last_measure) return;
    tables_->last_measure = measure;
    tables_->last_place = line->place;
}

void LineChecker::CheckLength(const Line& line, int32_t measure) {
    const char* data = line.text + kDataColumn;
    const double length = ReadFloat(data);
    if (!(std::isfinite(length) && length > 0.0)) {
        findings_->Add(line.At(kDataColumn), Severity::kWarning, "zero-length", [&] {
            return Quote(data) + " as the length of measure " + std::to_string(measure) +
                   " counts as 0: all its objects come at one time; write a length above 0";
        });
    } else {
        CheckFloat(line, kDataColumn);
    }
    Place& before = lengths_[static_cast<size_t>(measure)];
    if (before.line != 0) {
        findings_->Add(line.place, Severity::kWarning, "length-twice", [&] {
            return "measure " + std::to_string(measure) + " has a length in line " +
                   std::to_string(before.line) + " too; the player takes this one";
        });
    }
    before = line.place;
}

void LineChecker::CheckPairs(const Line& line, int32_t measure, int32_t channel) {
    const char* data = line.text + kDataColumn;
    const size_t bytes = std::strlen(data);
    const bool hex = channel == 3;
    bool told = false;
    for (size_t i = 0; i + 2 <= bytes; i += 2) {
        const char* pair = data + i;
        if (pair[0] == '0' && pair[1] == '0') continue;
        if (hex && !IsHexPair(pair)) {
            CheckTempoPair(line, ColumnOf(line, i), pair);
        } else if (!IsId(pair) && !told) {
            told = true;
            findings_->Add(line.At(ColumnOf(line, i)), Severity::kWarning, "bad-digit", [&] {
                return Quote(PairAt(pair)) +
                       " are not two digits of 0-9 and A-Z; the player takes the place for one "
                       "of the measure's all the same and reads the pair as " +
                       IdOf(channel == 4 || channel == 6 || channel == 7 ? PairToBase36(pair)
                                                                         : PairToObjNo(pair));
            });
        }
        TakePair(line, static_cast<int>(i), pair, measure, channel);
    }
    CheckEnd(line, bytes);
}

void LineChecker::CheckEnd(const Line& line, size_t bytes) {
    const char* data = line.text + kDataColumn;
    if (bytes == 0 && !cut_) {
        findings_->Add(line.place, Severity::kNote, "empty-data",
                       [] { return std::string("the line has nothing behind its `:` and does nothing"); });
    } else if (bytes % 2 != 0) {
        const char last = data[bytes - 1];
        const bool harmless = last == ' ' || last == '0';
        findings_->Add(
            line.At(ColumnOf(line, bytes - 1)), harmless ? Severity::kNote : Severity::kWarning, "odd-data",
            [&] {
                return "the data has an odd number of characters; the player drops the last one, " +
                       Quote({&last, 1}) + ", and divides the measure by " +
                       CountOf(static_cast<int64_t>(bytes / 2), "pair");
            });
    }
}

void LineChecker::CheckTempoPair(const Line& line, int column, const char* pair) {
    const int32_t tempo = PairToHex(pair);
    if (tempo == 0 && PairToObjNo(pair) == 0) return;
    findings_->Add(line.At(column), tempo > 0 ? Severity::kWarning : Severity::kError,
                   tempo > 0 ? "bad-digit" : "tempo-not-positive", [&] {
                       return Quote(PairAt(pair)) +
                              " are not two hexadecimal digits, as channel 03 has them; " +
                              (tempo > 0 ? "the player reads a tempo of " + std::to_string(tempo)
                                         : std::string("the player keeps the tempo that it has")) +
                              "; for tempos above 255 use #BPMxx and channel 08";
                   });
}

void LineChecker::TakePair(const Line& line, int column, const char* pair, int32_t measure, int32_t channel) {
    const Place place = line.At(ColumnOf(line, static_cast<size_t>(column)));
    const ChannelKind kind = GetChannelKind(channel);
    if (kind == KIND_BGA)
        TakePicture(place, pair);
    else if (kind == KIND_TEMPO)
        TakeTempo(place, pair, channel);
    else
        TakeSound(place, pair, channel);
    const bool acts = kind == KIND_BGA ? PairToBase36(pair) > 0 : PairToObjNo(pair) > 0;
    const bool invisible = kind == KIND_NOTE && channel >= kFirstInvisible;
    if (invisible && acts) {
        Group& group = GroupOf("invisible", line.place, Severity::kNote, "invisible-notes");
        ++group.objects;
        group.subject = "invisible notes";
        group.effect =
            "the player neither shows nor plays the channels 31 to 49; put a sound that is to be heard on "
            "channel 01";
    } else if (IsPoor(channel) && acts) {
        Group& group = GroupOf("poor", line.place, Severity::kNote, "poor-layer");
        ++group.objects;
        group.subject = "channel `06`";
        group.effect = "nobody misses a note here, so the player never shows this layer";
    }
    if (acts && !invisible && measure > tables_->last_acting) tables_->last_acting = measure;
}

// Told once for each pair: the objects of one number are many.
void LineChecker::NoteFolded(Place place, const char* pair, const char* thing) {
    const std::string name(pair, 2);
    const int32_t number = PairToObjNo(pair);
    Group& group = GroupOf(thing + name, place, Severity::kWarning, "folded-id");
    ++group.objects;
    if (!group.subject.empty()) return;
    group.subject = Quote(name);
    group.effect = "the numbers of a " + std::string(thing) + " end at FZ, and the player reads " +
                   Quote(name) + " as " + IdOf(number) + (number == 0 ? ", which makes no object" : "") +
                   "; take a number up to FZ";
}

// The place is that of the first object that acts.
static void CountUse(Use* use, Place place, bool acts = true) {
    if (use->objects++ == use->invisible && (acts || use->invisible == 0)) use->place = place;
    if (!acts) ++use->invisible;
}

void LineChecker::TakeSound(Place place, const char* pair, int32_t channel) {
    const bool note = channel != 1;
    if (IsFolded(pair)) NoteFolded(place, pair, "sound");
    const int32_t number = PairToObjNo(pair);
    if (number == 0) return;
    Use& use = tables_->sound_uses[static_cast<size_t>(number)];
    CountUse(&use, place, !note || channel < kFirstInvisible);
    (note ? tables_->notes : tables_->bgm).push_back({place, number});
}

void LineChecker::TakePicture(Place place, const char* pair) {
    const int32_t number = PairToBase36(pair);
    if (number == 0) return;
    CountUse(&tables_->picture_uses[static_cast<size_t>(number)], place);
    tables_->bga.push_back({place, number});
}

void LineChecker::TakeTempo(Place place, const char* pair, int32_t channel) {
    const int32_t number = PairToObjNo(pair);
    if (channel == 8 && IsFolded(pair)) NoteFolded(place, pair, "tempo");
    if (number == 0 && PairToHex(pair) == 0) return;
    tables_->changes.push_back({place, channel == 8 ? number : 0});
    if (channel != 8) return;
    Use& use = tables_->tempo_uses[static_cast<size_t>(number)];
    CountUse(&use, place);
    if (tables_->tempos[static_cast<size_t>(number)].place.line != 0) return;
    if (use.early_objects++ == 0) use.early = place;
}

}  // namespace check
