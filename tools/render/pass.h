// One run of the whole program under the virtual clock, and its listeners.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "host/headless/headless.h"
#include "render/options.h"

namespace render {

enum ExitCode { kGood = 0, kUsage = 1, kChart = 2, kOutput = 3, kStopped = 4 };

// What a pass delivers. Every member may be empty. Returning false ends the pass with kOutput; the listener
// has reported why.
struct Listener {
    // The chart is loaded and its first frame is composed. seconds: the longest that the pass can last,
    // without the sounds that ring out.
    std::function<bool(double seconds)> begin;
    // Sound in order, interleaved stereo at 44,100 Hz, from the start of the clock.
    std::function<bool(const float* samples, int frames)> sound;
    // A frame was shown. now: its chart time in ms. seconds: since the start of the clock.
    std::function<bool(const headless::Frame& frame, int32_t now, double seconds)> frame;
    // The chart time at which a frame is wanted exactly; less than the current one for none.
    std::function<int64_t()> wanted;
    bool ring_out = false;  // continue after the end of the chart until the last sound has ended
};

// Plays the chart from --from to --to. Reports failures on standard error.
ExitCode RunPass(const Options& options, const Listener& listener);

ExitCode Complain(ExitCode code, const std::string& text);  // returns the code

// The chart time of a place in ms; -1 when the chart has no such measure. Valid once a pass has begun.
int64_t ChartTime(const PicturePlace& place);

}  // namespace render
