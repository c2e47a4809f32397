#include "host/desktop/drift_tracker.h"

#include <algorithm>

namespace host {
namespace {

constexpr double kMillisecond = 1e6, kSecond = 1e9;                             // ns
constexpr double kMargin = 1 * kMillisecond;                                    // target of the minimum slack
constexpr double kMinSlack = 0.3 * kMillisecond, kMaxSlack = 4 * kMillisecond;  // no steering in between
constexpr double kWindow = 500 * kMillisecond;
constexpr int kLateWindows = 8;                         // before late blocks are steered back
constexpr int kTrialWindows = 12, kTrustWindows = 120;  // see IsPaceless
constexpr double kMinLearning = 50 * kMillisecond, kMaxLearning = 500 * kMillisecond;
constexpr double kSettled = 25 * kMillisecond;  // without a burst
constexpr double kMaxSteering = 0.001;          // of the pace; devices drift by a tenth of it
constexpr double kMaxHurry = 0.004;             // of the pace, while blocks wait: waiting drains the device
// A device that stays so late for so long has dropped what it did not get and does not catch up: the blocks
// do. The mixer lets sounding voices play on across the steps of that pace.
constexpr double kStood = 15 * kMillisecond, kStoodTime = 150 * kMillisecond;
constexpr double kCatchUpWindow = 100 * kMillisecond, kCatchUpTime = 300 * kMillisecond;
constexpr double kMaxCatchUp = 0.08;          // of the pace
constexpr double kLost = 100 * kMillisecond;  // later than this: the device stood still, start again
constexpr double kHeldLost = 5 * kSecond;     // a file driver catches up by itself

}  // namespace

DriftTracker::DriftTracker(int rate, int frames) : m_length(frames * kSecond / rate) {}

// The first requests fill the device's buffer in a burst and say nothing about its pace; those after it do. A
// driver that never settles is used as it is after kMaxLearning.
void DriftTracker::Learn(double now) {
    const double even = now - m_blocks * m_length;
    if (m_blocks == 0 || even < m_earliest - m_length / 4) m_burst = m_blocks;
    m_earliest = m_blocks == 0 ? even : std::min(m_earliest, even);
    m_end = m_earliest + m_blocks * m_length - kMargin;
    ++m_blocks;
    const double length = m_blocks * m_length;
    const bool settled = (m_blocks - m_burst) * m_length >= kSettled;
    m_learning = length < kMinLearning || (!m_held && !settled && length < kMaxLearning);
}

// Keeps the minimum slack of a window near kMargin; jitter only adds to it. Too little is corrected at once,
// too much only when it lasts, because a busy machine is late for a while.
void DriftTracker::Steer(double slack) {
    m_stood = slack > kStood ? m_stood + 1 : 0;
    if (!m_catching_up && m_stood * m_length >= kStoodTime) {
        m_catching_up = true;
        m_window = 0;
    }
    m_slack = m_window == 0 ? slack : std::min(m_slack, slack);
    m_waits = (m_window == 0 ? 0 : m_waits) + (slack < 0 ? 1 : 0);
    if (++m_window * m_length < (m_catching_up ? kCatchUpWindow : kWindow)) return;
    const int blocks = m_window;
    m_window = 0;
    if (m_catching_up) {
        m_catching_up = m_slack > kMaxSlack;
        m_pace = m_catching_up ? 1 + std::min((m_slack - kMargin) / kCatchUpTime, kMaxCatchUp) : 1;
        return;
    }
    m_late_windows = m_slack > kMaxSlack ? m_late_windows + 1 : 0;
    const bool paceless = IsPaceless(blocks);
    const bool early = m_slack < kMinSlack && !paceless;
    const bool steer = early || m_late_windows >= kLateWindows;
    const double fastest = m_slack < 0 ? kMaxHurry : kMaxSteering;
    m_pace = steer ? 1 + std::clamp((m_slack - kMargin) / kWindow, -fastest, kMaxSteering) : 1;
}

// A driver without a pace of its own takes each block when it gets it: its requests always come early, and
// steering the blocks earlier does not change that. Such a driver is paced by the clock. The result is
// checked again every kTrustWindows.
bool DriftTracker::IsPaceless(int blocks) {
    if (m_waits <= blocks / 4) {
        m_trial = 0;
        m_paceless = false;
    } else if (!m_paceless) {
        if (m_trial++ == 0) m_trial_slack = m_slack;
        if (m_trial > kTrialWindows) {
            m_paceless = m_slack < m_trial_slack + kMaxHurry * kWindow;
            m_trial = 0;
        }
    } else if (++m_trial >= kTrustWindows) {
        m_trial = 0;
        m_paceless = false;
    }
    return m_paceless;
}

DriftTracker::Block DriftTracker::Next(uint64_t reading) {
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
