// Rate conversion by windowed sinc. A filter is a table with one row (phase) for each position between two
// samples.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "platform/sound/kernels.h"

namespace audio {

// Source frames per output frame, as an exact fraction in lowest terms.
struct Step {
    uint32_t numerator = 1, denominator = 1;
    bool operator==(const Step&) const = default;
};
Step MakeStep(int source_rate, int output_rate);

// A position in the source: whole frames, and a fraction in units of 1 / Step::denominator.
struct Position {
    int64_t frame = 0;
    uint32_t fraction = 0;
};
Position Advance(Position position, Step step, int64_t output_frames);
// Output frames until the position reaches `end` (in source frames); at least 0.
int64_t FramesUntil(Position position, Step step, int64_t end);

// Kaiser window of about 92 dB. Upsampling: the cutoff is the source's Nyquist frequency, original samples
// are unchanged, and the passband is flat up to 94 % of it. Downsampling: the stopband begins at the output's
// Nyquist frequency.
class Filter {
public:
    Filter(Step step);

    int Taps() const { return m_taps; }            // a multiple of 8
    int Before() const { return m_taps / 2 - 1; }  // source frames needed before the position

    // in[0] is source frame position.frame - Before(). `in` holds the input for `count` outputs (see
    // InputLength) and kOverrun more readable floats. `out` receives `count` values. `out` and `scratch` hold
    // at least count + 2 * kOverrun floats each and must not overlap.
    void Run(const float* in, uint32_t fraction, Step step, size_t count, float* out, float* scratch) const;
    size_t InputLength(uint32_t fraction, Step step, size_t count) const;

    static constexpr size_t kOverrun = 64;
    // An upper bound for every source format.
    static size_t MaxInputLength(int output_rate, size_t count);

private:
    void MakePhases(double cutoff);
    void RunIntegerRatio(const float* in, uint32_t fraction, Step step, size_t count, float* out,
                         float* scratch) const;
    float Interpolate(const float* in, uint32_t fraction, uint32_t denominator) const;

    int m_taps;
    uint32_t m_phases;    // rows per source frame; plus one for interpolation
    bool m_interpolated;  // outputs between two rows are interpolated
    FloatTable m_table;   // rows of m_taps coefficients
};

// The filter between two rates, shared by all voices that need it and freed with the last. Null when the
// rates are equal.
std::shared_ptr<const Filter> FilterFor(int source_rate, int output_rate);

}  // namespace audio
