#include "dialect/text.h"

#include <algorithm>
#include <charconv>
#include <initializer_list>
#include <limits>

namespace dialect {

std::string_view TrimBlanks(std::string_view text) {
    while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
    while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
    return text;
}

static bool HasEnding(std::string_view name, std::initializer_list<std::string_view> endings) {
    const std::string_view ending = name.substr(std::min(name.rfind('.'), name.size()));
    return std::any_of(endings.begin(), endings.end(),
                       [&](std::string_view known) { return IsWord(ending, known); });
}

bool EndsLikeSound(std::string_view name) {
    return HasEnding(name, {".OGG", ".OPUS", ".FLAC", ".MP3", ".WAV"});
}

bool EndsLikePicture(std::string_view name) {
    return HasEnding(name, {".PNG", ".JPG", ".JPEG", ".GIF", ".BMP"});
}

bool HasHead(std::string_view text, std::string_view head) {
    return text.size() >= head.size() &&
           std::equal(head.begin(), head.end(), text.begin(), [](char a, char b) { return a == Upper(b); });
}

bool IsWord(std::string_view text, std::string_view word) {
    return text.size() == word.size() && HasHead(text, word);
}

std::optional<double> ReadNumber(std::string_view text) {
    text = TrimBlanks(text);
    const bool negative = !text.empty() && text[0] == '-';
    if (!text.empty() && (text[0] == '-' || text[0] == '+')) text.remove_prefix(1);
    if (text.empty() || (text[0] != '.' && !IsDecimal(text[0]))) return {};
    double value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec == std::errc::invalid_argument) return {};
    if (result.ec == std::errc::result_out_of_range) value = std::numeric_limits<double>::infinity();
    return negative ? -value : value;
}

int32_t ReadCount(std::string_view text) {
    constexpr int64_t kMost = std::numeric_limits<int32_t>::max();
    int64_t count = 0;
    for (const char c : TrimBlanks(text)) {
        if (!IsDecimal(c)) break;
        count = std::min(count * 10 + (c - '0'), kMost);
    }
    return static_cast<int32_t>(count);
}

static constexpr DigitTable MakeDigits(int base) {
    DigitTable table{};
    for (auto& value : table) value = kNoDigit;
    for (int i = 0; i < 26; ++i) {
        table['A' + i] = static_cast<uint8_t>(10 + i);
        table['a' + i] = static_cast<uint8_t>(base == 62 ? 36 + i : 10 + i);
        if (i < 10) table['0' + i] = static_cast<uint8_t>(i);
    }
    return table;
}

const DigitTable& DigitsOfBase(int base) {
    static constexpr DigitTable kBase36 = MakeDigits(36), kBase62 = MakeDigits(62);
    return base == 62 ? kBase62 : kBase36;
}

}  // namespace dialect
