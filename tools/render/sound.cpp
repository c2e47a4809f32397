#include "render/sound.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace render {
namespace {

constexpr double kMostWavSeconds = 24300;  // 4 GiB hold a little more

int16_t ToSample(float f) {
    return static_cast<int16_t>(std::lrintf(std::clamp(f * 32768.0f, -32768.0f, 32767.0f)));
}

}  // namespace

ExitCode WavSink::Begin(double seconds) {
    if (seconds > kMostWavSeconds) {
        char text[160];
        std::snprintf(text, sizeof text,
                      "the chart lasts %d h %02d min, and a WAV file holds 6 h 45 min; select measures with "
                      "--from and --to",
                      static_cast<int>(seconds / 3600), static_cast<int>(seconds / 60) % 60);
        return Complain(kOutput, text);
    }
    return Result(fd_ < 0 ? wav_.Open(name_, 2, kRate) : wav_.OpenDescriptor(fd_, 2, kRate));
}

ExitCode WavSink::OnSound(const float* samples, int frames) {
    int16_t block[2048];
    for (size_t left = 2 * static_cast<size_t>(frames); left > 0;) {
        const size_t count = std::min(left, std::size(block));
        std::transform(samples, samples + count, block, ToSample);
        if (!wav_.Write(block, count)) return Result(false);
        samples += count;
        left -= count;
    }
    return kGood;
}

ExitCode WavSink::Finish() {
    return Result(wav_.Commit());
}

}  // namespace render
