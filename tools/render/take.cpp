#include "render/take.h"

#include <ebur128.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

#include "common/output.h"

namespace render {
namespace {

constexpr int64_t kBlock = 8192;           // frames
constexpr int64_t kFrameBytes = 8;         // two floats
constexpr float kSilence = 0.001f;         // -60 dB
constexpr double kMostPeak = 0.891250938;  // -1 dBTP

struct Span {
    int64_t first, last;
};

bool FindSound(const Take& take, Span* span) {
    int64_t at = 0, first = -1, last = 0;
    const bool good = take.Read(0, take.frames(), [&](const float* samples, int64_t frames) {
        for (int64_t i = 0; i < frames; ++i, ++at) {
            if (std::max(std::fabs(samples[2 * i]), std::fabs(samples[2 * i + 1])) < kSilence) continue;
            if (first < 0) first = at;
            last = at + 1;
        }
        return true;
    });
    *span = {std::max<int64_t>(first, 0), last};
    return good;
}

// Linear ramps at both ends.
bool ReadFaded(const Take& take, const Span& span, const Treatment& treatment,
               const Take::Receiver& receiver) {
    int64_t at = 0;
    const int64_t length = span.last - span.first;
    const auto ramp = [](int64_t done, int64_t whole) {
        return whole > done ? static_cast<float>(done) / static_cast<float>(whole) : 1.0f;
    };
    return take.Read(span.first, span.last, [&](float* samples, int64_t frames) {
        for (int64_t i = 0; i < frames; ++i, ++at) {
            const float gain = ramp(at, treatment.fade_in) * ramp(length - 1 - at, treatment.fade_out);
            samples[2 * i] *= gain;
            samples[2 * i + 1] *= gain;
        }
        return receiver(samples, frames);
    });
}

struct Level {
    double loudness, peak;
};

bool Measure(const Take& take, const Span& span, const Treatment& treatment, Level* level) {
    const auto destroy = [](ebur128_state* state) { ebur128_destroy(&state); };
    const std::unique_ptr<ebur128_state, decltype(destroy)> state(
        ebur128_init(2, 44100, EBUR128_MODE_I | EBUR128_MODE_TRUE_PEAK), destroy);
    if (!state) return false;
    const bool good = ReadFaded(take, span, treatment, [&state](float* samples, int64_t frames) {
        return ebur128_add_frames_float(state.get(), samples, static_cast<size_t>(frames)) == EBUR128_SUCCESS;
    });
    double left = 0, right = 0;
    ebur128_loudness_global(state.get(), &level->loudness);
    ebur128_true_peak(state.get(), 0, &left);
    ebur128_true_peak(state.get(), 1, &right);
    level->peak = std::max(left, right);
    return good;
}

}  // namespace

Take::Take() : fd_(tools::OpenScratchFile()) {}

Take::~Take() {
    if (fd_ >= 0) close(fd_);
}

bool Take::Add(const float* samples, int64_t frames) {
    const auto bytes = static_cast<ssize_t>(frames * kFrameBytes);
    if (pwrite(fd_, samples, static_cast<size_t>(bytes), frames_ * kFrameBytes) != bytes) return false;
    frames_ += frames;
    return true;
}

bool Take::Read(int64_t first, int64_t last, const Receiver& receiver) const {
    std::vector<float> block(2 * kBlock);
    for (int64_t at = first; at < last; at += kBlock) {
        const int64_t frames = std::min(kBlock, last - at);
        const auto bytes = static_cast<ssize_t>(frames * kFrameBytes);
        if (pread(fd_, block.data(), static_cast<size_t>(bytes), at * kFrameBytes) != bytes) return false;
        if (!receiver(block.data(), frames)) return false;
    }
    return true;
}

bool Treat(const Take& take, const Treatment& treatment, const Take::Receiver& receiver,
           TreatmentResult* result) {
    Span span = {0, take.frames()};
    if (treatment.trim && !FindSound(take, &span)) return false;
    float gain = 1;
    if (treatment.loudness) {
        Level level = {};
        if (!Measure(take, span, treatment, &level)) return false;
        // Silence has no loudness and stays as it is.
        if (std::isfinite(level.loudness)) {
            double factor = std::pow(10, (*treatment.loudness - level.loudness) / 20);
            result->held_by_peak = factor * level.peak > kMostPeak;
            if (result->held_by_peak) factor = kMostPeak / level.peak;
            result->loudness = level.loudness + 20 * std::log10(factor);
            gain = static_cast<float>(factor);
        }
    }
    return ReadFaded(take, span, treatment, [&receiver, gain](float* samples, int64_t frames) {
        if (gain != 1)
            std::for_each(samples, samples + 2 * frames, [gain](float& sample) { sample *= gain; });
        return receiver(samples, frames);
    });
}

}  // namespace render
