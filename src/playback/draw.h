// Copies to the back surface, and the numbers of a frame.
#pragma once

#include "display/ddraw.h"
#include "playback/layout.h"
#include "system/globals.h"

// Plain, and with black left out; pRect null: the whole surface. Nothing without a display.
inline void DrawPart(int x, int y, const RECT* pRect, int nParts) {
    if (g_pDDraw) g_pDDraw->BltBack(x, y, pRect, nParts);
}
inline void DrawPartKey(int x, int y, const RECT* pRect, int nParts) {
    if (g_pDDraw) g_pDDraw->BltBackKey(x, y, pRect, nParts);
}

void DrawBarNumber(int32_t nBar, int32_t nRow);         // the first three characters of its %3d
void DrawPlayTime(int32_t nNow);                        // chart time in ms; below 0 shows as 0:00
void DrawBarCounter(int32_t nCurrent, int32_t nTotal);  // the last three digits of each
void DrawTempo(double dBPM);                            // the first six characters
