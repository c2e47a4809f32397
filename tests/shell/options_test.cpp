#include "shell/options.h"

#include <gtest/gtest.h>

#include <string>

#include "host/headless/headless.h"
#include "shell/shell.h"
#include "shell/winlist.h"

namespace {

// What both scans of a line come to while no other instance is running.
struct Scan {
    int result = 0;
    Options options{-1, -1, ""};
};

Scan ScanAlone(const char* line) {
    headless::Reset();
    g_bHost = g_bPlaying = 0;
    g_nStartMeasure = -1;
    g_fSpeed = 1.0f;
    CWinList list;
    Scan scan;
    ScanHostOption(line, list);
    scan.result = ScanOptions(line, list, &scan.options);
    return scan;
}

TEST(Options, TokensAndTheChartsName) {
    const std::pair<const char*, const char*> rows[] = {
        {" \t ", ""},
        {" \t song.bms -P", "song.bms -P"},
        {"/p\tsong.bms next.bms", "next.bms"},  // a tab does not end a token
        {"-P \t song.bms  ", "song.bms  "},
        {"-M 1.5 song.bms", "1.5 song.bms"},
        {"-N 7 song.bms", "7 song.bms"},
        {"-  / -W song.bms", "song.bms"},
        {"-", ""},
        {"-z /? --x -WhateverItIs s", "s"},
        {"\"-P\"", "\"-P\""},
        {"-\xff a\xffz", "a\xffz"},
    };
    for (const auto& [line, rest] : rows) {
        const Scan scan = ScanAlone(line);
        EXPECT_EQ(scan.result, SCAN_DONE) << line;
        EXPECT_STREQ(scan.options.pszRest, rest) << line;
    }
}

TEST(Options, Speed) {
    const std::pair<const char*, int> rows[] = {
        {"-M1.5", 150}, {"/m1.5", 150},   {"-M", 50},       {"-M 1.5", 50},  {"-M8", 800},     {"-M8.01", 50},
        {"-Mabc", 50},  {"-M0.1", 50},    {"-M0.11", 11},   {"-M1.15", 114}, {"-M-1", 50},     {"-M0", 50},
        {"-Mnan", 50},  {"-Minf", 50},    {"-M1e999", 50},  {"-M1e-1", 50},  {"-M2x", 200},    {"-M.5", 50},
        {"-M0x2", 50},  {"-M2 -M3", 300}, {"-M7.999", 799}, {"-M1\t5", 100}, {"-M+2.25", 225},
    };
    for (const auto& [line, hundredths] : rows) {
        ScanAlone(line);
        EXPECT_EQ(g_fSpeed, static_cast<float>(hundredths) * 0.01f) << line;
    }
    EXPECT_EQ(SpeedFromText("0.1000000015"), 10);            // just above the float 0.1
    ScanAlone(("-M1." + std::string(100000, '0')).c_str());  // longer than a value's room
    EXPECT_EQ(g_fSpeed, 1.0f);
    const int messages[][2] = {{10, 10}, {800, 800}, {9, 50}, {801, 50}, {INT32_MIN, 50}};
    for (const auto& [sent, taken] : messages) EXPECT_EQ(SpeedFromMessage(sent), taken);
}

TEST(Options, MeasureIsReadInPlaceAndLogged) {
    const std::pair<const char*, int> rows[] = {{"-n12", 12},
                                                {"-N", 0},
                                                {"-N7x", 7},
                                                {"-N 7 s", 7},
                                                {"-N\t7", 7},
                                                {"-N-1", -1},
                                                {"-N-5", -1},
                                                {"-N+3", 3},
                                                {"-N song", 0},
                                                {"-N1 -N2", 2},
                                                {"-Nx", 0},
                                                {"/N5\t-N6", 5},
                                                {"-N99999999999", INT32_MAX},
                                                {"-N-99999999999", -1}};
    for (const auto& [line, measure] : rows) {
        ScanAlone(line);
        EXPECT_EQ(g_nStartMeasure, measure) << line;
        EXPECT_TRUE(headless::Log().ends_with("-N Option = " + std::to_string(measure) + "\n")) << line;
    }
}

TEST(Options, Place) {
    const struct {
        const char* line;
        int x, y;
    } rows[] = {{"", -1, -1},          {"-X100", 100, -1},  {"-y-7", -1, -7},
                {"-X10 -Y20", 10, 20}, {"-X10 -X", -1, -1}, {"-Xabc -Y", 0, -1},
                {"-X 5", -1, -1},      {"-X1 -X2", 2, -1},  {"-X99999999999", INT32_MAX, -1}};
    for (const auto& row : rows) {
        const Scan scan = ScanAlone(row.line);
        EXPECT_EQ(scan.options.nWindowX, row.x) << row.line;
        EXPECT_EQ(scan.options.nWindowY, row.y) << row.line;
    }
}

TEST(Options, CommandsAlone) {
    EXPECT_EQ(ScanAlone("-Q -P").result, SCAN_EXIT);
    EXPECT_EQ(g_bPlaying, 0);  // what follows is not read
    EXPECT_EQ(ScanAlone("-R -S -P -d s").result, SCAN_DONE);
    EXPECT_EQ(g_bPlaying, 1);
    EXPECT_EQ(headless::Log(), "-P Option ON\n");
    EXPECT_EQ(g_bHost, 1);
    ScanAlone("s -D");
    EXPECT_EQ(g_bHost, 0);
}

TEST(Options, QuotesGoOneAtEachEnd) {
    char szFile[FILE_NAME_SIZE] = "";
    const std::pair<const char*, const char*> rows[] = {
        {"\"c:\\my charts\\a b.bme\"", "c:\\my charts\\a b.bme"},
        {"\"a", "a"},
        {"a\"", "a"},
        {"\"\"a\"\"", "\"a\""},
        {"\"", ""},
        {"\"\"", ""},
        {"\"a\" ", "a\" "}};
    for (const auto& [in, out] : rows) {
        ASSERT_TRUE(TakeFileName(in, szFile)) << in;
        EXPECT_STREQ(szFile, out) << in;
    }
    ASSERT_TRUE(TakeFileName(std::string(5000, 'x').c_str(), szFile));
    EXPECT_EQ(std::string(szFile), std::string(FILE_NAME_SIZE - 1, 'x'));
}

}  // namespace
