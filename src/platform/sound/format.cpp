#include "platform/sound/format.h"

#include <cstring>

namespace audio {
namespace {

struct U8 {
    static constexpr int kBytes = 1;
    SOUND_RACY static float Read(const unsigned char* p) {
        return static_cast<float>(p[0] - 128) * (1.0f / 128);
    }
};

struct S16 {
    static constexpr int kBytes = 2;
    SOUND_RACY static float Read(const unsigned char* p) {
        int16_t n;
        std::memcpy(&n, p, 2);
        return static_cast<float>(n) * (1.0f / 32768);
    }
};

struct S24 {
    static constexpr int kBytes = 3;
    SOUND_RACY static float Read(const unsigned char* p) {
        const uint32_t n = uint32_t{p[0]} << 8 | uint32_t{p[1]} << 16 | uint32_t{p[2]} << 24;
        return static_cast<float>(static_cast<int32_t>(n)) * (1.0f / 2147483648.0f);
    }
};

struct S32 {
    static constexpr int kBytes = 4;
    SOUND_RACY static float Read(const unsigned char* p) {
        int32_t n;
        std::memcpy(&n, p, 4);
        return static_cast<float>(n) * (1.0f / 2147483648.0f);
    }
};

// A file can contain infinities and NaNs, which would stay in the mix for good.
struct F32 {
    static constexpr int kBytes = 4;
    SOUND_RACY static float Read(const unsigned char* p) {
        float x;
        std::memcpy(&x, p, 4);
        return x >= -64.0f && x <= 64.0f ? x : 0.0f;
    }
};

constexpr float kHalfPower = 0.70710678f;

struct Sides {
    float left, right;
};

// Rows for 3 to 8 channels: front left and right, then centre, low frequency, back and side, as far as
// present.
constexpr Sides kBoth{kHalfPower, kHalfPower}, kLeft{kHalfPower, 0}, kRight{0, kHalfPower};
constexpr Sides kDownmix[6][kMaxChannels] = {
    {{1, 0}, {0, 1}, kBoth},
    {{1, 0}, {0, 1}, kLeft, kRight},
    {{1, 0}, {0, 1}, kBoth, kLeft, kRight},
    {{1, 0}, {0, 1}, kBoth, kBoth, kLeft, kRight},
    {{1, 0}, {0, 1}, kBoth, kBoth, kBoth, kLeft, kRight},
    {{1, 0}, {0, 1}, kBoth, kBoth, kLeft, kRight, kLeft, kRight},
};

template <class Sample>
SOUND_RACY void Read(int channels, const unsigned char* p, size_t count, float* left, float* right) {
    if (channels == 1) {
        for (size_t i = 0; i < count; ++i) left[i] = Sample::Read(p + i * Sample::kBytes);
        return;
    }
    if (channels == 2) {
        for (size_t i = 0; i < count; ++i) {
            left[i] = Sample::Read(p + 2 * i * Sample::kBytes);
            right[i] = Sample::Read(p + (2 * i + 1) * Sample::kBytes);
        }
        return;
    }
    const Sides* downmix = kDownmix[channels - 3];
    for (size_t i = 0; i < count; ++i) {
        float l = 0, r = 0;
        for (int c = 0; c < channels; ++c, p += Sample::kBytes) {
            const float x = Sample::Read(p);
            l += x * downmix[c].left;
            r += x * downmix[c].right;
        }
        left[i] = l;
        right[i] = r;
    }
}

}  // namespace

bool ParseFormat(const WAVEFORMATEX& wfx, Format* format) {
    const bool pcm = wfx.wFormatTag == WAVE_FORMAT_PCM;
    const int bits = wfx.wBitsPerSample;
    if (!pcm && !(wfx.wFormatTag == WAVE_FORMAT_IEEE_FLOAT && bits == 32)) return false;
    if (bits != 8 && bits != 16 && bits != 24 && bits != 32) return false;
    if (wfx.nChannels < 1 || wfx.nChannels > kMaxChannels) return false;
    if (wfx.nSamplesPerSec < kMinRate || wfx.nSamplesPerSec > kMaxRate) return false;
    if (wfx.nBlockAlign != wfx.nChannels * (bits / 8)) return false;
    format->channels = wfx.nChannels;
    format->rate = static_cast<int>(wfx.nSamplesPerSec);
    format->frame_bytes = wfx.nBlockAlign;
    constexpr SampleKind kKinds[4] = {SampleKind::kU8, SampleKind::kS16, SampleKind::kS24, SampleKind::kS32};
    format->kind = pcm ? kKinds[bits / 8 - 1] : SampleKind::kFloat;
    return true;
}

void ReadFrames(const Format& format, const unsigned char* data, size_t count, float* left, float* right) {
    switch (format.kind) {
        case SampleKind::kU8:
            return Read<U8>(format.channels, data, count, left, right);
        case SampleKind::kS16:
            return Read<S16>(format.channels, data, count, left, right);
        case SampleKind::kS24:
            return Read<S24>(format.channels, data, count, left, right);
        case SampleKind::kS32:
            return Read<S32>(format.channels, data, count, left, right);
        case SampleKind::kFloat:
            return Read<F32>(format.channels, data, count, left, right);
    }
}

int64_t SilentFrom(const Format& format, const unsigned char* data, int64_t frames) {
    constexpr size_t kRun = 4096;  // bytes compared at once
    const unsigned char silence = SilenceByte(format);
    const auto align = static_cast<size_t>(format.frame_bytes);
    size_t end = static_cast<size_t>(frames) * align;
    const auto is_silent = [silence](const unsigned char* p) {
        return *p == silence && std::memcmp(p, p + 1, kRun - 1) == 0;
    };
    while (end >= kRun && is_silent(data + end - kRun)) end -= kRun;
    while (end > 0 && data[end - 1] == silence) --end;
    return static_cast<int64_t>((end + align - 1) / align);
}

}  // namespace audio
