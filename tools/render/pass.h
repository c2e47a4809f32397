// One run of the whole program under the virtual clock, and what listens to it.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "host/headless/headless.h"
#include "render/options.h"

namespace render {

enum ExitCode { kGood = 0, kUsage = 1, kChart = 2, kOutput = 3, kStopped = 4 };

// What a pass hands out. All may be empty. A false result ends the pass with kOutput; the listener has told
// why.
struct Listener {
    // The chart is loaded and its first frame is composed. seconds: how long the pass will be at most,
    // without what rings out.
    std::function<bool(double seconds)> begin;
    // Sound as it comes, interleaved stereo at 44,100 Hz, from the first moment on.
    std::function<bool(const float* samples, int frames)> sound;
    // A frame was shown. now: its chart time in ms. seconds: since the first moment.
    std::function<bool(const headless::Frame& frame, int32_t now, double seconds)> frame;
    // The chart time at which a frame is wanted exactly, if that is near; below the present one for none.
    std::function<int64_t()> wanted;
    bool ring_out = false;  // goes on behind the chart's end until the last sound is over
};

// Plays the chart from --from to --to. Tells on standard error why it did not go well.
ExitCode RunPass(const Options& options, const Listener& listener);

int Complain(ExitCode code, const std::string& text);  // gives the code

// The chart time, in ms, of a place; -1 when the chart has no such measure. For a pass that has begun.
int64_t ChartTime(const PicturePlace& place);

// True once the user has asked the program to end: outputs are then given up.
bool Stopped();
void CatchSignals();

}  // namespace render
