#include "platform/sound/resampler.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <map>
#include <mutex>
#include <numbers>
#include <numeric>
#include <tuple>

#include "platform/sound/format.h"

namespace audio {
namespace {

constexpr int kTapsUp = 96;     // twice the zero crossings on each side
constexpr int kTapsDown = 128;  // the same, in output samples
constexpr double kBeta = 9.2;   // Kaiser; about 92 dB, by 0.1102 (A - 8.7)
constexpr double kAttenuation = 92.0;
constexpr uint32_t kMaxPhases = 512;
constexpr uint32_t kMaxCoefficients = 1 << 16;  // of a table with one row per phase
constexpr uint32_t kInterpolatedPhases = 512;   // of an interpolated table: error below -100 dB

// The modified Bessel function of order 0, from its power series.
double Bessel0(double x) {
    double sum = 1, term = 1;
    for (int k = 1; k < 60; ++k) {
        term *= (x / (2 * k)) * (x / (2 * k));
        sum += term;
    }
    return sum;
}

double Sinc(double x) {
    if (x == std::floor(x)) return x == 0 ? 1.0 : 0.0;
    return std::sin(std::numbers::pi * x) / (std::numbers::pi * x);
}

bool IsDownsampling(Step step) {
    return step.numerator > step.denominator;
}

// Source frames per output frame. For an interpolated table, rounded up to one of 32 steps per octave, so
// that files with many different rates share few tables.
double Ratio(Step step, bool coarse) {
    const double ratio = static_cast<double>(step.numerator) / step.denominator;
    return coarse ? std::exp2(std::ceil(std::log2(ratio) * 32 - 1e-9) / 32) : ratio;
}

int TapsFor(double ratio) {
    return (static_cast<int>(std::ceil(kTapsDown * ratio)) + 7) / 8 * 8;
}

bool NeedsInterpolation(Step step) {
    const int taps = IsDownsampling(step) ? TapsFor(Ratio(step, false)) : kTapsUp;
    return step.denominator > kMaxPhases || step.denominator * static_cast<uint32_t>(taps) > kMaxCoefficients;
}

}  // namespace

Step MakeStep(int source_rate, int output_rate) {
    const int g = std::gcd(source_rate, output_rate);
    return {static_cast<uint32_t>(source_rate / g), static_cast<uint32_t>(output_rate / g)};
}

Position Advance(Position position, Step step, int64_t output_frames) {
    const uint64_t total = position.fraction + static_cast<uint64_t>(output_frames) * step.numerator;
    position.frame += static_cast<int64_t>(total / step.denominator);
    position.fraction = static_cast<uint32_t>(total % step.denominator);
    return position;
}

int64_t FramesUntil(Position position, Step step, int64_t end) {
    if (position.frame >= end) return 0;
    const uint64_t parts = static_cast<uint64_t>(end - position.frame) * step.denominator - position.fraction;
    return static_cast<int64_t>((parts + step.numerator - 1) / step.numerator);
}

Filter::Filter(Step step) : m_interpolated(NeedsInterpolation(step)) {
    m_phases = m_interpolated ? kInterpolatedPhases : step.denominator;
    double cutoff = 1;
    m_taps = kTapsUp;
    if (IsDownsampling(step)) {
        const double ratio = Ratio(step, m_interpolated);
        m_taps = TapsFor(ratio);
        const double transition = (kAttenuation - 8) / (2.285 * std::numbers::pi * m_taps);  // Nyquist = 1
        cutoff = 1 / ratio - transition / 2;
    }
    MakePhases(cutoff);
}

void Filter::MakePhases(double cutoff) {
    const uint32_t rows = m_phases + (m_interpolated ? 1 : 0);
    m_table.resize(size_t{rows} * static_cast<size_t>(m_taps));
    const double half = m_taps / 2, scale = 1 / Bessel0(kBeta);
    std::vector<double> row(static_cast<size_t>(m_taps));
    for (uint32_t r = 0; r < rows; ++r) {
        double sum = 0;
        for (int j = 0; j < m_taps; ++j) {
            const double x = j - Before() - static_cast<double>(r) / m_phases, u = x / half;
            const double window = std::abs(u) >= 1 ? 0 : Bessel0(kBeta * std::sqrt(1 - u * u)) * scale;
            sum += row[static_cast<size_t>(j)] = Sinc(cutoff * x) * window;
        }
        float* out = m_table.data() + size_t{r} * static_cast<size_t>(m_taps);
        for (double h : row) *out++ = static_cast<float>(h / sum);  // every row has unity gain at 0 Hz
    }
}

size_t Filter::InputLength(uint32_t fraction, Step step, size_t count) const {
    const uint64_t last = fraction + uint64_t{count - 1} * step.numerator;
    return static_cast<size_t>(last / step.denominator) + static_cast<size_t>(m_taps);
}

size_t Filter::MaxInputLength(int output_rate, size_t count) {
    const double ratio = std::max(1.0, static_cast<double>(kMaxRate) / output_rate) * std::exp2(1.0 / 16);
    return static_cast<size_t>(std::ceil(static_cast<double>(count) * ratio)) + 8 +
           static_cast<size_t>(std::max(TapsFor(ratio), kTapsUp));
}

// Interpolates linearly between two rows.
float Filter::Interpolate(const float* in, uint32_t fraction, uint32_t denominator) const {
    const Kernels& kernels = BestKernels();
    const double at = static_cast<double>(fraction) * m_phases / denominator;
    const auto row = static_cast<uint32_t>(at);
    const auto weight = static_cast<float>(at - row);
    const float* h = m_table.data() + size_t{row} * static_cast<size_t>(m_taps);
    const float a = kernels.dot(in, h, m_taps), b = kernels.dot(in, h + m_taps, m_taps);
    return a + (b - a) * weight;
}

// A whole number of outputs per input: convolves the input with each row in one run.
void Filter::RunIntegerRatio(const float* in, uint32_t fraction, Step step, size_t count, float* out,
                             float* scratch) const {
    const Kernels& kernels = BestKernels();
    const uint32_t rows = step.denominator;
    const size_t each = (fraction + count - 1) / rows + 1;
    if (rows == 2) {
        // Row 0 is a single 1, which is the source itself.
        kernels.convolve(in, m_table.data() + m_taps, m_taps, scratch, each);
        if (fraction == 0) {
            kernels.interleave(in + Before(), scratch, out, each);
        } else {
            out[0] = scratch[0];
            kernels.interleave(in + Before() + 1, scratch + 1, out + 1, each - 1);
        }
        return;
    }
    for (uint32_t r = 0; r < rows; ++r) {
        kernels.convolve(in, m_table.data() + size_t{r} * static_cast<size_t>(m_taps), m_taps, scratch, each);
        for (size_t k = r < fraction ? 1 : 0, at = k * rows + r - fraction; at < count; ++k, at += rows)
            out[at] = scratch[k];
    }
}

void Filter::Run(const float* in, uint32_t fraction, Step step, size_t count, float* out,
                 float* scratch) const {
    if (step.numerator == 1 && !m_interpolated && step.denominator <= 8)
        return RunIntegerRatio(in, fraction, step, count, out, scratch);
    const Kernels& kernels = BestKernels();
    for (size_t i = 0; i < count; ++i) {
        out[i] =
            m_interpolated
                ? Interpolate(in, fraction, step.denominator)
                : kernels.dot(in, m_table.data() + size_t{fraction} * static_cast<size_t>(m_taps), m_taps);
        const uint64_t total = uint64_t{fraction} + step.numerator;
        in += total / step.denominator;
        fraction = static_cast<uint32_t>(total % step.denominator);
    }
}

std::shared_ptr<const Filter> FilterFor(int source_rate, int output_rate) {
    if (source_rate == output_rate) return nullptr;
    const Step step = MakeStep(source_rate, output_rate);
    const bool interpolated = NeedsInterpolation(step);
    const double ratio = IsDownsampling(step) ? Ratio(step, interpolated) : 1;
    static std::mutex lock;
    static std::map<std::tuple<double, uint32_t>, std::weak_ptr<const Filter>> filters;
    const std::lock_guard<std::mutex> hold(lock);
    std::erase_if(filters, [](const auto& entry) { return entry.second.expired(); });
    auto& shared = filters[{ratio, interpolated ? 0 : step.denominator}];
    auto filter = shared.lock();
    if (!filter) shared = filter = std::make_shared<const Filter>(step);
    return filter;
}

}  // namespace audio
