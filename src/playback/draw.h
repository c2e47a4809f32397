// Blits to the back surface, and the numbers in a frame.
#pragma once

#include "display/ddraw.h"
#include "playback/layout.h"
#include "system/globals.h"

// Plain and keyed (black is transparent). pRect null: the whole surface. No effect without a display.
inline void DrawPart(int x, int y, const RECT* pRect, int nParts) {
    if (g_pDDraw) g_pDDraw->BltBack(x, y, pRect, nParts);
}
inline void DrawPartKey(int x, int y, const RECT* pRect, int nParts) {
    if (g_pDDraw) g_pDDraw->BltBackKey(x, y, pRect, nParts);
}

void DrawBarNumber(int32_t nBar, int32_t nRow);         // first three characters of its %3d
void DrawPlayTime(int32_t nNow);                        // chart time in ms; negative times show as 0:00
void DrawBarCounter(int32_t nCurrent, int32_t nTotal);  // last three digits of each
void DrawTempo(double dBPM);                            // first six characters
