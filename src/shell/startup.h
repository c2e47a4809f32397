// What start-up and a change of chart share.
#pragma once

#include <cstdint>

// Everything that a frame and a restart stand on exists: sound device, display, chart and its playback lists.
// Commands arrive also inside the boxes of a failed start-up or load and after the window is gone, where some
// of it does not.
bool HasChart();

void ClearLayers();       // the three picture layers, black
void FreeChart();         // the playback lists, then the chart they point into
void ShowLoadingTitle();  // stands as long as a load blocks the thread
void ShowChartTitle();    // from the loaded chart's texts

constexpr int START_PLAY = -2;  // all is in place: enter the main loop

// From the window to the first time stamps. START_PLAY, or the exit code. nWindowX, nWindowY: -1 for not
// given.
int StartUp(const char* szFile, int32_t nWindowX, int32_t nWindowY);
