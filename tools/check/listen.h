// What the sounds of a chart are like to hear: their samples, as the player holds them.
#pragma once

#include <cstdint>
#include <vector>

#include "check/objects.h"
#include "check/subject.h"
#include "platform/sound/format.h"

namespace check {

// The samples of one loaded sound, which the slot keeps.
struct Samples {
    const unsigned char* data = nullptr;  // null: not loaded, or without a sound
    int64_t frames = 0;
    audio::Format format;
    double Ms() const { return static_cast<double>(frames) * 1000.0 / format.rate; }
};
Samples SamplesOf(const Subject& subject, int32_t number);

// The largest magnitude in each hundredth of a second; full scale is 1.
struct Envelope {
    static constexpr int kPieces = 100;  // in a second
    std::vector<float> peaks;
    std::vector<float> rest;  // of each piece and all after it
    double attack_ms = 0.0;   // where it first reaches a hundredth of its peak; 0 if it swells or is silent
    float Peak() const { return rest.empty() ? 0.0f : rest[0]; }
};
Envelope EnvelopeOf(const Samples& samples);

struct Loudest {
    double peak = 0.0;    // of the mix; full scale is 1
    double ms = 0.0;      // where, in chart time
    int64_t seconds = 0;  // how many seconds of the chart pass full scale somewhere
};
// Mixes the chart without a limiter. Sounds of other rates are interpolated linearly. False if that would
// take too long: a chart can ask for years of sound.
bool MixChart(const std::vector<Fire>& fires, const std::vector<Samples>& samples,
              const std::vector<Envelope>& envelopes, Loudest* loudest);

}  // namespace check
