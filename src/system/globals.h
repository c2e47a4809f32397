// Process-wide handles and settings. The shell owns and sets them; every part of the system may read them
// without including the shell.
#pragma once

#include "platform/timer.h"
#include "platform/wintypes.h"

class CBMS;
class CDDraw;
class CDSound;

extern HINSTANCE g_hInstance;
extern HWND g_hWnd;
extern CDSound* g_pDSound;
extern CDDraw* g_pDDraw;
extern CBMS* g_pBMS;

extern int g_bHost;  // accepts no remote commands
extern int32_t g_nStartMeasure;
extern float g_fSpeed;
extern TIMECAPS g_TimeCaps;

// The playing state. The clock values are in playback/playback.h.
extern int g_bPlaying;          // not paused
extern int g_bPaused;           // the clock is stopped
extern uint32_t g_dwPauseTime;  // start of the pause; 0: none
