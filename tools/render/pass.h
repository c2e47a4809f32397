// One run of the whole program under the virtual clock, and the sinks that it feeds.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/headless/headless.h"
#include "render/options.h"

namespace render {

enum ExitCode { kGood = 0, kUsage = 1, kChart = 2, kOutput = 3, kStopped = 4 };

// A frame that was shown.
struct Moment {
    const headless::Frame& picture;
    int32_t now;     // its chart time in ms; the start's when ended
    bool ended;      // the chart is over and sounds ring out
    double seconds;  // since the start of the clock
};

constexpr double kDay = 86400, kAnyLength = 1e9;  // seconds

// What becomes of a pass. A code other than kGood ends the pass with that code; the sink has reported why.
// Calls come in the order of the declarations. A sink without Finish leaves nothing.
class Sink {
public:
    virtual ~Sink() = default;
    // The chart is loaded and its first frame is composed. seconds: the longest that the pass can last,
    // without the sounds that ring out.
    virtual ExitCode Begin(double seconds) { return kGood; }
    // Interleaved stereo at 44,100 Hz, in order from the start of the clock.
    virtual ExitCode OnSound(const float* samples, int frames) { return kGood; }
    virtual ExitCode OnFrame(const Moment& moment) { return kGood; }
    virtual ExitCode Finish() { return kGood; }
    virtual double MostSeconds() const { return kDay; }  // longer passes are refused
    virtual bool RingsOut() const { return false; }      // wants what sounds after the end of the chart
    virtual bool SeesFrames() const { return false; }    // otherwise frames may be skipped and stay undrawn
    virtual bool IsDone() const { return false; }        // a pass ends early when all its sinks are done
};

// Plays the chart from --from to --to and finishes the sinks. Before the first sink begins, everything that
// can be wrong with places and outputs has been checked. Reports failures on standard error; with
// report_losses also what the chart names and was not found.
ExitCode RunPass(const Options& options, const std::vector<Sink*>& sinks, bool report_losses);

ExitCode Complain(ExitCode code, const std::string& text);  // returns the code

// The chart time of a place in ms; -1 when the chart has no such measure. Valid once a pass has begun.
int64_t ChartTime(const PicturePlace& place);

}  // namespace render
