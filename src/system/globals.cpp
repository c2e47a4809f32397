#include "system/globals.h"

HINSTANCE g_hInstance = nullptr;
HWND g_hWnd = nullptr;
CDSound* g_pDSound = nullptr;
CDDraw* g_pDDraw = nullptr;
CBMS* g_pBMS = nullptr;

int g_bHost = 0;
int32_t g_nStartMeasure = -1;
float g_fSpeed = 1.0f;
TIMECAPS g_TimeCaps = {0, 0};

int g_bPlaying = 0;
int g_bPaused = 1;  // a chart waits until it is started
uint32_t g_dwPauseTime = 0;
