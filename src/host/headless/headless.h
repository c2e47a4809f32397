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
uint64_t Clock();  // without counting as a reading

// Called whenever the clock has moved forward, with its readings before and after; such as to let sound
// sound. A hook stays for the whole process, also across Reset, and is kept once however often it is given.
// It may read the clock, not move it.
using ClockHook = void (*)(uint64_t before, uint64_t now);
void OnClock(ClockHook hook);

// Called by Reset, so that a part of the host with a state of its own goes back to that of a fresh process.
// Kept as a clock hook is.
using ResetHook = void (*)();
void OnReset(ResetHook hook);

// ---- text for the debugger, as one string ----
const std::string& Log();

}  // namespace headless
