// A chart that plays on the recording display and sound device, under the test's clock.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "host/headless/headless.h"
#include "platform/timer.h"
#include "playback/playback.h"
#include "shell/shell.h"
#include "support/chart_file.h"
#include "support/recorder.h"

class Player : public testing::Test {
protected:
    void SetUp() override {
        headless::Reset();
        recorder::Clear();
        g_pDDraw = recorder::Display();
        g_pDSound = recorder::Sound();
        g_fSpeed = 1.0f;
        g_nStartMeasure = -1;
    }

    void TearDown() override {
        FreePlayLists();
        g_pBMS = nullptr;
        g_pDDraw = nullptr;
        g_pDSound = nullptr;
        g_bPaused = 1;
        recorder::Clear();
    }

    // Loads the chart (lines that end in LF) and starts the clock at the start measure.
    void Start(const std::string& text, int32_t measure = -1) {
        FreePlayLists();
        chart_ = CompileChart(text, g_pDDraw, g_pDSound);
        ASSERT_TRUE(chart_);
        g_pBMS = chart_.get();
        InitPlayLists();
        g_nStartMeasure = measure;
        SeekMeasure(measure, &g_dwSeekTime);
        headless::Reset();
        g_dwStartTime = g_dwNowTime = timeGetTime();
        g_bPaused = 0;
        recorder::Take();
    }

    // Composes the frame at that chart time in ms; what it drew and played, one call to a line, or of that
    // only the lines that begin with the word.
    std::string FrameAt(int32_t time, const std::string& word = "") {
        const uint32_t stamp = static_cast<uint32_t>(time - g_dwSeekTime) + g_dwStartTime;
        headless::SetClock(uint64_t{stamp} * 1'000'000);
        PlayFrame();
        return word.empty() ? recorder::Take() : recorder::TakeOnly(word);
    }

    std::unique_ptr<CBMS> chart_;
};
