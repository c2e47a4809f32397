// What no chart that the program plays can show: the helpers at their limits, and calls with other arguments.
// Everything else is in tests/charts.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <new>
#include <random>
#include <vector>

#include "chart/charttime.h"
#include "chart/reader.h"
#include "chart/text.h"
#include "host/headless/headless.h"
#include "support/chart_file.h"

namespace {
bool g_refuse = false;
}

void* operator new[](size_t size, const std::nothrow_t&) noexcept {
    return g_refuse ? nullptr : ::operator new[](size);
}

namespace {

TEST(Chart, SortsAsAStableSortDoesAndWithoutMemory) {
    std::mt19937 random(7);
    for (int round = 0; round < 64; ++round) {
        const int kind = round % 4, count = static_cast<int>(random() % (round < 16 ? 20 : 2000));
        std::vector<BmsObject> objects(static_cast<size_t>(count));
        std::vector<BmsObject*> list;
        for (BmsObject& o : objects) {
            const int n = static_cast<int>(random() % 65536), i = static_cast<int>(list.size());
            o.nMeasure = kind == 0 ? i / 50 : kind == 1 ? (count - i) / 50 : n % 20;
            o.dPos = kind == 3 ? 0.0 : n / 64 % 12 / 12.0;
            o.nChannel = 17 + n / 1024 % 3;
            list.push_back(&o);
        }
        std::vector<BmsObject*> wanted = list;
        std::stable_sort(wanted.begin(), wanted.end(), [](const BmsObject* a, const BmsObject* b) {
            const double left = a->nMeasure + a->dPos, right = b->nMeasure + b->dPos;
            return left < right || (left == right && a->nChannel < b->nChannel);
        });
        g_refuse = round % 8 > 3;
        SortObjects(list.data(), count);
        g_refuse = false;
        EXPECT_EQ(list, wanted) << count << " of kind " << kind;
    }
}

TEST(Chart, ByteClasses) {
    for (int i = 0; i < 256; ++i) {
        const auto c = static_cast<unsigned char>(i);
        EXPECT_EQ(IsSJisLead(c) != 0, (c >= 0x81 && c <= 0x9F) || (c >= 0xE0 && c <= 0xFC)) << i;
        EXPECT_EQ(IsDigit(c) != 0, std::isdigit(c) != 0) << i;
        EXPECT_EQ(IsBase36(c) != 0, std::isalnum(c) != 0) << i;
    }
    EXPECT_EQ(HasHeadI("[itle ", "{itle "), 0);  // these two differ by the case bit alone
    EXPECT_EQ(HasHeadI("WA", "WAV") + ObjNoToInt("1") + Base36ToInt("1"), 0);
}

TEST(Chart, PathsEndInsideTheirBuffers) {
    char guarded[12];
    for (int size = 4; size <= 8; ++size) {
        std::fill(guarded, guarded + 12, '!');
        std::snprintf(guarded, 4, "abc");
        AddFileName(guarded, size, "defgh");
        EXPECT_EQ(std::string(guarded), std::string("abc\\defgh").substr(0, static_cast<size_t>(size) - 1));
        GetDirName("a\\bcdefghijk", guarded, size);
        EXPECT_STREQ(guarded, "a\\");
        EXPECT_EQ(guarded[size], '!');
    }
    const char* rows[][2] = {{"D:\\a\\b.bme", "D:\\a\\"}, {"a.bme", "a.bme"}, {"\\a", "\\"}, {"x\\", "x\\"}};
    for (const auto& [path, folder] : rows) {
        GetDirName(path, guarded, sizeof guarded);
        EXPECT_STREQ(guarded, folder);
    }
}

TEST(Chart, WhatCannotBeOpenedChangesNothing) {
    const ChartFile file("#00111:01");
    std::string native = file.Path();
    std::replace(native.begin(), native.end(), '\\', '/');
    ASSERT_EQ(truncate(native.c_str(), BMS_FILE_LIMIT + 1), 0);  // a hole: it takes no room
    CBMS chart(nullptr, nullptr);
    std::snprintf(chart.m_aszWav[1], BMS_PATH, "kept");
    for (const std::string& path : {file.Path(), file.Folder(), std::string("\\dev\\zero"), std::string(),
                                    file.Folder() + std::string(5000, 'x')}) {
        headless::Reset();
        EXPECT_EQ(chart.Load(path.c_str(), 0), 0);
        EXPECT_EQ(headless::Log(), ("CBMS::Load -> LoadError=" + path + "\n").substr(0, 259));
    }
    EXPECT_STREQ(chart.m_aszWav[1], "kept");
}

TEST(Chart, WhatFollowsTheEndOfALineIsNoLine) {
    const std::string longest = "#ARTIST " + std::string(LINE_BUFFER - 8, 'a');
    for (const std::string& line : {std::string("#BPM 100\t"), std::string("#BPM 100\n"), longest}) {
        const ChartFile file("#BPM 100\r\n" + line + "#BPM 200\r\n#00111:_01\r\n");
        CBMS chart(nullptr, nullptr);
        EXPECT_EQ(chart.Load(file.Path().c_str(), 0), 3);
        EXPECT_EQ(chart.m_dBPM, 100.0) << line;
        EXPECT_EQ(chart.m_nNote, 1);
    }
}

TEST(Chart, AMeasureBaseNeverLeavesTheTable) {
    const ChartFile file("#00111:01\r\n#00511:0101");
    const std::pair<int32_t, int> rows[] = {{INT32_MIN, 0}, {-2, 2}, {1, 3}, {3, 1}, {INT32_MAX, 0}};
    for (const auto& [base, notes] : rows) {
        CBMS chart(nullptr, nullptr);
        ASSERT_EQ(chart.Load(file.Path().c_str(), base), 7);
        EXPECT_EQ(chart.m_nNote, notes) << base;
        EXPECT_EQ(chart.Compile(), 0);
        // A list without records leaves what was there.
        BmsEvent* list = new BmsEvent[2];
        BmsEvent* const old = list;
        int32_t count = 2;
        chart.GetBgmList(&list, &count);
        EXPECT_TRUE(list == old && count == 2);
        chart.GetNoteList(&list, &count);
        EXPECT_EQ(count, notes ? notes : 2);
        CBMS::FreeList(&list, &count);
        EXPECT_TRUE(!list && !count);
    }
}

TEST(Chart, TimesHoldTheEnds) {
    const std::pair<double, int32_t> rows[] = {
        {1000.5, 1001},     {1000.49, 1000},          {2147483646.4, 2147483646}, {2147483646.6, INT32_MAX},
        {1e300, INT32_MAX}, {std::nan(""), INT32_MAX}};
    for (const auto& [time, rounded] : rows) EXPECT_EQ(RoundTime(time), rounded) << time;
    EXPECT_EQ(TruncToInt(-1.9), -1);
    EXPECT_EQ(TruncToInt(-1e300), INT32_MIN);
    EXPECT_EQ(TruncToInt(std::nan("")), 0);
}

}  // namespace
