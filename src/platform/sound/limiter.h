// Keeps an overloaded mix within full scale without clipping.
#pragma once

#include <cstddef>

namespace audio {

// The gain drops at once to what the loudest sample needs, equally on both sides, and recovers within a few
// tenths of a second. A mix within full scale passes unchanged, bit for bit.
class Limiter {
public:
    void SetRate(int rate);
    void Run(float* stereo, size_t frames);  // interleaved, in place

private:
    float m_release = 1;   // the reduction that remains from one frame to the next
    float m_envelope = 1;  // at least 1; the gain is its reciprocal
};

}  // namespace audio
