#include "platform/files/text.h"

#include <gtest/gtest.h>

#include <cstring>

#include "platform/files/namefold.h"

namespace {

TEST(Text, Shown) {
    const struct {
        std::string bytes, shown;
        const char* what;
    } kRows[] = {
        {"plain", "plain", "ASCII"},
        {"", "", "nothing"},
        {"\xE3\x81\x82", "あ", "UTF-8"},
        {"caf\xC3\xA9", "café", "two bytes of UTF-8"},
        {"\x82\xA0\x83\x5C", "あソ", "CP932, a backslash as second byte"},
        {"\xB1\xB2", "ｱｲ", "half-width"},
        {"\x82\xA0\x83", "あ", "a two-byte character cut at the end"},
        {"-\x82\xA0\x83- \x88\x9F", "-あ- 亜", "cut in the middle, joined with ASCII"},
        {"\xE3\x81\x82\xE3\x81", "あ", "UTF-8 cut at the end"},
        {"-\xE3\x81\x82\xE3- \xE3\x81\x84\xE3\x81  [x] ", "-あ- い  [x] ", "UTF-8 cut in the middle, twice"},
        {"-\xF0\x9F\x8E\xB5\xF0\x9F\x8E- a", "-🎵- a", "four bytes, then cut"},
        {"\x87\x40\xFA\x40", "①ⅰ", "the vendor's rows"},
        {"a\x80z", "a\xEF\xBF\xBDz", "no character"},
        {"\x82\xA0\x81\xADz", "あ\xEF\xBF\xBDz", "a pair without a meaning"},
        {"a\x01\x1B\x7F"
         "b",
         "a   b", "control characters"},
        {"a\nb\tc", "a\nb\tc", "line feed and tab"},
        {"C:\\\x95\x5C\\a", "C:\\表\\a", "a path"},
    };
    for (const auto& row : kRows) EXPECT_EQ(DisplayText(row.bytes), row.shown) << row.what;
    EXPECT_TRUE(IsUtf8(DisplayText("\xED\xA0\x80")));  // a surrogate is none; read as CP932
}

TEST(Text, WhateverComesIsShownAsUtf8) {
    uint32_t nRandom = 7;
    for (int i = 0; i < 20000; ++i) {
        std::string bytes;
        for (int n = 0; n < 8; ++n) {
            nRandom = nRandom * 1664525 + 1013904223;
            bytes += static_cast<char>(nRandom >> 24);
        }
        ASSERT_TRUE(IsUtf8(DisplayText(bytes)));
        ASSERT_TRUE(IsUtf8(FoldName(bytes)));
    }
}

TEST(Text, WellFormedUtf8) {
    for (const char* good : {"a", "\xC3\xA9", "\xE0\xA0\x80", "\xED\x9F\xBF", "\xF4\x8F\xBF\xBF"})
        EXPECT_EQ(Utf8Length(good), std::strlen(good)) << good;
    for (const char* bad : {"\xC1\x80", "\xE0\x80\x80", "\xED\xA0\x80", "\xF0\x8F\x80\x80",
                            "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\x80", "\xC3", "\xE3\x81"})
        EXPECT_EQ(Utf8Length(bad), 0u) << bad;
}

TEST(Text, NamesThatDifferKeepDifferentKeys) {
    const char* const kNames[] = {"a",  "b",  "á",   "か",  "が",   "カ",   "ガ", "は", "ば",
                                  "ぱ", "ﾊﾞ", "a b", "a_b", "\xFF", "\xFE", "ss", "ß"};
    for (const char* pszA : kNames) {
        for (const char* pszB : kNames)
            EXPECT_EQ(FoldName(pszA) == FoldName(pszB), pszA == pszB) << pszA << pszB;
    }
}

}  // namespace
