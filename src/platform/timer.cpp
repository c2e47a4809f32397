#include "platform/timer.h"

#include "host/host.h"

namespace {
constexpr UINT kPeriodMin = 1, kPeriodMax = 1000000;  // ms
int g_nPeriods = 0;                                   // begun and not ended
}  // namespace

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
    if (nPeriod < kPeriodMin || nPeriod > kPeriodMax) return TIMERR_NOCANDO;
    ++g_nPeriods;
    return TIMERR_NOERROR;
}

MMRESULT timeEndPeriod(UINT nPeriod) {
    if (nPeriod < kPeriodMin || nPeriod > kPeriodMax || g_nPeriods == 0) return TIMERR_NOCANDO;
    --g_nPeriods;
    return TIMERR_NOERROR;
}

void Sleep(DWORD dwMilliseconds) {
    host::SleepMilliseconds(dwMilliseconds);
}
