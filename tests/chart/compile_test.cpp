#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "support/chart_file.h"

namespace {

using Doubles = std::vector<double>;

Doubles Times(BmsObject* const* list, int count) {
    Doubles times;
    for (int i = 0; i < count; ++i) times.push_back(list[i]->dTime);
    return times;
}

// Where the measures start, and where the last ends.
Doubles Starts(const CBMS& chart) {
    Doubles starts = {1000.0};
    for (int i = 0; i < chart.m_nMeasure; ++i) {
        EXPECT_EQ(chart.m_pMeasure[i].dStart, starts.back());
        starts.push_back(starts.back() + chart.m_pMeasure[i].dDuration);
    }
    return starts;
}

TEST(Compile, OneObjectBehindMeasure0IsNeeded) {
    EXPECT_FALSE(CompileChart("#00011:01\n"));
    EXPECT_TRUE(CompileChart("#00111:01\n"));
    EXPECT_TRUE(CompileChart("#00102:1\n"));
}

TEST(Compile, ChangesOfTempo) {
    const struct {
        const char* what;
        const char* text;
        Doubles starts, notes;
    } rows[] = {
        {"in the middle of a measure, before a short one",
         "#BPM 120\n#00102:0.5\n#00003:00F0\n#00011:01010101\n#00111:0001\n",
         {1000, 2500, 3000, 4000},
         {1000, 1500, 2000, 2250, 2750}},
        {"at the head of a measure", "#BPM 120\n#00103:F0\n#00111:0001\n", {1000, 3000, 4000, 5000}, {3500}},
        {"two on one place: the higher channel acts last",
         "#BPM 120\n#BPM01 60\n#00108:01\n#00103:F0\n#00111:0101\n",
         {1000, 3000, 7000, 11000},
         {3000, 5000}},
        {"two of one channel on one place: the later in the file acts last",
         "#BPM 120\n#00103:3C\n#00103:F0\n#00111:0101\n",
         {1000, 3000, 4000, 5000},
         {3000, 3500}},
        {"in the last measure", "#BPM 120\n#00111:0001\n#00103:00F0\n", {1000, 3000, 4500, 5500}, {4000}},
        {"behind a measure of length 0",
         "#BPM 120\n#00002:0\n#00011:0101\n#00103:F0\n",
         {1000, 1000, 2000, 3000},
         {1000, 1000}},
        {"lines out of order",
         "#BPM 120\n#00111:0001\n#00011:0001\n#00003:00F0\n",
         {1000, 2500, 3500, 4500},
         {2000, 3000}},
    };
    for (const auto& row : rows) {
        auto chart = CompileChart(row.text);
        ASSERT_TRUE(chart);
        EXPECT_EQ(Starts(*chart), row.starts) << row.what;
        EXPECT_EQ(Times(chart->m_ppNote, chart->m_nNote), row.notes) << row.what;
    }
}

TEST(Compile, WhatIsNoTempoLeavesTheOneInForce) {
    for (const char* bpm : {"#BPM 0", "#BPM -5", "#BPM 1e999", "#BPM nan", "#BPM "}) {
        auto chart = CompileChart(std::string(bpm) + "\n#00111:01\n");
        ASSERT_TRUE(chart);
        EXPECT_EQ(chart->m_pMeasure[1].dStart, 1000.0 + 240000.0 / 130.0) << bpm;
    }
    auto chart = CompileChart(
        "#BPM 120\n#BPM01 -1\n#00003:00F0\n#00103:0G\n#00108:0001\n#00111:0101\n#00111:00000001");
    ASSERT_TRUE(chart);
    EXPECT_EQ(Starts(*chart), (Doubles{1000, 2500, 3500, 4500}));
    EXPECT_EQ(Times(chart->m_ppNote, chart->m_nNote), (Doubles{2500, 3000, 3250}));
}

TEST(Compile, WhatIsNoLengthCountsAsNone) {
    for (const char* length : {"-1", "1e999", "-1e999", "nan", "", "-0"}) {
        auto chart = CompileChart("#BPM 120\n#00002:" + std::string(length) + "\n#00111:01\n");
        ASSERT_TRUE(chart);
        EXPECT_EQ(Starts(*chart), (Doubles{1000, 1000, 3000, 5000})) << length;
        EXPECT_FALSE(std::signbit(chart->m_pMeasure[0].dLength));
    }
    auto chart = CompileChart("#BPM 120\n#00002:2\n#00002:0.5\n#00111:01\n");
    ASSERT_TRUE(chart);
    EXPECT_EQ(chart->m_pMeasure[1].dStart, 2000.0);  // the later line wins
}

std::string DenseChart() {
    std::mt19937 random(5);
    const auto below = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
    std::string text = "#BPM 137.25\n";
    for (char c : std::string("123456789ABCDEF")) {
        text += "#BPM0" + std::string(1, c) + " " + std::to_string(50 + c * 1.3) + "\n";
    }
    static const char* channels[] = {"01", "03", "08", "11", "12", "19", "29", "31", "04", "11"};
    for (int line = 0; line < 1500; ++line) {
        char head[16];
        std::snprintf(head, sizeof head, "#%03d%s:", below(40), channels[below(10)]);
        text += head;
        for (int i = 1 + below(48); i > 0; --i) {
            text += below(4) ? "00" : std::string("0") + "123456789ABCDEF"[below(15)];
        }
        text += "\n";
        if (line % 50 == 0)
            text += "#0" + std::to_string(10 + line / 50) + "02:0." + std::to_string(1 + below(9)) + "\n";
    }
    return text;
}

std::vector<BmsObject*> Sorted(std::vector<BmsObject*> list) {
    std::stable_sort(list.begin(), list.end(),
                     [](BmsObject* a, BmsObject* b) { return CompareObjects(a, b) < 0; });
    return list;
}

// The view against a plain stable sort, and the times against a walk over all tempos for each object.
void CheckList(const CBMS& chart, BmsObject* list, BmsObject** view, int count) {
    std::vector<BmsObject*> objects;
    for (int i = 0; i < count; ++i) objects.push_back(list + i);
    ASSERT_EQ(std::vector<BmsObject*>(view, view + count), Sorted(objects));
    for (int i = 0; i < count; ++i) {
        const BmsObject& o = *view[i];
        double p = 0.0, t = chart.m_pMeasure[o.nMeasure].dStart, bpm = chart.m_dBPM;
        for (int k = 0; k < chart.m_nTempo; ++k) {
            const BmsObject& c = *chart.m_ppTempo[k];
            if (c.nMeasure + c.dPos > o.nMeasure + o.dPos) break;
            bpm = c.dValue;
            if (c.nMeasure == o.nMeasure) {
                p = c.dPos;
                t = c.dTime;
            }
        }
        ASSERT_EQ(o.dTime, 240000.0 / bpm * chart.m_pMeasure[o.nMeasure].dLength * (o.dPos - p) + t) << i;
    }
}

TEST(Compile, ADenseChartKeepsEveryBit) {
    auto chart = CompileChart(DenseChart());
    ASSERT_TRUE(chart);
    ASSERT_GT(chart->m_nTempo, 500);
    ASSERT_GT(chart->m_nNote, 3000);
    CheckList(*chart, chart->m_pNote, chart->m_ppNote, chart->m_nNote);
    CheckList(*chart, chart->m_pBgm, chart->m_ppBgm, chart->m_nBgm);
    CheckList(*chart, chart->m_pBga, chart->m_ppBga, chart->m_nBga);
}

TEST(Compile, OrderOfObjects) {
    BmsObject early{1, 0.25, 17, 0, {}}, late{1, 0.5, 17, 0, {}}, other{1, 0.5, 18, 0, {}},
        next{2, 0.0, 1, 0, {}};
    EXPECT_EQ(CompareObjects(&early, &late), -1);
    EXPECT_EQ(CompareObjects(&late, &early), 1);
    EXPECT_EQ(CompareObjects(&late, &other), -1);
    EXPECT_EQ(CompareObjects(&other, &late), 1);
    EXPECT_EQ(CompareObjects(&late, &late), 0);
    EXPECT_EQ(CompareObjects(&other, &next), -1);
}

TEST(Compile, SortsAsAStableSortDoes) {
    std::mt19937 random(7);
    for (int count : {0, 1, 2, 3, 17, 100, 1000, 5000}) {
        for (int kind = 0; kind < 4; ++kind) {
            std::vector<BmsObject> objects(static_cast<size_t>(count));
            std::vector<BmsObject*> list;
            for (int i = 0; i < count; ++i) {
                const unsigned n = static_cast<unsigned>(random());
                BmsObject& o = objects[static_cast<size_t>(i)];
                o.nMeasure = kind == 0 ? i / 50 : kind == 1 ? (count - i) / 50 : static_cast<int>(n % 20);
                o.dPos = kind == 3 ? 0.0 : n / 64 % 12 / 12.0;
                o.nChannel = 17 + static_cast<int>(n / 1024 % 3);
                list.push_back(&o);
            }
            const std::vector<BmsObject*> wanted = Sorted(list);
            SortObjects(list.data(), count);
            EXPECT_EQ(list, wanted) << count << " of kind " << kind;
        }
    }
}

}  // namespace
