// The headless host's own interface: the script that goes in and the captures that come out.
#pragma once

#include <cstdint>
#include <string>

namespace headless {

// Back to the state of a fresh process: clock at kClockOrigin, no script, no captures.
void Reset();

// ---- clock: moved by sleeping, by the script and by a reader that spins ----
constexpr uint64_t kClockOrigin = 1'000'000'000;  // ns
void SetClock(uint64_t nanoseconds);
void AdvanceClock(uint64_t nanoseconds);

// ---- text for the debugger, as one string ----
const std::string& Log();

}  // namespace headless
