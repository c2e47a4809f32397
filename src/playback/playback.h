// The five playback lists, the clock, seeking, and the frame.
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

extern BmsEvent* g_pAnchor;  // the bar or tempo record relative to which lines are computed
extern double g_dBPM;        // current tempo
extern int32_t g_nPlayers;
extern double g_dPixelsPerSec;

// Chart time of a frame in ms: g_dwSeekTime - g_dwStartTime + g_dwNowTime, wrapping.
extern uint32_t g_dwStartTime;
extern uint32_t g_dwNowTime;
extern int32_t g_dwSeekTime;

void InitPlayLists();  // from the compiled g_pBMS
void FreePlayLists();  // no frame may run before InitPlayLists has run again

// Moves every list to a measure and stores the chart time at which the clock starts. Negative: the very
// beginning, with the lead-in. Returns 1, and changes nothing, when the measure does not exist.
int32_t SeekMeasure(int32_t nMeasure, int32_t* pnTime);

// Reads the clock, fires all due records, and composes the picture on the back surface.
void PlayFrame();

// Fires a BGA record: redraws its layer (playback/bga.cpp).
void FireBga(const BmsEvent* pEvent);
