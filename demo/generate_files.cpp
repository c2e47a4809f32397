// Sound files: PCM of 16 and 8 bits, IMA ADPCM, and XA.
#include <algorithm>
#include <span>

#include "generate.h"
#include "generate_math.h"
#include "xa/encoder.h"

namespace demo {
namespace {

void Put(Bytes* out, uint32_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) out->push_back(static_cast<uint8_t>(value >> (8 * i)));
}

void PutTag(Bytes* out, const char* tag) {
    out->insert(out->end(), tag, tag + 4);
}

std::vector<int16_t> ToSamples(const Wave& wave) {
    std::vector<int16_t> out;
    for (double x : wave.samples) out.push_back(static_cast<int16_t>(Floor(Clamp(x, -1, 1) * 32767 + 0.5)));
    return out;
}

Bytes Riff(const Bytes& format, const Bytes& fact, const Bytes& data) {
    Bytes out;
    PutTag(&out, "RIFF");
    size_t size =
        4 + 8 + format.size() + (fact.empty() ? 0 : 8 + fact.size()) + 8 + data.size() + data.size() % 2;
    Put(&out, static_cast<uint32_t>(size), 4);
    PutTag(&out, "WAVE");
    auto chunk = [&out](const char* tag, const Bytes& body) {
        PutTag(&out, tag);
        Put(&out, static_cast<uint32_t>(body.size()), 4);
        out.insert(out.end(), body.begin(), body.end());
        if (body.size() % 2) out.push_back(0);
    };
    chunk("fmt ", format);
    if (!fact.empty()) chunk("fact", fact);
    chunk("data", data);
    return out;
}

Bytes FormatChunk(int tag, const Wave& wave, int bytes_per_second, int align, int bits) {
    Bytes out;
    Put(&out, static_cast<uint32_t>(tag), 2);
    Put(&out, static_cast<uint32_t>(wave.channels), 2);
    Put(&out, static_cast<uint32_t>(wave.rate), 4);
    Put(&out, static_cast<uint32_t>(bytes_per_second), 4);
    Put(&out, static_cast<uint32_t>(align), 2);
    Put(&out, static_cast<uint32_t>(bits), 2);
    return out;
}

Bytes Pcm(const Wave& wave, int bits) {
    Bytes data;
    Random dither(17);
    for (double x : wave.samples) {
        if (bits == 8) {
            double noise = (dither.Unit() + dither.Unit() - 1) * 0.5;
            data.push_back(static_cast<uint8_t>(Clamp(Floor(x * 127 + 128.5 + noise), 0, 255)));
        } else {
            Put(&data, static_cast<uint16_t>(static_cast<int16_t>(Floor(Clamp(x, -1, 1) * 32767 + 0.5))), 2);
        }
    }
    int align = wave.channels * bits / 8;
    return Riff(FormatChunk(1, wave, wave.rate * align, align, bits), {}, data);
}

constexpr int kImaSteps[89] = {
    7,    8,     9,     10,    11,    12,    13,    14,    16,    17,    19,    21,    23,    25,   28,
    31,   34,    37,    41,    45,    50,    55,    60,    66,    73,    80,    88,    97,    107,  118,
    130,  143,   157,   173,   190,   209,   230,   253,   279,   307,   337,   371,   408,   449,  494,
    544,  598,   658,   724,   796,   876,   963,   1060,  1166,  1282,  1411,  1552,  1707,  1878, 2066,
    2272, 2499,  2749,  3024,  3327,  3660,  4026,  4428,  4871,  5358,  5894,  6484,  7132,  7845, 8630,
    9493, 10442, 11487, 12635, 13899, 15289, 16818, 18500, 20350, 22385, 24623, 27086, 29794, 32767};
constexpr int kImaMoves[8] = {-1, -1, -1, -1, 2, 4, 6, 8};

struct ImaState {
    int sample = 0, index = 0;
};

int ImaCode(ImaState* state, int target) {
    int step = kImaSteps[state->index], rest = target - state->sample, code = 0;
    if (rest < 0) {
        code = 8;
        rest = -rest;
    }
    int moved = step >> 3;
    for (int bit = 4, part = step; bit > 0; bit >>= 1, part >>= 1) {
        if (rest < part) continue;
        code |= bit;
        rest -= part;
        moved += part;
    }
    state->sample = std::clamp(state->sample + (code & 8 ? -moved : moved), -32768, 32767);
    state->index = std::clamp(state->index + kImaMoves[code & 7], 0, 88);
    return code;
}

// Blocks of 512 bytes a channel: a head of 4 bytes with the first sample, then 8 codes of each channel in
// turn.
Bytes Ima(const Wave& wave) {
    const int channels = wave.channels, align = 512 * channels, per_block = (512 - 4) * 2 + 1;
    std::vector<int16_t> in = ToSamples(wave);
    const uint32_t frames = static_cast<uint32_t>(in.size() / channels);
    std::vector<ImaState> states(channels);
    Bytes data;
    for (uint32_t at = 0; at < frames; at += per_block) {
        auto sample = [&](int i, int c) { return in[std::min(at + i, frames - 1) * channels + c]; };
        for (int c = 0; c < channels; ++c) {
            states[c].sample = sample(0, c);
            Put(&data, static_cast<uint16_t>(states[c].sample), 2);
            Put(&data, static_cast<uint32_t>(states[c].index), 2);
        }
        for (int i = 1; i < per_block; i += 8) {
            for (int c = 0; c < channels; ++c) {
                for (int k = 0; k < 8; k += 2) {
                    int low = ImaCode(&states[c], sample(i + k, c));
                    data.push_back(
                        static_cast<uint8_t>(low | ImaCode(&states[c], sample(i + k + 1, c)) << 4));
                }
            }
        }
    }
    Bytes format = FormatChunk(17, wave, wave.rate * align / per_block, align, 4), fact;
    Put(&format, 2, 2);
    Put(&format, per_block, 2);
    Put(&fact, frames, 4);
    return Riff(format, fact, data);
}

}  // namespace

Bytes SoundFile(const Wave& wave, Format format) {
    switch (format) {
        case Format::kPcm16:
            return Pcm(wave, 16);
        case Format::kPcm8:
            return Pcm(wave, 8);
        case Format::kIma:
            return Ima(wave);
        case Format::kXaFine:
        case Format::kXaFast:
            break;
    }
    xa::Mode mode = format == Format::kXaFine ? xa::Mode::kFine : xa::Mode::kFast;
    return xa::Encode(ToSamples(wave), wave.channels, static_cast<uint32_t>(wave.rate), mode);
}

}  // namespace demo
