// Keeps an overloaded mix inside full scale without clipping it.
#pragma once

#include <cstddef>

namespace audio {

// The gain falls at once to what the loudest sample needs, for both sides alike, and recovers within some
// tenths of a second. A mix that stays within full scale passes unchanged, to the bit.
class Limiter {
public:
    void SetRate(int rate);
    void Run(float* stereo, size_t frames);  // interleaved, in place

private:
    float m_keep = 1;      // of the reduction, from frame to frame
    float m_envelope = 1;  // at least 1; the gain is its inverse
};

}  // namespace audio
