#include <algorithm>
#include <utility>
#include <vector>

#include "host/headless/headless.h"
#include "host/host.h"

namespace {

// A program that spins on the clock would wait for ever, because only sleeping moves it. So this many
// readings in a row advance it by a millisecond. Each call on a sound buffer reads the clock too; the bound
// is far above what the largest chord of a chart needs, so that its notes still start together.
constexpr int kSpinReadings = 1 << 17;

uint64_t g_clock = headless::kClockOrigin;
int g_readings = 0;
std::string g_log;
headless::WakeHook g_on_sleep;

// Function-local, so that other files of the host can add hooks before main.
std::vector<headless::ClockHook>& ClockHooks() {
    static std::vector<headless::ClockHook> hooks;
    return hooks;
}

std::vector<headless::ResetHook>& ResetHooks() {
    static std::vector<headless::ResetHook> hooks;
    return hooks;
}

template <typename Hook>
void AddOnce(std::vector<Hook>* hooks, Hook hook) {
    if (std::find(hooks->begin(), hooks->end(), hook) == hooks->end()) hooks->push_back(hook);
}

}  // namespace

namespace headless {

void Reset() {
    SetClock(kClockOrigin);
    g_log.clear();
    g_on_sleep = nullptr;
    for (const ResetHook hook : ResetHooks()) hook();
}

void SetClock(uint64_t nanoseconds) {
    const uint64_t before = g_clock;
    g_clock = nanoseconds;
    g_readings = 0;
    if (nanoseconds <= before) return;
    for (const ClockHook hook : ClockHooks()) hook(before, nanoseconds);
}

void AdvanceClock(uint64_t nanoseconds) {
    SetClock(g_clock + nanoseconds);
}

uint64_t Clock() {
    return g_clock;
}

void OnClock(ClockHook hook) {
    AddOnce(&ClockHooks(), hook);
}

void OnSleep(WakeHook hook) {
    g_on_sleep = std::move(hook);
}

void OnReset(ResetHook hook) {
    AddOnce(&ResetHooks(), hook);
}

const std::string& Log() {
    return g_log;
}

}  // namespace headless

namespace host {

uint64_t Nanoseconds() {
    if (++g_readings >= kSpinReadings) headless::AdvanceClock(1'000'000);
    return g_clock;
}

void SleepMilliseconds(uint32_t milliseconds) {
    const uint64_t end = g_clock + uint64_t{milliseconds} * 1'000'000;
    headless::SetClock(g_on_sleep ? std::max(g_on_sleep(g_clock, end), g_clock) : end);
}

void DebugText(const char* bytes, size_t count) {
    g_log.append(bytes, count);
}

}  // namespace host
