// Lines of measures: their form, their pairs, and the sounds, pictures and tempos that the pairs use.
#include <cmath>
#include <cstring>

#include "chart/channels.h"
#include "chart/digits.h"
#include "chart/text.h"
#include "check/line_checker.h"
#include "platform/ascii.h"

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

void AddSounds(const char* data, std::set<std::string>* sounds) {
    for (size_t i = 0; i + 2 <= std::strlen(data); i += 2) {
        if (PairToBase36(data + i) > 0) sounds->insert(AsciiUpper(std::string(data + i, 2)));
    }
}

bool IsHexPair(const char* p) {
    return DIGIT_HEX[static_cast<uint8_t>(p[0])] != NO_DIGIT &&
           DIGIT_HEX[static_cast<uint8_t>(p[1])] != NO_DIGIT;
}

bool IsPoor(int32_t channel) {
    return channel == 6;
}

}  // namespace

// The column of a character of the data, before the player removed the underscores.
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
        const Code code = foreign ? foreign->code : channel < 0 ? Code("channel-letters") : "unknown-channel";
        Group& group =
            GroupOf("channel " + name, line->place, code, foreign ? foreign->severity : code->severity);
        group.objects += objects;
        if (code.Index() == Code("long-note").Index()) AddSounds(data, &group.sounds);
        group.subject = "channel " + Quote(name);
        group.effect = foreign ? foreign->effect
                       : channel < 0
                           ? "the player reads only channels of two decimal digits and skips the line"
                           : "the player does not use this channel; its objects only lengthen the chart";
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
        findings_->Add(line.At(kDataColumn), "zero-length", [&] {
            return "the player reads " + Quote(data) + " as a length of 0 for measure " +
                   std::to_string(measure) +
                   ", so all its objects come at the same time; write a length above 0";
        });
    } else {
        CheckFloat(line, kDataColumn);
    }
    Place& before = tables_->lengths[static_cast<size_t>(measure)];
    if (before.line != 0) {
        findings_->Add(line.place, "length-twice", [&] {
            return "line " + std::to_string(before.line) + " also sets the length of measure " +
                   std::to_string(measure) + "; the player uses this one";
        });
    }
    before = line.place;
}

void LineChecker::CheckPairs(const Line& line, int32_t measure, int32_t channel) {
    const char* data = line.text + kDataColumn;
    const size_t bytes = std::strlen(data);
    const bool hex = channel == 3;
    bool reported = false;
    for (size_t i = 0; i + 2 <= bytes; i += 2) {
        const char* pair = data + i;
        if (pair[0] == '0' && pair[1] == '0') continue;
        if (hex && !IsHexPair(pair)) {
            CheckTempoPair(line, ColumnOf(line, i), pair);
        } else if (!IsId(pair) && !reported) {
            reported = true;
            findings_->Add(line.At(ColumnOf(line, i)), "bad-digit", [&] {
                return Quote(PairAt(pair)) +
                       " is not two digits of 0-9 and A-Z; it still takes a position in the measure, and the "
                       "player reads it as " +
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
        findings_->Add(line.place, "empty-data", "nothing follows the `:`, so the line has no effect");
    } else if (bytes % 2 != 0) {
        const char last = data[bytes - 1];
        const bool harmless = last == ' ' || last == '0';
        findings_->Add(line.At(ColumnOf(line, bytes - 1)), "odd-data", harmless ? kNote : kWarning, [&] {
            return "the data has an odd number of characters; the player drops the last one, " +
                   Quote({&last, 1}) + ", and divides the measure into " +
                   CountOf(static_cast<int64_t>(bytes / 2), "pair");
        });
    }
}

void LineChecker::CheckTempoPair(const Line& line, int column, const char* pair) {
    const int32_t tempo = PairToHex(pair);
    if (tempo == 0 && PairToObjNo(pair) == 0) return;
    findings_->Add(line.At(column), tempo > 0 ? Code("bad-digit") : "tempo-not-positive", [&] {
        return Quote(PairAt(pair)) + " is not two hexadecimal digits, which channel 03 needs; the player " +
               (tempo > 0 ? "reads a tempo of " + std::to_string(tempo)
                          : std::string("keeps the current tempo")) +
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
        Group& group = GroupOf("invisible", line.place, "invisible-notes", kNote);
        ++group.objects;
        group.subject = "invisible notes";
        group.effect =
            "the player neither shows nor plays channels 31 to 49; move sounds that should be heard to "
            "channel "
            "01";
    } else if (IsPoor(channel) && acts) {
        Group& group = GroupOf("poor", line.place, "poor-layer", kNote);
        ++group.objects;
        group.subject = "channel `06`";
        group.effect = "this layer appears when a note is missed, and the player never misses one";
    }
    if (acts && !invisible && measure > tables_->last_acting) tables_->last_acting = measure;
}

// The place becomes that of the first object with an effect.
static void CountUse(Use* use, Place place, bool acts = true) {
    if (use->objects++ == use->invisible && (acts || use->invisible == 0)) use->place = place;
    if (!acts) ++use->invisible;
}

void LineChecker::TakeSound(Place place, const char* pair, int32_t channel) {
    const bool note = channel != 1;
    if (IsFolded(pair)) NoteFolded(place, pair, "sound", true);
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
    if (channel == 8 && IsFolded(pair)) NoteFolded(place, pair, "tempo", true);
    if (number == 0 && PairToHex(pair) == 0) return;
    tables_->changes.push_back({place, channel == 8 ? number : 0});
    if (channel != 8) return;
    Use& use = tables_->tempo_uses[static_cast<size_t>(number)];
    CountUse(&use, place);
    if (tables_->tempos[static_cast<size_t>(number)].place.line != 0) return;
    if (use.early_objects++ == 0) use.early = place;
}

}  // namespace check
