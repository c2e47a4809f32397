#include "shell/framerate.h"

#include "platform/timer.h"

namespace {
constexpr uint32_t kRing = 256;
}

CFrameRate::CFrameRate() : m_nCount(0) {}

void CFrameRate::Stamp() {
    m_adwStamp[m_nCount & (kRing - 1)] = timeGetTime();
    if (++m_nCount == 2 * kRing) m_nCount = kRing;
}

uint32_t CFrameRate::GetRate() const {
    if (m_nCount < kRing) return 0;
    const uint32_t nNewest = m_adwStamp[(m_nCount - 1) & (kRing - 1)];
    const uint32_t nOldest = m_adwStamp[m_nCount & (kRing - 1)];
    const uint32_t nSpan = nNewest - nOldest;
    // 256 stamps span 255 intervals. In practice the span is never 0; the check only guards the division
    // against a stopped clock.
    return nSpan ? (kRing - 1) * 1000 / nSpan : 0;
}
