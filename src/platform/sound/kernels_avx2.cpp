#include "platform/sound/format.h"
#include "platform/sound/kernels.h"

#if defined(__x86_64__)
#include <immintrin.h>

#define AVX2 __attribute__((target("avx2,fma")))

namespace audio {
namespace {

SOUND_RACY AVX2 inline __m256 Load16(const unsigned char* p) {  // eight samples
    return _mm256_cvtepi32_ps(_mm256_cvtepi16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p))));
}

// Multiplies and adds separately, as the plain loop that finishes a run does.
AVX2 inline void Add8(float* acc, __m256 x) {
    _mm256_storeu_ps(acc, _mm256_add_ps(_mm256_loadu_ps(acc), x));
}

SOUND_RACY AVX2 void AddStereo16(const unsigned char* source, float* acc, size_t frames, float gain) {
    const __m256 g = _mm256_set1_ps(gain);
    size_t i = 0;
    for (; i + 16 <= frames; i += 16)
        for (size_t k = 0; k < 4; ++k)
            Add8(acc + 2 * i + 8 * k, _mm256_mul_ps(Load16(source + 4 * i + 16 * k), g));
    PlainKernels().add_stereo16(source + 4 * i, acc + 2 * i, frames - i, gain);
}

// Adds eight values to both sides.
AVX2 inline void AddBoth(float* acc, __m256 x) {
    const __m256 low = _mm256_unpacklo_ps(x, x), high = _mm256_unpackhi_ps(x, x);
    Add8(acc, _mm256_permute2f128_ps(low, high, 0x20));
    Add8(acc + 8, _mm256_permute2f128_ps(low, high, 0x31));
}

SOUND_RACY AVX2 void AddMono16(const unsigned char* source, float* acc, size_t frames, float gain) {
    const __m256 g = _mm256_set1_ps(gain);
    size_t i = 0;
    for (; i + 8 <= frames; i += 8) AddBoth(acc + 2 * i, _mm256_mul_ps(Load16(source + 2 * i), g));
    PlainKernels().add_mono16(source + 2 * i, acc + 2 * i, frames - i, gain);
}

AVX2 void AddStereo(const float* left, const float* right, float* acc, size_t frames, float gain) {
    const __m256 g = _mm256_set1_ps(gain);
    size_t i = 0;
    for (; i + 8 <= frames; i += 8) {
        const __m256 l = _mm256_mul_ps(_mm256_loadu_ps(left + i), g);
        const __m256 r = _mm256_mul_ps(_mm256_loadu_ps(right + i), g);
        const __m256 low = _mm256_unpacklo_ps(l, r), high = _mm256_unpackhi_ps(l, r);
        Add8(acc + 2 * i, _mm256_permute2f128_ps(low, high, 0x20));
        Add8(acc + 2 * i + 8, _mm256_permute2f128_ps(low, high, 0x31));
    }
    PlainKernels().add_stereo(left + i, right + i, acc + 2 * i, frames - i, gain);
}

AVX2 void AddPlane(const float* source, float* acc, size_t count, float gain) {
    const __m256 g = _mm256_set1_ps(gain);
    size_t i = 0;
    for (; i + 8 <= count; i += 8) Add8(acc + i, _mm256_mul_ps(_mm256_loadu_ps(source + i), g));
    PlainKernels().add_plane(source + i, acc + i, count - i, gain);
}

SOUND_RACY AVX2 void ReadMono16(const unsigned char* source, float* out, size_t frames) {
    const __m256 scale = _mm256_set1_ps(1.0f / 32768);
    size_t i = 0;
    for (; i + 8 <= frames; i += 8) _mm256_storeu_ps(out + i, _mm256_mul_ps(Load16(source + 2 * i), scale));
    PlainKernels().read_mono16(source + 2 * i, out + i, frames - i);
}

// Computes thirty-two outputs at once, so each coefficient is broadcast only once for all of them.
AVX2 void Convolve(const float* in, const float* row, int taps, float* out, size_t count) {
    for (size_t k = 0; k < count; k += 32) {
        __m256 a = _mm256_setzero_ps(), b = a, c = a, d = a;
        const float* x = in + k;
        for (int j = 0; j < taps; ++j, ++x) {
            const __m256 h = _mm256_broadcast_ss(row + j);
            a = _mm256_fmadd_ps(h, _mm256_loadu_ps(x), a);
            b = _mm256_fmadd_ps(h, _mm256_loadu_ps(x + 8), b);
            c = _mm256_fmadd_ps(h, _mm256_loadu_ps(x + 16), c);
            d = _mm256_fmadd_ps(h, _mm256_loadu_ps(x + 24), d);
        }
        _mm256_storeu_ps(out + k, a);
        _mm256_storeu_ps(out + k + 8, b);
        _mm256_storeu_ps(out + k + 16, c);
        _mm256_storeu_ps(out + k + 24, d);
    }
}

AVX2 float Dot(const float* in, const float* row, int taps) {
    __m256 a = _mm256_setzero_ps(), b = a;
    int j = 0;
    for (; j + 16 <= taps; j += 16) {
        a = _mm256_fmadd_ps(_mm256_loadu_ps(in + j), _mm256_loadu_ps(row + j), a);
        b = _mm256_fmadd_ps(_mm256_loadu_ps(in + j + 8), _mm256_loadu_ps(row + j + 8), b);
    }
    if (j < taps) a = _mm256_fmadd_ps(_mm256_loadu_ps(in + j), _mm256_loadu_ps(row + j), a);
    a = _mm256_add_ps(a, b);
    __m128 s = _mm_add_ps(_mm256_castps256_ps128(a), _mm256_extractf128_ps(a, 1));
    s = _mm_add_ps(s, _mm_movehl_ps(s, s));
    return _mm_cvtss_f32(_mm_add_ss(s, _mm_movehdup_ps(s)));
}

AVX2 void Interleave(const float* even, const float* odd, float* out, size_t pairs) {
    size_t i = 0;
    for (; i + 8 <= pairs; i += 8) {
        const __m256 e = _mm256_loadu_ps(even + i), o = _mm256_loadu_ps(odd + i);
        const __m256 low = _mm256_unpacklo_ps(e, o), high = _mm256_unpackhi_ps(e, o);
        _mm256_storeu_ps(out + 2 * i, _mm256_permute2f128_ps(low, high, 0x20));
        _mm256_storeu_ps(out + 2 * i + 8, _mm256_permute2f128_ps(low, high, 0x31));
    }
    PlainKernels().interleave(even + i, odd + i, out + 2 * i, pairs - i);
}

AVX2 float Peak(const float* x, size_t count) {
    const __m256 sign = _mm256_set1_ps(-0.0f);
    __m256 a = _mm256_setzero_ps(), b = a;
    size_t i = 0;
    for (; i + 16 <= count; i += 16) {
        a = _mm256_max_ps(a, _mm256_andnot_ps(sign, _mm256_loadu_ps(x + i)));
        b = _mm256_max_ps(b, _mm256_andnot_ps(sign, _mm256_loadu_ps(x + i + 8)));
    }
    alignas(32) float most[8];
    _mm256_store_ps(most, _mm256_max_ps(a, b));
    const float head = PlainKernels().peak(most, 8), tail = PlainKernels().peak(x + i, count - i);
    return head > tail ? head : tail;
}

const Kernels kVector = {AddStereo16, AddMono16, AddStereo,  AddPlane, ReadMono16,
                         Convolve,    Dot,       Interleave, Peak};

}  // namespace

const Kernels& BestKernels() {
    static const Kernels& best =
        __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") ? kVector : PlainKernels();
    return best;
}

}  // namespace audio

#else

namespace audio {

const Kernels& BestKernels() {
    return PlainKernels();
}

}  // namespace audio

#endif
