// The mixer's inner loops, as plain code and as vector code for newer processors. Both do the same arithmetic
// for each sample, whatever the length of a run, so a sound does not depend on how it is cut into blocks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>
#include <vector>

namespace audio {

template <class T>
struct Aligned64 {
    using value_type = T;
    Aligned64() = default;
    template <class U>
    Aligned64(const Aligned64<U>&) {}
    T* allocate(size_t n) { return static_cast<T*>(::operator new (n * sizeof(T), std::align_val_t{64})); }
    void deallocate(T* p, size_t) { ::operator delete (p, std::align_val_t{64}); }
    bool operator==(const Aligned64&) const { return true; }
};
using FloatTable = std::vector<float, Aligned64<float>>;

struct Kernels {
    // acc (interleaved stereo) += source * gain, over `frames` frames. The 16-bit versions expect the gain
    // divided by 32768.
    void (*add_stereo16)(const unsigned char* source, float* acc, size_t frames, float gain);
    void (*add_mono16)(const unsigned char* source, float* acc, size_t frames, float gain);
    void (*add_stereo)(const float* left, const float* right, float* acc, size_t frames, float gain);
    void (*add_plane)(const float* source, float* acc, size_t count, float gain);
    void (*read_mono16)(const unsigned char* source, float* out, size_t frames);  // full scale 1.0

    // out[k] = sum of row[j] * in[k + j]; reads and writes up to 31 values past count
    void (*convolve)(const float* in, const float* row, int taps, float* out, size_t count);
    float (*dot)(const float* in, const float* row, int taps);  // taps: a multiple of 8
    void (*interleave)(const float* even, const float* odd, float* out, size_t pairs);
    float (*peak)(const float* x, size_t count);  // the largest magnitude
};

const Kernels& PlainKernels();
const Kernels& BestKernels();  // for this processor

}  // namespace audio
