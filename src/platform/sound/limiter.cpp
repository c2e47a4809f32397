#include "platform/sound/limiter.h"

#include <algorithm>
#include <cmath>

#include "platform/sound/kernels.h"

namespace audio {
namespace {

constexpr double kRelease = 0.1;     // s, time constant
constexpr float kRecovered = 1e-5f;  // above full scale; below this the gain snaps back to 1

}  // namespace

void Limiter::SetRate(int rate) {
    m_release = static_cast<float>(std::exp(-1 / (kRelease * rate)));
    m_envelope = 1;
}

void Limiter::Run(float* stereo, size_t frames) {
    if (m_envelope == 1.0f && BestKernels().peak(stereo, 2 * frames) <= 1.0f) return;
    for (size_t i = 0; i < frames; ++i) {
        float* x = stereo + 2 * i;
        const float peak = std::max(std::fabs(x[0]), std::fabs(x[1]));
        m_envelope = std::max(peak, 1 + (m_envelope - 1) * m_release);
        if (m_envelope < 1 + kRecovered) m_envelope = 1;
        if (m_envelope <= 1.0f) continue;
        x[0] /= m_envelope;
        x[1] /= m_envelope;
    }
}

}  // namespace audio
