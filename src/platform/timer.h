// The millisecond clock, the timer period and the thread's sleep.
#pragma once

#include "platform/wintypes.h"

struct TIMECAPS {
    UINT wPeriodMin;  // ms
    UINT wPeriodMax;
};

constexpr MMRESULT TIMERR_NOERROR = 0;
constexpr MMRESULT TIMERR_NOCANDO = 97;

// Milliseconds of a steady clock, wrapping at 2^32.
DWORD timeGetTime();

// Fills *pCaps with 1 and 1000000 when nSize is 8 and pCaps is set; otherwise gives TIMERR_NOCANDO.
MMRESULT timeGetDevCaps(TIMECAPS* pCaps, UINT nSize);

// The clock has its full resolution at all times here. TIMERR_NOCANDO for a period out of range, and for an end
// without a beginning.
MMRESULT timeBeginPeriod(UINT nPeriod);
MMRESULT timeEndPeriod(UINT nPeriod);

// Gives the processor back for at least that many milliseconds.
void Sleep(DWORD dwMilliseconds);
