#include "platform/files/text.h"

#include <gtest/gtest.h>

#include <cstring>

#include "platform/files/namefold.h"

namespace {

TEST(Text, Shown) {
    const std::pair<std::string, std::string> rows[] = {
        {"plain", "plain"},
        {"\xE3\x81\x82 caf\xC3\xA9", "あ café"},
        {"\x82\xA0\x83\x5C", "あソ"},  // CP932, a backslash as second byte
        {"\xB1\xB2", "ｱｲ"},
        {"\x82\xA0\x83", "あ"},                  // cut at the end
        {"-\x82\xA0\x83- \x88\x9F", "-あ- 亜"},  // cut in the middle, joined with ASCII
        {"\xE3\x81\x82\xE3\x81", "あ"},
        {"-\xE3\x81\x82\xE3- \xE3\x81\x84\xE3\x81  [x] ", "-あ- い  [x] "},
        {"-\xF0\x9F\x8E\xB5\xF0\x9F\x8E- a", "-🎵- a"},
        {"\x87\x40\xFA\x40", "①ⅰ"},                                      // the vendor's rows
        {"a\x80z \x82\xA0\x81\xADz", "a\xEF\xBF\xBDz あ\xEF\xBF\xBDz"},  // no characters
        {"a\x01\x1B\x7F\nb\tc", "a   \nb\tc"},
        {"C:\\\x95\x5C\\a", "C:\\表\\a"},
    };
    for (const auto& [bytes, shown] : rows) EXPECT_EQ(DisplayText(bytes), shown);
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
