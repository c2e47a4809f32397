#include <cmath>
#include <sstream>

#include "chart/charttime.h"
#include "playback/player.h"

namespace {

class Lists : public Player {
protected:
    // `measure+place channel time done` of each record.
    static std::string Show(const BmsEvent* list, int32_t count) {
        std::ostringstream out;
        for (int32_t i = 0; i < count; ++i) {
            const BmsEvent& e = list[i];
            out << e.nMeasure << '+' << e.dPos << ' ' << e.nChannel << ' ' << e.nTime << ' ' << e.bDone
                << "; ";
        }
        return out.str();
    }
};

const char* const kChart =
    "#PLAYER 3\n#BPM 120\n#BPM01 60.5\n#WAV01 "
    "a.wav\n#00001:0100\n#00103:00F0\n#00211:01\n#00231:0001\n#00108:01\n"
    "#00204:ZZ\n#00302:0.5\n#00318:01\n";

TEST_F(Lists, AreCopiesInTheOrderOfTheChart) {
    Start(kChart);
    EXPECT_EQ(Show(g_pBgmList, g_nBgmCount), "0+0 1 1000 0; ");
    EXPECT_EQ(Show(g_pBgaList, g_nBgaCount), "2+0 3844 5483 0; ");
    EXPECT_EQ(Show(g_pTempoList, g_nTempoCount), "1+0 8 3000 0; 1+0.5 3 4983 0; ");
    EXPECT_EQ(Show(g_pNoteList, g_nNoteCount), "2+0 17 5483 0; 2+0.5 49 5983 0; 3+0 24 6483 0; ");
    EXPECT_EQ(Show(g_pBarList, g_nBarCount),
              "0+0 0 1000 0; 1+0 0 3000 0; 2+0 0 5483 0; 3+0 0 6483 0; 4+0 0 6983 0; ");
    EXPECT_EQ(g_pBgmList[0].pObject, recorder::Sound()->m_pSlot[1]);
    EXPECT_EQ(g_pBgaList[0].pObject, &chart_->m_aBgaDef[1295]);
    EXPECT_EQ(g_pTempoList[0].dValue, 60.5);
    EXPECT_EQ(g_pTempoList[0].pObject, nullptr);
    EXPECT_EQ(g_pNoteList[0].dValue, 0.0);
    EXPECT_EQ(g_pBarList[3].dValue, 0.5);
    EXPECT_EQ(g_nPlayers, 3);
    EXPECT_EQ(g_dBPM, 120.0);
    EXPECT_EQ(g_dPixelsPerSec, 64000.0 / (240000.0 / 120.0));
    EXPECT_EQ(g_pAnchor, g_pBarList);
}

TEST_F(Lists, RoundHalvesUpAndHoldTheEnds) {
    EXPECT_EQ(RoundTime(1000.5), 1001);
    for (double time : {1000.49, 1000.0}) EXPECT_EQ(RoundTime(time), 1000) << time;
    EXPECT_EQ(RoundTime(2147483646.4), 2147483646);
    for (double time : {2147483646.6, 1e300, HUGE_VAL, std::nan("")})
        EXPECT_EQ(RoundTime(time), INT32_MAX) << time;
    EXPECT_EQ(TruncToInt(-1.9), -1);
    EXPECT_EQ(TruncToInt(-1e300), INT32_MIN);
    EXPECT_EQ(TruncToInt(std::nan("")), 0);
}

TEST_F(Lists, SeekPutsEveryRecordOnItsSide) {
    const struct {
        int32_t measure, result, time;
        const char* done;  // tempo, BGM, note, BGA, bar
        int32_t cursors[5];
        double bpm;
        const char* anchor;
    } rows[] = {
        {-1, 0, 0, "00 0 000 0 00000", {0, 0, 0, 0, 0}, 120.0, "bar 0"},
        {0, 0, 999, "00 0 000 0 00000", {0, 0, 0, 0, 0}, 120.0, "bar 0"},
        {1, 0, 2999, "00 1 000 0 10000", {0, 1, 0, 0, 1}, 120.0, "bar 1"},
        {3, 0, 6482, "11 1 110 1 11100", {2, 1, 2, 1, 3}, 240.0, "tempo 1"},
        {4, 0, 6982, "11 1 111 1 11110", {2, 1, 3, 1, 4}, 240.0, "tempo 1"},
        {2, 0, 5482, "11 1 000 0 11000", {2, 1, 0, 0, 2}, 240.0, "tempo 1"},
        // No such measure: nothing changes.
        {5, 1, 77, "11 1 000 0 11000", {2, 1, 0, 0, 2}, 240.0, "tempo 1"},
        {1001, 1, 77, "11 1 000 0 11000", {2, 1, 0, 0, 2}, 240.0, "tempo 1"},
        {-7, 0, 0, "00 0 000 0 00000", {0, 0, 0, 0, 0}, 120.0, "bar 0"},
    };
    Start(kChart);
    const auto done = [](const BmsEvent* list, int32_t count) {
        std::string flags;
        for (int32_t i = 0; i < count; ++i) flags += static_cast<char>('0' + list[i].bDone);
        return flags;
    };
    for (const auto& row : rows) {
        for (int32_t i = 0; i < g_nBarCount && row.result == 0; ++i) g_pBarList[i].nChannel = 99;
        int32_t time = 77;
        EXPECT_EQ(SeekMeasure(row.measure, &time), row.result);
        EXPECT_EQ(time, row.time);
        EXPECT_EQ(done(g_pTempoList, g_nTempoCount) + ' ' + done(g_pBgmList, g_nBgmCount) + ' ' +
                      done(g_pNoteList, g_nNoteCount) + ' ' + done(g_pBgaList, g_nBgaCount) + ' ' +
                      done(g_pBarList, g_nBarCount),
                  row.done)
            << row.measure;
        const int32_t cursors[] = {g_nTempoCursor, g_nBgmCursor, g_nNoteCursor, g_nBgaCursor, g_nBarCursor};
        for (int i = 0; i < 5; ++i) EXPECT_EQ(cursors[i], row.cursors[i]) << row.measure << " list " << i;
        EXPECT_EQ(g_dBPM, row.bpm);
        EXPECT_EQ(g_dPixelsPerSec, 64000.0 / (240000.0 / row.bpm));
        const bool bar = g_pAnchor >= g_pBarList && g_pAnchor < g_pBarList + g_nBarCount;
        EXPECT_EQ((bar ? "bar " : "tempo ") + std::to_string(g_pAnchor - (bar ? g_pBarList : g_pTempoList)),
                  row.anchor);
        for (int32_t i = 0; i < g_nBarCount; ++i) EXPECT_EQ(g_pBarList[i].nChannel, 0);
    }
}

TEST_F(Lists, AnEmptySourceLeavesTheListAlone) {
    Start("#00111:01\n");
    EXPECT_EQ(g_pBgmList, nullptr);
    EXPECT_EQ(g_nBgmCount, 0);
    BmsEvent* list = new BmsEvent[2];
    int32_t count = 2;
    BmsEvent* const old = list;
    chart_->GetBgmList(&list, &count);
    EXPECT_EQ(list, old);
    EXPECT_EQ(count, 2);
    chart_->GetNoteList(nullptr, &count);
    EXPECT_EQ(count, 2);
    chart_->GetNoteList(&list, &count);  // frees the old one
    EXPECT_EQ(count, 1);
    CBMS::FreeList(&list, &count);
    EXPECT_EQ(list, nullptr);
    EXPECT_EQ(count, 0);
    CBMS::FreeList(&list, &count);
}

TEST_F(Lists, FreeingThemZeroesTheCursorsToo) {
    Start(kChart, 4);
    FreePlayLists();
    for (int32_t n : {g_nBgmCount, g_nBgaCount, g_nTempoCount, g_nNoteCount, g_nBarCount, g_nBgmCursor,
                      g_nBgaCursor, g_nTempoCursor, g_nNoteCursor, g_nBarCursor}) {
        EXPECT_EQ(n, 0);
    }
    for (const BmsEvent* list : {g_pBgmList, g_pBgaList, g_pTempoList, g_pNoteList, g_pBarList}) {
        EXPECT_EQ(list, nullptr);
    }
    PlayFrame();  // draws nothing
    EXPECT_EQ(recorder::Take(), "");
    int32_t time = 5;
    EXPECT_EQ(SeekMeasure(0, &time), 1);
    EXPECT_EQ(time, 5);
    FreePlayLists();
}

TEST_F(Lists, WhatIsNoTempoLeavesTheOneInForceInASeekToo) {
    Start("#BPM -3\n#00003:F0\n#00003:000G\n#00111:01\n", 1);
    EXPECT_EQ(g_dBPM, 240.0);
    EXPECT_EQ(g_pAnchor, g_pTempoList + 1);
    SeekMeasure(0, &g_dwSeekTime);
    EXPECT_EQ(g_dBPM, 130.0);
}

}  // namespace
