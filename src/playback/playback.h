// The five playback lists, the clock values, seeking, and the frame.
#pragma once

#include <cstdint>

#include "chart/bms.h"

extern BmsEvent* g_pBgmList;
extern int32_t g_nBgmCount, g_nBgmCursor;
extern BmsEvent* g_pBgaList;
extern int32_t g_nBgaCount, g_nBgaCursor;
extern BmsEvent* g_pTempoList;
extern int32_t g_nTempoCount, g_nTempoCursor;
extern BmsEvent* g_pNoteList;
extern int32_t g_nNoteCount, g_nNoteCursor;
extern BmsEvent* g_pBarList;
extern int32_t g_nBarCount, g_nBarCursor;

extern BmsEvent* g_pAnchor;  // the bar or tempo record from which the scroll is measured
extern double g_dBPM;        // the tempo in force
extern int32_t g_nPlayers;
extern double g_dPixelsPerSec;

// Chart time of a frame: g_dwSeekTime - g_dwStartTime + g_dwNowTime, in ms, wrapping.
extern uint32_t g_dwStartTime;
extern uint32_t g_dwNowTime;
extern int32_t g_dwSeekTime;

void InitPlayLists();  // from g_pBMS, compiled
void FreePlayLists();  // no frame may run until InitPlayLists has run again

// Puts every list at a measure and writes the chart time at which the clock starts. -1: the very beginning,
// with the lead-in; below that counts as -1. 1 when the measure does not exist; then nothing changes.
int32_t SeekMeasure(int32_t nMeasure, int32_t* pnTime);

// Reads the clock, fires what is due, and composes the picture on the back surface.
void PlayFrame();

// A BGA record fires: redraws its layer (playback/bga.cpp).
void FireBga(const BmsEvent* pEvent);
