// Text of unknown encoding, from charts, command lines and disks.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// True for complete, shortest-form UTF-8 without surrogates, and for empty text.
bool IsUtf8(std::string_view bytes);

// Length of the well-formed UTF-8 sequence at the start of the bytes; 0 when there is none.
size_t Utf8Length(std::string_view bytes);

// The code point of a well-formed sequence of nLength bytes.
char32_t Utf8CodePoint(const char* pBytes, size_t nLength);

void AppendUtf8(std::string* pText, char32_t nCodePoint);

// Bytes of a two-byte CP932 character.
constexpr bool IsCp932Lead(unsigned char c) {
    return (c >= 0x81 && c <= 0x9F) || (c >= 0xE0 && c <= 0xFC);
}
constexpr bool IsCp932Trail(unsigned char c) {
    return c >= 0x40 && c <= 0xFC && c != 0x7F;
}

// The code point of a CP932 character of one or two bytes; 0 when there is none.
char32_t Cp932CodePoint(const char* pBytes, size_t nLength);

// Converts bytes to UTF-8 for display. Reads them as UTF-8 if they are UTF-8, possibly with truncated
// sequences; otherwise as CP932. Drops truncated sequences, replaces invalid characters by U+FFFD, and
// replaces control characters except LF and TAB by spaces.
std::string DisplayText(std::string_view bytes);
