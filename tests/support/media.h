// Small sounds and pictures, as bytes of their files.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "support/bmp_writer.h"

namespace test {

inline std::string LittleEndian(uint64_t value, int bytes) {
    std::string text;
    for (int i = 0; i < bytes; ++i) text += static_cast<char>(value >> (8 * i));
    return text;
}

// The number of that many bytes, the lowest first.
inline uint32_t Number(const std::string& bytes, size_t at, int count) {
    uint32_t n = 0;
    for (int i = count; i-- > 0;) n = n << 8 | static_cast<unsigned char>(bytes[at + static_cast<size_t>(i)]);
    return n;
}

struct WavSpec {
    int channels = 1;
    int rate = 44100;
    int bits = 16;  // 8 or 16
};

// PCM; samples interleaved, -32768 to 32767 for either width.
inline std::string Wav(const std::vector<int16_t>& samples, const WavSpec& spec = {}) {
    std::string data;
    for (const int16_t sample : samples) {
        if (spec.bits == 8)
            data += static_cast<char>((sample >> 8) + 128);
        else
            data += LittleEndian(static_cast<uint16_t>(sample), 2);
    }
    const auto frame = static_cast<uint64_t>(spec.channels * spec.bits / 8),
               rate = static_cast<uint64_t>(spec.rate);
    const std::string format = LittleEndian(1, 2) + LittleEndian(static_cast<uint64_t>(spec.channels), 2) +
                               LittleEndian(rate, 4) + LittleEndian(rate * frame, 4) +
                               LittleEndian(frame, 2) + LittleEndian(static_cast<uint64_t>(spec.bits), 2);
    const std::string body = "WAVEfmt " + LittleEndian(format.size(), 4) + format + "data" +
                             LittleEndian(data.size(), 4) + data + std::string(data.size() & 1, '\0');
    return "RIFF" + LittleEndian(body.size(), 4) + body;
}

// A square wave of that many frames on all channels, at half of full scale.
inline std::string SquareWav(int frames, int half_period = 50, const WavSpec& spec = {}) {
    std::vector<int16_t> samples;
    for (int i = 0; i < frames; ++i) {
        const int16_t value = i / half_period % 2 ? -16384 : 16384;
        samples.insert(samples.end(), static_cast<size_t>(spec.channels), value);
    }
    return Wav(samples, spec);
}

// 24 bits; color gives 0xRRGGBB of x, y from the top left.
inline std::string Bmp(int width, int height, const PixelValue& color) {
    std::string file = MakeBmp({width, height}, color);
    return file.replace(2, 12, LittleEndian(file.size(), 4) + LittleEndian(0, 4) + LittleEndian(54, 4));
}

inline std::string Bmp(int width, int height, uint32_t color) {
    return Bmp(width, height, [color](int, int) { return color; });
}

// Lines of a chart with the line ends that it needs.
inline std::string Chart(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) text += line + "\r\n";
    return text;
}

}  // namespace test
