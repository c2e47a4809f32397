#include "host/headless/headless.h"
#include "host/host.h"

namespace {

// A program that waits by reading the clock over and over would wait for ever on a clock that only sleeping moves:
// so many readings without a movement make a millisecond pass.
constexpr int kSpinReadings = 64;

uint64_t g_clock = headless::kClockOrigin;
int g_readings = 0;
std::string g_log;

}  // namespace

namespace headless {

void Reset() {
    SetClock(kClockOrigin);
    g_log.clear();
}

void SetClock(uint64_t nanoseconds) {
    g_clock = nanoseconds;
    g_readings = 0;
}

void AdvanceClock(uint64_t nanoseconds) { SetClock(g_clock + nanoseconds); }

const std::string& Log() { return g_log; }

}  // namespace headless

namespace host {

uint64_t Nanoseconds() {
    if (++g_readings >= kSpinReadings) headless::AdvanceClock(1'000'000);
    return g_clock;
}

void SleepMilliseconds(uint32_t milliseconds) { headless::AdvanceClock(uint64_t{milliseconds} * 1'000'000); }

void DebugText(const char* bytes, size_t count) { g_log.append(bytes, count); }

}  // namespace host
