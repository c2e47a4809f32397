#include "render/sound.h"

#include <algorithm>
#include <cmath>

namespace render {
namespace {

int16_t ToSample(float f) {
    return static_cast<int16_t>(std::lrintf(std::clamp(f * 32768.0f, -32768.0f, 32767.0f)));
}

}  // namespace

ExitCode WavSink::Begin(double) {
    return Result(fd_ < 0 ? wav_.Open(name_, 2, kRate) : wav_.OpenDescriptor(fd_, 2, kRate));
}

ExitCode WavSink::OnSound(const float* samples, int frames) {
    const auto is_silent = [](float sample) { return sample == 0.0f; };
    if (std::all_of(samples, samples + 2 * static_cast<size_t>(frames), is_silent))
        return Result(wav_.WriteSilence(2 * static_cast<size_t>(frames)));
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
