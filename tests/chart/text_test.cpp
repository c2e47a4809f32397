#include "chart/text.h"

#include <gtest/gtest.h>

#include <cctype>
#include <cmath>
#include <string>

namespace {

TEST(Text, HeadsFoldTheirCase) {
    EXPECT_EQ(HasHeadI("wAv01", "WAV"), 1);
    EXPECT_EQ(HasHeadI("WA", "WAV"), 0);
    EXPECT_EQ(HasHeadI("", ""), 1);
    EXPECT_EQ(HasHeadI("x", ""), 1);
    EXPECT_EQ(HasHeadI("[itle ", "{itle "), 0);  // these two differ by the case bit alone
    EXPECT_EQ(HasHeadI("title", "TITLE "), 0);
}

TEST(Text, MeasureNumbers) {
    EXPECT_EQ(GetMeasureNo("000"), 0);
    EXPECT_EQ(GetMeasureNo("999:"), 999);
    EXPECT_EQ(GetMeasureNo("123456"), 123);
    for (const char* none : {"12a", "12", "", " 12", "-12"}) EXPECT_EQ(GetMeasureNo(none), -1) << none;
}

TEST(Text, PairNumbers) {
    const struct {
        const char* text;
        int32_t object, base36, hex;
    } rows[] = {
        {"00", 0, 0, 0},       {"01", 1, 1, 1},        {"FZ", 575, 575, 15},  {"fz", 575, 575, 15},
        {"G1", 1, 577, 0},     {"Z1", 1, 1261, 0},     {"G0", 0, 576, 0},     {"ZZ", 35, 1295, 0},
        {"ab", 371, 371, 171}, {"AB", 371, 371, 171},  {"-1", 1, 1, 0},       {"1-", 36, 36, 1},
        {"1", 0, 0, 1},        {"", 0, 0, 0},          {" F", 15, 15, 0},     {"0G", 16, 16, 0},
        {"0x", 33, 33, 0},     {"FFF", 555, 555, 255}, {"\xFF\x81", 0, 0, 0},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(ObjNoToInt(row.text), row.object) << row.text;
        EXPECT_EQ(Base36ToInt(row.text), row.base36) << row.text;
        EXPECT_EQ(ReadHexPair(row.text), row.hex) << row.text;
    }
}

TEST(Text, ByteClasses) {
    for (int i = 0; i < 256; ++i) {
        const auto c = static_cast<unsigned char>(i);
        EXPECT_EQ(IsSJisLead(c) != 0, (c >= 0x81 && c <= 0x9F) || (c >= 0xE0 && c <= 0xFC)) << i;
        EXPECT_EQ(IsDigit(c) != 0, std::isdigit(c) != 0) << i;
        EXPECT_EQ(IsBase36(c) != 0, std::isalnum(c) != 0) << i;
    }
}

TEST(Text, JoinsPaths) {
    const struct {
        const char *dir, *name, *joined;
    } rows[] = {
        {"abc", "a.wav", "abc\\a.wav"},         {"abc\\", "a.wav", "abc\\a.wav"},
        {"\x83\\", "a.wav", "\x83\\\\a.wav"},  // the backslash is the second half of a character
        {"\x83\\\\", "a.wav", "\x83\\\\a.wav"}, {"\\", "a.wav", "\\a.wav"},
        {"abc\\", "\\x\\y", "abc\\\\x\\y"},     {"abc", "", "abc\\"},
    };
    for (const auto& row : rows) {
        char buffer[32];
        std::snprintf(buffer, sizeof buffer, "%s", row.dir);
        AddFileName(buffer, sizeof buffer, row.name);
        EXPECT_STREQ(buffer, row.joined);
    }
}

TEST(Text, CutsPathsThatDoNotFit) {
    char guarded[12];
    for (int size = 4; size <= 8; ++size) {
        std::fill(guarded, guarded + 12, '!');
        std::snprintf(guarded, 4, "abc");
        AddFileName(guarded, size, "defgh");
        EXPECT_EQ(std::string(guarded), std::string("abc\\defgh").substr(0, static_cast<size_t>(size) - 1));
        EXPECT_EQ(guarded[size], '!');
        std::fill(guarded, guarded + 12, '!');
        GetDirName("a\\bcdefghijk", guarded, size);
        EXPECT_STREQ(guarded, "a\\");
        EXPECT_EQ(guarded[size], '!');
    }
}

TEST(Text, DirectoryOfAPath) {
    const char* rows[][2] = {
        {"D:\\a\\b.bme", "D:\\a\\"}, {"a.bme", "a.bme"}, {"\\a", "\\"}, {"", ""}, {"x\\", "x\\"}};
    for (const auto& row : rows) {
        char buffer[64];
        GetDirName(row[0], buffer, sizeof buffer);
        EXPECT_STREQ(buffer, row[1]);
    }
}

TEST(Text, Decimals) {
    const std::pair<const char*, int32_t> rows[] = {
        {"12", 12},
        {" \v\f\r12x", 12},
        {"-7", -7},
        {"+7", 7},
        {"1.9", 1},
        {"2147483647", INT32_MAX},
        {"2147483648", INT32_MAX},
        {"-2147483648", INT32_MIN},
        {"-99999999999999999999999", INT32_MIN},
        {"99999999999999999999999", INT32_MAX},
    };
    for (const auto& [text, number] : rows) EXPECT_EQ(ReadDecimal(text), number) << text;
    for (const char* text : {"+-7", "- 7", "", "x1", "0x10"}) EXPECT_EQ(ReadDecimal(text), 0) << text;
}

TEST(Text, FloatingPoint) {
    const std::pair<const char*, double> rows[] = {
        {"180.5", 180.5}, {" +0.75x", 0.75},     {"-2", -2.0},          {".5", 0.5},  {"5.", 5.0},
        {"1e2", 100.0},   {"1E+2", 100.0},       {"1e", 1.0},           {"1e+", 1.0}, {"1,5", 1.0},
        {"0.1", 0.1},     {"-1e400", -HUGE_VAL}, {"4.9e-324", 4.9e-324}};
    for (const auto& [text, number] : rows) EXPECT_EQ(ReadFloat(text), number) << text;
    EXPECT_EQ(ReadFloat("2.2250738585072011e-308"), 2.2250738585072011e-308);
    const std::string zeros(400, '0');
    for (const std::string& text :
         {std::string("1e400"), "1" + zeros, "0." + zeros + "1e800", std::string("1e99999999999")})
        EXPECT_EQ(ReadFloat(text.c_str()), HUGE_VAL) << text;
    for (const char* text :
         {"", ".", "-", "+-1", "--1", "0x10", "inf", "nan", "-inf", "1e-400", "0e999999", "1e-99999999999"})
        EXPECT_EQ(ReadFloat(text), 0.0) << text;
    for (const std::string& text : {"0." + zeros + "1", "1" + zeros + "e-800"})
        EXPECT_EQ(ReadFloat(text.c_str()), 0.0) << text;
}

}  // namespace
