// Rate conversion by a windowed sinc. A filter is a table of rows, one for each place between two samples.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "platform/sound/kernels.h"

namespace audio {

// How far a voice gets in each frame of the output, as an exact fraction: numerator / denominator source
// frames, in lowest terms.
struct Step {
    uint32_t numerator = 1, denominator = 1;
    bool operator==(const Step&) const = default;
};
Step MakeStep(int source_rate, int output_rate);

// A place in the source: whole frames and a fraction in units of 1 / Step::denominator.
struct Place {
    int64_t frame = 0;
    uint32_t fraction = 0;
};
Place Advance(Place place, Step step, int64_t output_frames);
// The output frames until `end` (in source frames) is reached, at least 0.
int64_t FramesUntil(Place place, Step step, int64_t end);

// Kaiser window of about 92 dB. Going up, the cutoff is the source's Nyquist frequency: original samples stay
// as they are, and the band is flat up to 94 % of it. Going down, the stop band begins at the output's
// Nyquist frequency.
class Filter {
public:
    Filter(Step step);

    int Taps() const { return m_taps; }            // a multiple of 8
    int Before() const { return m_taps / 2 - 1; }  // source frames needed before the place itself

    // in[0] is the source frame place.frame - Before(); holds what `count` outputs need (see Needed), and
    // kOverrun readable floats more. out takes `count` values; it and `scratch` (both at least count + 2 *
    // kOverrun) differ.
    void Run(const float* in, uint32_t fraction, Step step, size_t count, float* out, float* scratch) const;
    size_t Needed(uint32_t fraction, Step step, size_t count) const;

    static constexpr size_t kOverrun = 64;
    // No source that a buffer can have needs more.
    static size_t LongestNeed(int output_rate, size_t count);

private:
    void MakeRows(double cutoff);
    void RunWhole(const float* in, uint32_t fraction, Step step, size_t count, float* out,
                  float* scratch) const;
    float Between(const float* in, uint32_t fraction, uint32_t denominator) const;

    int m_taps;
    uint32_t m_rows;      // rows per source frame; one more follows when interpolated
    bool m_interpolated;  // the fraction falls between rows
    FloatTable m_table;   // rows of m_taps
};

// The filter between two rates, shared among all voices that use it while any does. Null when they are equal.
std::shared_ptr<const Filter> FilterFor(int source_rate, int output_rate);

}  // namespace audio
