// What the bytes of a sound buffer mean, and reading them as float.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/codec/waveformat.h"

// A buffer's owner may write what the mixer reads: that is how a ring is fed, and it is heard as it is
// written. Functions that read samples carry this mark, so that a thread sanitizer reports everything else.
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

// False for what no buffer can have: a tag other than PCM and 32-bit float, a rate or channel count out of
// range, another width than 8, 16, 24 or 32 bits, a block align that is not channels times width.
bool ParseFormat(const WAVEFORMATEX& wfx, Format* format);

// Reads `count` frames as floats of full scale 1.0. One channel fills `left` alone; more are folded to left
// and right by the speaker order of WAVE files, the first two at full level, the others at -3 dB on their
// side or sides.
void ReadFrames(const Format& format, const unsigned char* data, size_t count, float* left, float* right);

constexpr unsigned char SilenceByte(const Format& format) {
    return format.kind == SampleKind::kU8 ? 0x80 : 0;
}

}  // namespace audio
