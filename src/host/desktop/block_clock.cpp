#include "host/desktop/block_clock.h"

#include <algorithm>

namespace host {
namespace {

constexpr double kMillisecond = 1e6, kSecond = 1e9;  // ns
constexpr double kMargin = 1 * kMillisecond;         // from a block's end to its mixing, at the least
constexpr double kLeastSlack = 0.3 * kMillisecond, kMostSlack = 4 * kMillisecond;  // no steering between them
constexpr int kPatience = 8;                                                       // windows
constexpr int kTrial = 12, kTrust = 120;                                           // windows
constexpr double kLearning = 50 * kMillisecond, kSettled = 25 * kMillisecond;
constexpr double kLongestLearning = 500 * kMillisecond;
constexpr double kWindow = 500 * kMillisecond;
constexpr double kSteering = 0.001;  // of the pace; clocks of devices are ten times better
constexpr double kHurry = 0.004;     // of the pace, away from waiting: that drains the device's buffer
constexpr double kLost = 100 * kMillisecond;  // behind by more: the device stood still, begin anew
constexpr double kHeldLost = 5 * kSecond;     // a file waits for nobody and catches up

}  // namespace

BlockClock::BlockClock(int rate, int frames) : m_length(frames * kSecond / rate) {}

// The first blocks fill the device's buffer in a burst and tell nothing; those after it show its pace. A
// driver that only ever wants more is not waited for.
void BlockClock::Learn(double now) {
    const double even = now - m_blocks * m_length;
    if (m_blocks == 0 || even < m_earliest - m_length / 4) m_burst = m_blocks;
    m_earliest = m_blocks == 0 ? even : std::min(m_earliest, even);
    m_end = m_earliest + m_blocks * m_length - kMargin;
    ++m_blocks;
    const double length = m_blocks * m_length;
    const bool settled = (m_blocks - m_burst) * m_length >= kSettled;
    m_learning = length < kLearning || (!m_held && !settled && length < kLongestLearning);
}

// The least slack in a window is to be about the margin: jitter makes it only larger. Too little is mended at
// once, too much only when it lasts: a busy machine is late for a while.
void BlockClock::Steer(double slack) {
    m_slack = m_window == 0 ? slack : std::min(m_slack, slack);
    m_waits = (m_window == 0 ? 0 : m_waits) + (slack < 0 ? 1 : 0);
    if (++m_window * m_length < kWindow) return;
    m_late_windows = m_slack > kMostSlack ? m_late_windows + 1 : 0;
    const bool paceless = IsPaceless();
    const bool early = m_slack < kLeastSlack && !paceless;
    const bool steer = early || m_late_windows >= kPatience;
    const double fastest = m_slack < 0 ? kHurry : kSteering;
    m_pace = steer ? 1 + std::clamp((m_slack - kMargin) / kWindow, -fastest, kSteering) : 1;
    m_window = 0;
}

// A driver that waits for its blocks most of the time, and after a while of making them come later still
// waits as long as before, takes them whenever it gets them: it has no pace of its own and takes that of the
// clock. Tried again now and then.
bool BlockClock::IsPaceless() {
    if (m_waits <= m_window / 4) {
        m_trial = 0;
        m_paceless = false;
    } else if (!m_paceless) {
        if (m_trial++ == 0) m_trial_slack = m_slack;
        if (m_trial > kTrial) {
            m_paceless = m_slack < m_trial_slack + kHurry * kWindow;
            m_trial = 0;
        }
    } else if (++m_trial >= kTrust) {
        m_trial = 0;
        m_paceless = false;
    }
    return m_paceless;
}

BlockClock::Block BlockClock::Next(uint64_t reading) {
    if (m_learning && m_blocks == 0) m_base = reading;
    const double now = static_cast<double>(reading - m_base);
    if (m_learning) {
        Learn(now);
        return {true, 0, 0};
    }
    m_end += m_length * m_pace;
    const double lost = m_held ? kHeldLost : kLost;
    if (now - m_end > lost || m_end - now > m_length + lost) m_end = now - kMargin;
    if (!m_held) Steer(now - m_end);
    const double ready = m_held ? m_end + kMargin : m_end;
    const double wait = std::clamp(ready - now, 0.0, m_length);
    return {false, m_base + static_cast<uint64_t>(std::max(0.0, m_end - m_length)),
            static_cast<uint64_t>(wait)};
}

}  // namespace host
