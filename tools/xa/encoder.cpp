#include "xa/encoder.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>

#include "sound/xadec.h"
#include "sound/xaformat.h"

namespace xa {
namespace {

using BlockSamples = std::array<int32_t, XA_BLOCK_FRAMES>;

struct History {
    int32_t last = 0;
    int32_t before = 0;
};

// One way to encode a channel's part of a block, and its result.
struct Trial {
    int filter = 0;
    int range = 0;
    int64_t error = INT64_MAX;  // sum of squares
    History history;
    std::array<int16_t, XA_BLOCK_FRAMES> codes{};
};

// How many filters are tried in full, and how many ranges below and above the one that just holds the largest
// residual. Coarse codes gain by clipping a lone peak; fine ones hardly ever do.
struct Effort {
    int filters;
    int below;
    int above;
};
constexpr Effort kFastEffort = {10, 10, 2};
constexpr Effort kFineEffort = {8, 3, 1};

struct Residual {
    int filter;
    int32_t peak;
    int64_t energy;
};

// The residual of a filter when the previous samples are known exactly.
Residual Measure(int filter, const BlockSamples& in, int count, History history) {
    Residual residual = {filter, 0, 0};
    for (int i = 0; i < count; ++i) {
        int32_t rest = in[i] - XaPredict(XA_FILTER[filter], history.last, history.before);
        residual.peak = std::max(residual.peak, std::abs(rest));
        residual.energy += static_cast<int64_t>(rest) * rest;
        history = {in[i], history.last};
    }
    return residual;
}

int32_t Quantise(int32_t rest, int32_t scale, int32_t lowest) {
    int32_t twice = 2 * scale;
    int32_t sum = rest * 16 + scale;
    int32_t code = sum >= 0 ? sum / twice : -((-sum + twice - 1) / twice);
    return std::clamp(code, lowest, -lowest - 1);
}

// Encodes the block with the trial's filter and range. Stops early when the error exceeds the limit.
void Run(Trial* trial, const BlockSamples& in, int count, int bits, History history, int64_t limit) {
    const int32_t lowest = -(1 << (bits - 1));
    const int32_t scale = XaScale(trial->range);
    int64_t error = 0;
    for (int i = 0; i < count && error < limit; ++i) {
        int32_t prediction = XaPredict(XA_FILTER[trial->filter], history.last, history.before);
        int32_t code = Quantise(in[i] - prediction, scale, lowest);
        int32_t sample = XaClamp(prediction + XaResidual(code, scale));
        error += static_cast<int64_t>(in[i] - sample) * (in[i] - sample);
        trial->codes[i] = static_cast<int16_t>(code);
        history = {sample, history.last};
    }
    trial->error = error;
    trial->history = history;
}

// The smallest range whose largest code reaches this residual.
int RangeFor(int32_t peak, int bits) {
    int32_t largest = (1 << (bits - 1)) - 1;
    int range = 0;
    while (range < XA_RANGES - 1 && XaResidual(largest, XaScale(range)) < peak) ++range;
    return range;
}

Trial Choose(const BlockSamples& in, int count, int bits, History history) {
    std::array<Residual, XA_FILTERS> residuals;
    for (int f = 0; f < XA_FILTERS; ++f) residuals[f] = Measure(f, in, count, history);
    const Effort effort = bits == XA_BITS_FAST ? kFastEffort : kFineEffort;
    std::partial_sort(residuals.begin(), residuals.begin() + effort.filters, residuals.end(),
                      [](const Residual& a, const Residual& b) {
                          return a.energy != b.energy ? a.energy < b.energy : a.filter < b.filter;
                      });
    Trial best;
    for (int f = 0; f < effort.filters; ++f) {
        int centre = RangeFor(residuals[f].peak, bits);
        int from = std::max(0, centre - effort.below);
        int to = std::min(XA_RANGES - 1, centre + effort.above);
        for (int range = to; range >= from; --range) {
            Trial trial;
            trial.filter = residuals[f].filter;
            trial.range = range;
            Run(&trial, in, count, bits, history, best.error);
            if (trial.error < best.error) best = trial;
        }
    }
    return best;
}

void Put32(uint8_t* at, uint64_t value) {
    for (int i = 0; i < 4; ++i) at[i] = static_cast<uint8_t>(value >> (8 * i));
}

uint64_t DataBytes(int channels, int bits, uint64_t frames) {
    uint64_t bytes = frames / XA_BLOCK_FRAMES * XaBlockBytes(channels, bits, XA_BLOCK_FRAMES);
    int rest = static_cast<int>(frames % XA_BLOCK_FRAMES);
    return rest == 0 ? bytes : bytes + static_cast<uint64_t>(XaBlockBytes(channels, bits, rest));
}

void PutHeader(uint8_t* header, int channels, uint32_t rate, int bits, uint64_t frames) {
    std::memcpy(header, XA_MAGIC, sizeof XA_MAGIC);
    Put32(header + XA_AT_DATA_BYTES, DataBytes(channels, bits, frames));
    Put32(header + XA_AT_FRAMES, frames);
    header[XA_AT_VERSION] = XA_VERSION;
    header[XA_AT_BITS] = static_cast<uint8_t>(bits);
    header[XA_AT_BLOCK_FRAMES] = XA_BLOCK_FRAMES;
    header[XA_AT_CHANNELS] = static_cast<uint8_t>(channels);
    Put32(header + XA_AT_RATE, rate);
}

// Writes one block of all channels. The bytes of the codes must be 0.
void PutBlock(uint8_t* block, const Trial* trials, int channels, int bits, int count) {
    for (int c = 0; c < channels; ++c) {
        block[c * XA_PARAM_BYTES] = static_cast<uint8_t>(trials[c].filter);
        block[c * XA_PARAM_BYTES + 1] = static_cast<uint8_t>(trials[c].range);
    }
    uint8_t* codes = block + channels * XA_PARAM_BYTES;
    for (int i = 0; i < count * channels; ++i) {
        uint32_t code = static_cast<uint32_t>(trials[i % channels].codes[i / channels]) & ((1u << bits) - 1);
        int bit = i * bits;
        code <<= bit % 8;
        codes[bit / 8] |= static_cast<uint8_t>(code);
        if (code > 0xFF) codes[bit / 8 + 1] |= static_cast<uint8_t>(code >> 8);
    }
}

}  // namespace

const char* Refusal(int channels, uint32_t rate, uint64_t frames) {
    if (channels < 1 || channels > XA_MAX_CHANNELS) return "an XA sound has 1 or 2 channels";
    if (rate < XA_MIN_RATE || rate > XA_MAX_RATE) return "an XA sound's rate is 100 to 200000 Hz";
    if (frames > XA_MAX_PCM / (2 * static_cast<uint64_t>(channels)))
        return "an XA sound has at most 2 GB of PCM";
    return nullptr;
}

std::vector<uint8_t> Encode(std::span<const int16_t> samples, int channels, uint32_t rate, Mode mode) {
    const uint64_t frames = channels > 0 ? samples.size() / static_cast<size_t>(channels) : 0;
    if (Refusal(channels, rate, frames)) return {};
    const int bits = mode == Mode::kFine ? XA_BITS_FINE : XA_BITS_FAST;
    std::vector<uint8_t> file(XA_HEADER_SIZE + DataBytes(channels, bits, frames));
    PutHeader(file.data(), channels, rate, bits, frames);
    uint8_t* block = file.data() + XA_HEADER_SIZE;
    std::array<History, XA_MAX_CHANNELS> histories;
    std::array<Trial, XA_MAX_CHANNELS> trials;
    for (uint64_t at = 0; at < frames; at += XA_BLOCK_FRAMES) {
        int count = static_cast<int>(std::min<uint64_t>(XA_BLOCK_FRAMES, frames - at));
        for (int c = 0; c < channels; ++c) {
            BlockSamples in{};
            for (int i = 0; i < count; ++i) in[i] = samples[(at + i) * channels + c];
            trials[c] = Choose(in, count, bits, histories[c]);
            histories[c] = trials[c].history;
        }
        PutBlock(block, trials.data(), channels, bits, count);
        block += XaBlockBytes(channels, bits, count);
    }
    return file;
}

}  // namespace xa
