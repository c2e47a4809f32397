#include "platform/sound/kernels.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "platform/sound/format.h"

namespace audio {
namespace {

SOUND_RACY float Sample16(const unsigned char* p, size_t i) {
    int16_t n;
    std::memcpy(&n, p + 2 * i, 2);
    return static_cast<float>(n);
}

SOUND_RACY void AddStereo16(const unsigned char* source, float* acc, size_t frames, float gain) {
    for (size_t i = 0; i < 2 * frames; ++i) acc[i] += Sample16(source, i) * gain;
}

SOUND_RACY void AddMono16(const unsigned char* source, float* acc, size_t frames, float gain) {
    for (size_t i = 0; i < frames; ++i) {
        const float x = Sample16(source, i) * gain;
        acc[2 * i] += x;
        acc[2 * i + 1] += x;
    }
}

void AddStereo(const float* left, const float* right, float* acc, size_t frames, float gain) {
    for (size_t i = 0; i < frames; ++i) {
        acc[2 * i] += left[i] * gain;
        acc[2 * i + 1] += right[i] * gain;
    }
}

void AddPlane(const float* source, float* acc, size_t count, float gain) {
    for (size_t i = 0; i < count; ++i) acc[i] += source[i] * gain;
}

SOUND_RACY void ReadMono16(const unsigned char* source, float* out, size_t frames) {
    for (size_t i = 0; i < frames; ++i) out[i] = Sample16(source, i) * (1.0f / 32768);
}

void Convolve(const float* in, const float* row, int taps, float* out, size_t count) {
    constexpr size_t kGroup = 16;
    for (size_t k = 0; k < count; k += kGroup) {
        float sum[kGroup] = {};
        for (int j = 0; j < taps; ++j)
            for (size_t n = 0; n < kGroup; ++n) sum[n] += row[j] * in[k + static_cast<size_t>(j) + n];
        std::memcpy(out + k, sum, sizeof sum);
    }
}

float Dot(const float* in, const float* row, int taps) {
    constexpr int kGroup = 8;
    float sum[kGroup] = {};
    for (int j = 0; j < taps; j += kGroup)
        for (int n = 0; n < kGroup; ++n) sum[n] += in[j + n] * row[j + n];
    return ((sum[0] + sum[4]) + (sum[1] + sum[5])) + ((sum[2] + sum[6]) + (sum[3] + sum[7]));
}

void Interleave(const float* even, const float* odd, float* out, size_t pairs) {
    for (size_t i = 0; i < pairs; ++i) {
        out[2 * i] = even[i];
        out[2 * i + 1] = odd[i];
    }
}

float Peak(const float* x, size_t count) {
    constexpr size_t kGroup = 8;
    float most[kGroup] = {};
    size_t i = 0;
    for (; i + kGroup <= count; i += kGroup)
        for (size_t n = 0; n < kGroup; ++n) most[n] = std::max(most[n], std::fabs(x[i + n]));
    for (; i < count; ++i) most[0] = std::max(most[0], std::fabs(x[i]));
    return *std::max_element(most, most + kGroup);
}

}  // namespace

const Kernels& PlainKernels() {
    static constexpr Kernels kernels = {AddStereo16, AddMono16, AddStereo,  AddPlane, ReadMono16,
                                        Convolve,    Dot,       Interleave, Peak};
    return kernels;
}

}  // namespace audio
