// Mixing the sounds of a stem, decoded by the caller.
#pragma once

#include <cstddef>
#include <functional>
#include <vector>

#include "dialect/dialect.h"

namespace dialect {

// Decoded sound, interleaved stereo at the rate of the mix, full scale 1.0. Borrowed. samples null: the file
// is missing, which is silence.
struct Pcm {
    const float* samples = nullptr;
    size_t frames = 0;
};
// Of a sound of Plan::mixed, all or at least so many frames from its begin.
using PcmOf = std::function<Pcm(int32_t sound, size_t most_frames)>;

constexpr size_t kMostTried = 16;

// The most that 16 bits hold.
constexpr float kFullScale = 32767.0f / 32768.0f;

// Deals the items to as few parts as keep each within full scale, at most `most`, and sets stem->parts and
// the items' parts. An item is tried with the last kMostTried parts only. When they do not suffice, the last
// part takes the rest and stem->limited is set. An item alone is taken as it is.
void SplitStem(const PcmOf& pcm, double rate, int32_t most, Stem* stem);

// One part as interleaved stereo, as long as it sounds. Beyond full scale where the stem is limited.
std::vector<float> MixPart(const Stem& stem, int32_t part, const PcmOf& pcm, double rate);

// Splits all stems within the plan's numbers, the loudest being served in the order of the chart, and numbers
// them. How many stems are to pass a limiter.
int32_t SplitStems(const PcmOf& pcm, double rate, Plan* plan);

}  // namespace dialect
