// Takes any bytes as a chart: reads and compiles it, seeks, and plays some frames, without devices.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

#include "host/headless/headless.h"
#include "platform/timer.h"
#include "playback/playback.h"
#include "shell/shell.h"

// Invariants of a list, whatever the file says.
inline void CheckPlayList(const BmsEvent* list, int32_t count, int32_t cursor) {
    if (cursor < 0 || cursor > count) std::abort();
    for (int32_t i = 0; i < count; ++i) {
        if (list[i].nMeasure < 0 || list[i].nMeasure >= g_nBarCount || list[i].nTime < 1000) std::abort();
        if (!(list[i].dPos >= 0.0 && list[i].dPos < 1.0)) std::abort();
    }
}

inline void PlayFrames() {
    g_dwStartTime = g_dwNowTime = timeGetTime();
    g_bPaused = 0;
    for (uint64_t ms : {0, 1, 16, 900, 100, 5000, 600000, 1 << 30}) {
        headless::AdvanceClock(ms * 1'000'000);
        PlayFrame();
        if (!(g_dBPM > 0.0)) std::abort();
    }
}

inline void RunChart(const uint8_t* data, size_t size) {
    const int file = memfd_create("chart", 0);
    if (file < 0 || write(file, data, size) != static_cast<ssize_t>(size)) std::abort();
    headless::Reset();
    auto chart = std::make_unique<CBMS>(nullptr, nullptr);
    const int32_t loaded = chart->Load(("/proc/self/fd/" + std::to_string(file)).c_str(), 0);
    close(file);
    if (loaded < 2 || loaded > 1001) std::abort();
    if (chart->Compile() == 0) {
        g_pBMS = chart.get();
        InitPlayLists();
        for (int32_t measure : {-1, 0, 1, loaded - 1, loaded}) {
            g_nStartMeasure = measure;
            SeekMeasure(measure, &g_dwSeekTime);
            CheckPlayList(g_pBgmList, g_nBgmCount, g_nBgmCursor);
            CheckPlayList(g_pBgaList, g_nBgaCount, g_nBgaCursor);
            CheckPlayList(g_pTempoList, g_nTempoCount, g_nTempoCursor);
            CheckPlayList(g_pNoteList, g_nNoteCount, g_nNoteCursor);
            CheckPlayList(g_pBarList, g_nBarCount, g_nBarCursor);
            PlayFrames();
        }
        FreePlayLists();
        g_pBMS = nullptr;
    }
    g_bPaused = 1;
    g_nStartMeasure = -1;
}
