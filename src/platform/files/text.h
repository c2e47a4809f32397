// Texts of unknown encoding: bytes from charts, command lines and disks.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// A whole, shortest-form UTF-8 text without surrogates. The empty text is one.
bool IsUtf8(std::string_view bytes);

// Length of the well-formed UTF-8 sequence at the head of the bytes, 0 when there is none.
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

// The code point of one CP932 character of one or two bytes; 0 when there is none.
char32_t Cp932CodePoint(const char* pBytes, size_t nLength);

// For showing: UTF-8 when the bytes are UTF-8, also with sequences that were cut short; otherwise CP932. What
// was cut is dropped, what has no meaning becomes U+FFFD, and control characters other than LF and TAB become
// blanks.
std::string DisplayText(std::string_view bytes);
