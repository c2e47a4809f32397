// ASCII letter case only: the bytes of two-byte characters never change.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

constexpr char AsciiLower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

constexpr char AsciiUpper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

inline std::string AsciiUpper(std::string text) {
    for (char& c : text) c = AsciiUpper(c);
    return text;
}

// Compares without letter case.
constexpr bool AsciiEqual(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return AsciiLower(x) == AsciiLower(y); });
}

constexpr bool AsciiEndsWith(std::string_view text, std::string_view ending) {
    return text.size() >= ending.size() && AsciiEqual(text.substr(text.size() - ending.size()), ending);
}
