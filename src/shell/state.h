// The playing state: Idle, Running, Paused, Held (while a menu or box is open), Ended.
#pragma once

// True when everything that a frame and a restart need exists: sound device, display, chart and playback
// lists. Commands also arrive inside the boxes of a failed start-up or load, and after the window is gone,
// when some of it does not exist.
bool HasChart();

// bUser 1: paused by the user, which stops the clock. bUser 0: paused by the system while a menu or box is
// open.
void PauseChart(int bUser);
void ResumeChart(int bUser);
void RestartChart();  // plays from g_nStartMeasure
void ClearLayers();   // clears the three picture layers to black
