// Writes sound files: 16-bit and 8-bit PCM, and XA.
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
    for (int i = 0; i < 4; ++i) out->push_back(static_cast<uint8_t>(tag[i]));
}

std::vector<int16_t> ToSamples(const Wave& wave) {
    std::vector<int16_t> out;
    for (double x : wave.samples) out.push_back(static_cast<int16_t>(Floor(Clamp(x, -1, 1) * 32767 + 0.5)));
    return out;
}

Bytes Riff(const Bytes& format, const Bytes& data) {
    Bytes out;
    PutTag(&out, "RIFF");
    size_t size = 4 + 8 + format.size() + 8 + data.size() + data.size() % 2;
    Put(&out, static_cast<uint32_t>(size), 4);
    PutTag(&out, "WAVE");
    auto chunk = [&out](const char* tag, const Bytes& body) {
        PutTag(&out, tag);
        Put(&out, static_cast<uint32_t>(body.size()), 4);
        out.insert(out.end(), body.begin(), body.end());
        if (body.size() % 2) out.push_back(0);
    };
    chunk("fmt ", format);
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
    return Riff(FormatChunk(1, wave, wave.rate * align, align, bits), data);
}

}  // namespace

Bytes SoundFile(const Wave& wave, Format format) {
    switch (format) {
        case Format::kPcm16:
            return Pcm(wave, 16);
        case Format::kPcm8:
            return Pcm(wave, 8);
        case Format::kXaFine:
        case Format::kXaFast:
            break;
    }
    xa::Mode mode = format == Format::kXaFine ? xa::Mode::kFine : xa::Mode::kFast;
    return xa::Encode(ToSamples(wave), wave.channels, static_cast<uint32_t>(wave.rate), mode);
}

}  // namespace demo
