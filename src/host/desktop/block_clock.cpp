#include "host/desktop/block_clock.h"

#include <algorithm>

namespace host {
namespace {

constexpr double kMillisecond = 1e6, kSecond = 1e9;  // ns
constexpr double kMargin = 1 * kMillisecond;         // from a block's end to its mixing, at the least
constexpr double kLeastSlack = 0.3 * kMillisecond, kMostSlack = 4 * kMillisecond;  // no steering between them
constexpr int kPatience = 8;                                                       // windows
constexpr double kLearning = 50 * kMillisecond, kForgotten = 20 * kMillisecond;
constexpr double kWindow = 500 * kMillisecond;
constexpr double kSteering = 0.001;  // of the pace; clocks of devices are ten times better
constexpr double kHurry = 0.004;     // of the pace, away from waiting: that drains the device's buffer
constexpr double kLost = 100 * kMillisecond;  // behind by more: the device stood still, begin anew
constexpr double kHeldLost = 5 * kSecond;     // a file waits for nobody and catches up

}  // namespace

BlockClock::BlockClock(int rate, int frames) : m_length(frames * kSecond / rate) {}

// The first blocks fill the device's buffer in a burst and tell nothing; those after it show its pace.
void BlockClock::Learn(double now) {
    const double even = now - m_blocks * m_length;
    const bool counts = m_blocks * m_length >= kForgotten;
    m_earliest = counts && m_blocks * m_length - m_length >= kForgotten ? std::min(m_earliest, even) : even;
    m_end = m_earliest + m_blocks * m_length - kMargin;
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
    m_last_slack = m_slack;
    m_window = 0;
}

// A driver that waits for its blocks most of the time, and still does, as much as before, when they are made
// to come later, takes them whenever it gets them: it has no pace of its own and takes that of the clock. The
// first window of the trial has its least slack at its beginning and tells nothing.
bool BlockClock::IsPaceless() {
    m_trials = m_pace < 1 - kSteering ? m_trials + 1 : 0;
    if (m_waits <= m_window / 4)
        m_paceless = false;
    else if (m_trials > 1 && m_slack < m_last_slack + (1 - m_pace) * kWindow / 4)
        m_paceless = true;
    return m_paceless;
}

BlockClock::Block BlockClock::Next(uint64_t reading) {
    if (m_blocks == 0) m_base = reading;
    const double now = static_cast<double>(reading - m_base);
    const bool learning = m_blocks * m_length < kLearning;
    if (learning) {
        Learn(now);
        ++m_blocks;
        return {true, 0, 0};
    }
    ++m_blocks;
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
