// Start-up and shutdown.
#pragma once

#include <cstdint>

constexpr int START_PLAY = -2;  // ready: enter the main loop

// Everything from the window to the first timestamps. Returns START_PLAY or the exit code. nWindowX,
// nWindowY: -1 when not given.
int StartUp(const char* szFile, int32_t nWindowX, int32_t nWindowY);
void FreeChart();  // frees the playback lists, then the chart that they reference
void Shutdown();   // releases everything; may be called twice
