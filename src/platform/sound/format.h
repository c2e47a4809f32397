// The sample formats of sound buffers, and reading them as float.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/codec/waveformat.h"

// The owner of a buffer may write to memory that the mixer is reading: that is how a ring is fed, and the
// write is heard at once. Functions that read samples carry this mark, so that a thread sanitizer reports
// every other race.
#if defined(__SANITIZE_THREAD__)
#define SOUND_RACY __attribute__((no_sanitize("thread")))
#else
#define SOUND_RACY
#endif

namespace audio {

enum class SampleKind : uint8_t { kU8, kS16, kS24, kS32, kFloat };

constexpr int kMinRate = 100, kMaxRate = 200000;  // Hz
constexpr int kMaxChannels = 8;

struct Format {
    SampleKind kind = SampleKind::kS16;
    int channels = 2;
    int rate = 44100;
    int frame_bytes = 4;
};

// False for formats that a buffer cannot have: a tag other than PCM and 32-bit float, a rate or channel count
// out of range, a width other than 8, 16, 24 or 32 bits, or a block align other than channels times width.
bool ParseFormat(const WAVEFORMATEX& wfx, Format* format);

// Reads `count` frames as floats with full scale 1.0. One channel fills `left` only. More than two are mixed
// down to left and right in the speaker order of WAVE files: the first two at full level, the others at -3 dB
// on their side, or on both.
void ReadFrames(const Format& format, const unsigned char* data, size_t count, float* left, float* right);

// The first frame from which on nothing but silence follows, up to `frames`.
int64_t SilentFrom(const Format& format, const unsigned char* data, int64_t frames);

constexpr unsigned char SilenceByte(const Format& format) {
    return format.kind == SampleKind::kU8 ? 0x80 : 0;
}

}  // namespace audio
