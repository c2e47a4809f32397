#include "platform/timer.h"

#include "host/host.h"

namespace {
constexpr UINT kPeriodMin = 1, kPeriodMax = 1000000;  // ms
}

DWORD timeGetTime() {
    return static_cast<DWORD>(host::Nanoseconds() / 1000000);
}

MMRESULT timeGetDevCaps(TIMECAPS* pCaps, UINT nSize) {
    if (!pCaps || nSize != sizeof(TIMECAPS)) return TIMERR_NOCANDO;
    pCaps->wPeriodMin = kPeriodMin;
    pCaps->wPeriodMax = kPeriodMax;
    return TIMERR_NOERROR;
}

MMRESULT timeBeginPeriod(UINT nPeriod) {
    return nPeriod >= kPeriodMin && nPeriod <= kPeriodMax ? TIMERR_NOERROR : TIMERR_NOCANDO;
}

MMRESULT timeEndPeriod(UINT nPeriod) {
    return timeBeginPeriod(nPeriod);
}

void Sleep(DWORD dwMilliseconds) {
    host::SleepMilliseconds(dwMilliseconds);
}
