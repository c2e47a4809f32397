// Channel lines: what stands where.
#include <cmath>
#include <cstring>
#include <limits>

#include "dialect/reader.h"

namespace dialect {

namespace {

int32_t HexDigit(char c) {
    c = Upper(c);
    return IsDecimal(c) ? c - '0' : c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

// The data of a line without underscores and blanks, and where each of its bytes stood.
class Data {
public:
    Data(std::string_view raw, Place begin, Chart* chart) : raw_(raw), place_(begin) {
        const auto dropped = [](char c) { return c == '_' || IsBlank(c); };
        size_t i = 0;
        while (i < raw.size() && !dropped(raw[i])) ++i;
        if (i == raw.size()) return;
        for (i = 0; i < raw.size(); ++i) {
            if (dropped(raw[i])) continue;
            kept_ += raw[i];
            columns_.push_back(place_.column + static_cast<int32_t>(i));
        }
        if (raw.find(' ') != raw.npos) chart->needs |= kNeedLines;
        raw_ = kept_;
    }
    std::string_view Bytes() const { return raw_; }
    Place At(size_t i) const {
        return {place_.line, columns_.empty() ? place_.column + static_cast<int32_t>(i) : columns_[i]};
    }

private:
    std::string_view raw_;
    Place place_;
    std::string kept_;
    std::vector<int32_t> columns_;
};

// Calls fn(index, pair) for the pairs that are not 00; four rests in a row are passed over at once.
template <class Function>
void ForPairs(std::string_view data, Function fn) {
    const size_t pairs = data.size() / 2;
    for (size_t i = 0; i < pairs; ++i) {
        const char* pair = data.data() + 2 * i;
        while (i + 4 <= pairs && std::memcmp(pair, "00000000", 8) == 0) i += 4, pair += 8;
        if (i < pairs && !(pair[0] == '0' && pair[1] == '0')) fn(i, pair);
    }
}

// The number of a pair on a channel, -1 when the pair says nothing there.
int32_t NumberOf(ChannelKind kind, const char* pair, const DigitTable& digits) {
    if (kind != ChannelKind::kTempo) return ReadPair(digits, pair);
    const int32_t high = HexDigit(pair[0]), low = HexDigit(pair[1]);
    return high < 0 || low < 0 ? -1 : high * 16 + low;
}

// Numbers that the player reads otherwise, by what the channel holds.
uint32_t NeedOf(ChannelKind kind, int32_t number) {
    switch (kind) {
        case ChannelKind::kTempoRef:
            return PlayerNumber(number) == 0 ? kNeedTimes : kNeedNothing;
        case ChannelKind::kStop:
            return kNeedTimes;
        case ChannelKind::kLong:
            return kNeedLongNotes;
        default:
            return 0;
    }
}

void BadPair(const Data& data, size_t i, const char* pair, Reader* reader) {
    reader->chart->needs |= kNeedNumbers;
    reader->findings->Add(Severity::kWarning, "bad-pair", data.At(2 * i), [&] {
        return Quote({pair, 2}) + " is no number here, it is passed over";
    });
}

void ReadPairs(int32_t measure, int32_t channel, ChannelKind kind, const Data& data, Reader* reader) {
    Chart* chart = reader->chart;
    const int32_t pairs = static_cast<int32_t>(data.Bytes().size() / 2);
    ForPairs(data.Bytes(), [&](size_t i, const char* pair) {
        const int32_t number = NumberOf(kind, pair, *reader->digits);
        if (number < 0) return BadPair(data, i, pair, reader);
        if (chart->objects.size() >= kMostObjects) {
            chart->too_large = true;
            return;
        }
        chart->needs |= NeedOf(kind, number);
        const Fraction place{static_cast<int32_t>(i), pairs};
        chart->objects.push_back({measure + place.Value(), place, static_cast<int16_t>(measure),
                                  static_cast<int16_t>(channel), static_cast<int16_t>(number),
                                  data.At(2 * i)});
        if (measure > chart->last_measure) chart->last_measure = measure;
    });
    if (data.Bytes().size() % 2 != 0) {
        reader->findings->Add(Severity::kWarning, "odd-data", data.At(data.Bytes().size() - 1),
                              "a single character behind the last pair is passed over");
    }
}

void ReadLength(int32_t measure, std::string_view text, Place place, Reader* reader) {
    const auto length = ReadNumber(text);
    if (length && std::isfinite(*length) && *length > 0) {
        reader->chart->lengths[static_cast<size_t>(measure)] = *length;
    } else {
        reader->chart->needs |= kNeedTimes;
        reader->findings->Add(Severity::kWarning, "bad-length", place,
                              "this is no length, it is passed over");
    }
    if (measure > reader->chart->last_measure) reader->chart->last_measure = measure;
}

void TellChannel(std::string_view name, int32_t channel, Place place, Reader* reader) {
    if (reader->told[static_cast<size_t>(channel)]) return;
    reader->told[static_cast<size_t>(channel)] = true;
    const char* effect = EffectOf(channel);
    reader->findings->Add(Severity::kNote, effect ? "no-effect" : "unknown-channel", place, [&] {
        return "channel " + std::string(name) + (effect ? ", " + std::string(effect) + "," : "") +
               " has no effect";
    });
}

}  // namespace

bool ReadChannelLine(const Line& line, Reader* reader) {
    const std::string_view text = line.text;
    if (text.size() < 7 || !IsDecimal(text[1]) || !IsDecimal(text[2]) || !IsDecimal(text[3])) return false;
    size_t colon = 6;
    while (colon < text.size() && IsBlank(text[colon])) ++colon;
    if (colon == text.size() || text[colon] != ':') return false;
    if (colon != 6) reader->chart->needs |= kNeedLines;
    const int32_t measure = (text[1] - '0') * 100 + (text[2] - '0') * 10 + (text[3] - '0');
    const DigitTable& digits = DigitsOfBase(36);
    const int32_t high = digits[static_cast<uint8_t>(text[4])], low = digits[static_cast<uint8_t>(text[5])];
    if (high == kNoDigit || low == kNoDigit) return false;
    const int32_t channel = Channel(high, low);
    const ChannelKind kind = KindOf(channel);
    const Place begin{line.place.line, line.place.column + static_cast<int32_t>(colon) + 1};
    if (kind == ChannelKind::kUnknown || kind == ChannelKind::kNoEffect) {
        TellChannel(text.substr(4, 2), channel, line.place, reader);
        return true;
    }
    if (kind == ChannelKind::kLength) {
        ReadLength(measure, text.substr(colon + 1), begin, reader);
    } else {
        ReadPairs(measure, channel, kind, Data(text.substr(colon + 1), begin, reader->chart), reader);
    }
    return true;
}

}  // namespace dialect
