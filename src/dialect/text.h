// Small readers of a line's bytes.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace dialect {

constexpr bool IsBlank(char c) {
    return c == ' ' || c == '\t';
}
constexpr bool IsDecimal(char c) {
    return c >= '0' && c <= '9';
}
constexpr char Upper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

constexpr bool IsLetter(char c) {
    return Upper(c) >= 'A' && Upper(c) <= 'Z';
}

std::string_view TrimBlanks(std::string_view text);
// Whether a name ends like the files that the player takes in the place of a missing sound or picture. With
// blanks behind it, it then stands for the file without them.
bool EndsLikeSound(std::string_view name);
bool EndsLikePicture(std::string_view name);
// Whether the text is the word; the word is in capitals, the text in any case.
bool IsWord(std::string_view text, std::string_view word);
bool HasHead(std::string_view text, std::string_view head);

// The number at the text's begin, behind blanks: sign, digits, point, exponent; whatever follows is passed
// over. Nothing when there are no digits, infinity (of either sign) for one that no double holds.
std::optional<double> ReadNumber(std::string_view text);
// The whole number at the text's begin, behind blanks, held at 2^31 - 1; 0 without digits.
int32_t ReadCount(std::string_view text);

// Numbers of sounds, pictures and so on are two digits, 0 to 9, A to Z, a to z with the values 0 to 61. In a
// chart of base 36 small letters are read as capitals. A number is first * 62 + second in both bases.
constexpr int32_t kNumbers = 62 * 62;
constexpr uint8_t kNoDigit = 255;
using DigitTable = std::array<uint8_t, 256>;
const DigitTable& DigitsOfBase(int base);  // 36 or 62

// The number of two characters, -1 when one of them is no digit.
inline int32_t ReadPair(const DigitTable& digits, const char* pair) {
    const int high = digits[static_cast<uint8_t>(pair[0])], low = digits[static_cast<uint8_t>(pair[1])];
    return high == kNoDigit || low == kNoDigit ? -1 : high * 62 + low;
}

// The number as the player's tables have it, 1 to 575; 0 for one that they have not.
constexpr int32_t PlayerNumber(int32_t number) {
    const int32_t high = number / 62, low = number % 62;
    return high < 16 && low < 36 ? high * 36 + low : 0;
}

}  // namespace dialect
