#include "dialect/player.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

#include "dialect/tempos.h"
#include "dialect/text.h"

namespace dialect {

namespace {

constexpr int32_t kSounds = 576;

// A pair in the player's tables: any first digit beyond F and any other byte count as 0.
int32_t PlainNumber(const char* pair) {
    const DigitTable& digits = DigitsOfBase(36);
    const int high = digits[static_cast<uint8_t>(pair[0])], low = digits[static_cast<uint8_t>(pair[1])];
    return (high < 16 ? high * 36 : 0) + (low == kNoDigit ? 0 : low);
}

int32_t HexPair(const char* pair) {
    const DigitTable& digits = DigitsOfBase(36);
    const int high = digits[static_cast<uint8_t>(pair[0])], low = digits[static_cast<uint8_t>(pair[1])];
    if (high >= 16) return 0;
    return low >= 16 ? high : high * 16 + low;
}

std::string_view NameOfFile(std::string_view name) {
    const std::string_view trimmed = name.substr(0, name.find_last_not_of(' ') + 1);
    return EndsLikeSound(trimmed) ? trimmed : name;
}

struct Start {
    int32_t measure;
    Fraction place;
    int32_t number;
};

class Reader {
public:
    bool Run(std::string_view bytes, std::vector<HeardSound>* sounds);

private:
    std::string_view TakeLine(std::string_view bytes, size_t* next) const;
    void Line(std::string_view line);
    void Channel(int32_t measure, int32_t channel, std::string data);
    void Keyword(std::string_view line);
    void AddTempo(Tempo tempo) {
        if (tempo.bpm > 0 && std::isfinite(tempo.bpm)) tempos_.push_back(tempo);
    }

    std::array<HeardSound, kSounds> files_{};
    std::array<double, kSounds> tempo_values_;
    double bpm_ = 130;
    int32_t highest_ = 0;
    bool elsewhere_ = false;
    std::vector<double> lengths_ = std::vector<double>(1002, 1.0);
    std::vector<Tempo> tempos_;
    std::vector<int32_t> tempo_channels_;
    std::vector<Start> starts_;
};

// Ends at CR LF or NUL; cut at 1,023 bytes, then at the first LF, then at the first tabulator.
std::string_view Reader::TakeLine(std::string_view bytes, size_t* next) const {
    const size_t begin = *next;
    size_t end = begin;
    while (end < bytes.size() && bytes[end] != '\0' &&
           !(bytes[end] == '\r' && bytes.substr(end + 1, 1) == "\n"))
        ++end;
    *next = std::min(bytes.find_first_not_of(std::string_view("\r\n\0", 3), end), bytes.size());
    std::string_view line = bytes.substr(begin, std::min<size_t>(end - begin, 1023));
    line = line.substr(0, line.find('\n'));
    return line.substr(0, line.find('\t'));
}

void Reader::Channel(int32_t measure, int32_t channel, std::string data) {
    std::erase(data, '_');
    const int32_t pairs = static_cast<int32_t>(data.size() / 2);
    bool counted = channel == 2;
    if (channel == 2) {
        const double length = ReadNumber(data).value_or(0.0);
        lengths_[static_cast<size_t>(measure)] = std::isfinite(length) && length > 0 ? length : 0.0;
    }
    const int32_t lane = channel % 10, side = channel / 10;
    const bool sound = channel == 1 || ((side == 1 || side == 2) && lane > 0);
    for (int32_t i = 0; i < pairs && channel != 2; ++i) {
        const char* pair = data.data() + 2 * i;
        const int32_t number = PlainNumber(pair), hex = HexPair(pair);
        const uint8_t high = DigitsOfBase(36)[static_cast<uint8_t>(pair[0])];
        counted |= number > 0 || (high != kNoDigit && high > 0);
        if (sound && number > 0) starts_.push_back({measure, {i, pairs}, number});
        if ((channel != 3 && channel != 8) || (hex == 0 && number == 0)) continue;
        tempos_.push_back(
            {measure, {i, pairs}, channel == 8 ? tempo_values_[static_cast<size_t>(number)] : hex});
        tempo_channels_.push_back(channel);
    }
    if (counted) highest_ = std::max(highest_, measure);
}

void Reader::Keyword(std::string_view line) {
    const std::string_view word = line.substr(1);
    if (HasHead(word, "WAV")) {
        const int32_t number = line.size() >= 8 && line[6] == ' ' ? PlainNumber(line.data() + 4) : 0;
        if (number > 0) files_[static_cast<size_t>(number)] = {0, NameOfFile(line.substr(7)), elsewhere_};
    } else if (HasHead(word, "PATH_WAV")) {
        elsewhere_ |= line.size() >= 12;
    } else if (HasHead(word, "BPM")) {
        const DigitTable& digits = DigitsOfBase(36);
        const bool indexed = line.size() >= 8 && digits[static_cast<uint8_t>(line[4])] != kNoDigit &&
                             digits[static_cast<uint8_t>(line[5])] != kNoDigit;
        if (indexed) {
            tempo_values_[static_cast<size_t>(PlainNumber(line.data() + 4))] =
                ReadNumber(line.substr(7)).value_or(0.0);
        } else if (line.size() >= 6) {
            bpm_ = ReadNumber(line.substr(5)).value_or(0.0);
        }
    }
}

void Reader::Line(std::string_view line) {
    if (line.size() <= 4 || line[0] != '#') return;
    const bool digits = IsDecimal(line[1]) && IsDecimal(line[2]) && IsDecimal(line[3]);
    if (!digits || line.size() < 7 || line[6] != ':') return Keyword(line);
    if (!IsDecimal(line[4]) || !IsDecimal(line[5])) return;
    const int32_t measure = (line[1] - '0') * 100 + (line[2] - '0') * 10 + (line[3] - '0');
    Channel(measure, (line[4] - '0') * 10 + (line[5] - '0'), std::string(line.substr(7)));
}

bool Reader::Run(std::string_view bytes, std::vector<HeardSound>* sounds) {
    tempo_values_.fill(130.0);
    for (size_t next = 0; next < bytes.size();) Line(TakeLine(bytes, &next));
    if (highest_ < 1) return false;
    lengths_.resize(static_cast<size_t>(highest_) + 2);
    std::vector<size_t> order(tempos_.size());
    for (size_t i = 0; i < order.size(); ++i) order[i] = i;
    const auto at = [&](size_t i) { return tempos_[i].measure + tempos_[i].place.Value(); };
    std::stable_sort(order.begin(), order.end(), [&](size_t a, size_t b) {
        return at(a) != at(b) ? at(a) < at(b) : tempo_channels_[a] < tempo_channels_[b];
    });
    std::vector<Tempo> tempos;
    tempos.swap(tempos_);
    for (const size_t i : order) AddTempo(tempos[i]);
    std::stable_sort(starts_.begin(), starts_.end(), [](const Start& a, const Start& b) {
        return a.measure + a.place.Value() < b.measure + b.place.Value();
    });
    PlayerClock clock(bpm_ > 0 && std::isfinite(bpm_) ? bpm_ : 130.0, lengths_, tempos_);
    for (const Start& start : starts_) {
        const double ms = clock.Ms(start.measure, start.place.Value());
        HeardSound heard = files_[static_cast<size_t>(start.number)];
        heard.ms = ms;
        if (!heard.name.empty()) sounds->push_back(heard);
    }
    return true;
}

}  // namespace

bool ReadAsPlayer(std::string_view bytes, std::vector<HeardSound>* sounds) {
    return Reader().Run(bytes, sounds);
}

}  // namespace dialect
