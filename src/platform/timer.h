// The millisecond clock, the timer period, and sleeping.
#pragma once

#include "platform/wintypes.h"

struct TIMECAPS {
    UINT wPeriodMin;  // ms
    UINT wPeriodMax;
};

constexpr MMRESULT TIMERR_NOERROR = 0;
constexpr MMRESULT TIMERR_NOCANDO = 97;

// Milliseconds of a steady clock; wraps at 2^32.
DWORD timeGetTime();

// Sets *pCaps to 1 and 1000000. Returns TIMERR_NOCANDO when nSize is not 8 or pCaps is null.
MMRESULT timeGetDevCaps(TIMECAPS* pCaps, UINT nSize);

// The clock has its full resolution at all times here. TIMERR_NOCANDO for a period out of range, and for an
// end without a beginning.
MMRESULT timeBeginPeriod(UINT nPeriod);
MMRESULT timeEndPeriod(UINT nPeriod);

// Yields the processor for at least that many milliseconds.
void Sleep(DWORD dwMilliseconds);
