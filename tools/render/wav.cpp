#include "render/wav.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

#include "render/pass.h"

namespace render {
namespace {

constexpr uint32_t kRate = 44100, kFrameBytes = 4, kHeaderBytes = 44;
constexpr uint32_t kMostData = 0xFFFFFFFFu - kHeaderBytes;

void Put(uint8_t*& at, uint32_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) *at++ = static_cast<uint8_t>(value >> (8 * i));
}

int16_t ToSample(float f) {
    return static_cast<int16_t>(std::lrintf(std::clamp(f * 32768.0f, -32768.0f, 32767.0f)));
}

}  // namespace

bool WavWriter::WriteHeader(uint32_t data_bytes, bool again) {
    uint8_t header[kHeaderBytes];
    uint8_t* at = header;
    const auto text = [&at](const char* four) { at = std::copy_n(four, 4, at); };
    text("RIFF");
    Put(at, data_bytes + kHeaderBytes - 8, 4);
    text("WAVE");
    text("fmt ");
    Put(at, 16, 4);
    Put(at, 1, 2);
    Put(at, 2, 2);
    Put(at, kRate, 4);
    Put(at, kRate * kFrameBytes, 4);
    Put(at, kFrameBytes, 2);
    Put(at, 16, 2);
    text("data");
    Put(at, data_bytes, 4);
    return again ? out_.Rewrite(header, sizeof header) : out_.Write(header, sizeof header);
}

bool WavWriter::Open(const std::string& name) {
    return out_.Open(name) && WriteHeader(kMostData & ~(kFrameBytes - 1), false);
}

bool WavWriter::Write(const float* samples, int frames) {
    int16_t block[2048];
    for (int64_t left = int64_t{frames} * 2; left > 0;) {
        const int64_t count = std::min<int64_t>(left, std::size(block));
        std::transform(samples, samples + count, block, ToSample);
        // Little-endian files.
        if constexpr (std::endian::native == std::endian::big) {
            for (int64_t i = 0; i < count; ++i)
                block[i] = static_cast<int16_t>((block[i] & 0xFF) << 8 | ((block[i] >> 8) & 0xFF));
        }
        if (!out_.Write(block, static_cast<size_t>(count) * 2)) return false;
        samples += count;
        left -= count;
        bytes_ += static_cast<uint64_t>(count) * 2;
    }
    if (bytes_ <= kMostData) return true;
    Complain(kOutput, "the sound is longer than a WAV file can hold; choose measures by --from and --to");
    return false;
}

bool WavWriter::Commit() {
    if (out_.seekable() && !WriteHeader(static_cast<uint32_t>(bytes_), true)) return false;
    return out_.Commit();
}

}  // namespace render
