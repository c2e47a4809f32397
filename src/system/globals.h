// The process-wide handles and settings. The shell owns and sets them; every part of the system may read them
// here without knowing the shell itself.
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

extern int g_bHost;  // takes no remote commands
extern int32_t g_nStartMeasure;
extern float g_fSpeed;
extern TIMECAPS g_TimeCaps;

// The playing state; the clock values are in playback/playback.h.
extern int g_bPlaying;          // no pause is in force
extern int g_bPaused;           // the clock is held
extern uint32_t g_dwPauseTime;  // when the pause began, 0 for none
