// Start-up and shutdown.
#pragma once

#include <cstdint>

constexpr int START_PLAY = -2;  // all is in place: enter the main loop

// From the window to the first time stamps. START_PLAY, or the exit code. nWindowX, nWindowY: -1 for not
// given.
int StartUp(const char* szFile, int32_t nWindowX, int32_t nWindowY);
void FreeChart();  // the playback lists, then the chart they point into
void Shutdown();   // releases everything; may run twice
