// The playing state: Idle, Running, Paused, Held around a menu or a box, Ended.
#pragma once

// Everything that a frame and a restart need exists: sound device, display, chart and its playback lists.
// Commands also arrive inside the boxes of a failed start-up or load and after the window is gone, when some
// of it does not.
bool HasChart();

// bUser 1: the user's own pause, which holds the clock. bUser 0: the system's, around a menu or a box.
void PauseChart(int bUser);
void ResumeChart(int bUser);
void RestartChart();  // plays from g_nStartMeasure
void ClearLayers();   // the three picture layers, black
