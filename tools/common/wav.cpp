#include "common/wav.h"

#include <algorithm>
#include <bit>

namespace tools {
namespace {

constexpr uint32_t kHeaderBytes = 44, kMostData = 0xFFFFFFFFu - kHeaderBytes;

void Put(uint8_t*& at, uint32_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) *at++ = static_cast<uint8_t>(value >> (8 * i));
}

}  // namespace

bool WavWriter::WriteHeader(uint32_t data_bytes) {
    const uint32_t frame_bytes = 2 * static_cast<uint32_t>(channels_);
    uint8_t header[kHeaderBytes];
    uint8_t* at = header;
    const auto text = [&at](const char* four) { at = std::copy_n(four, 4, at); };
    text("RIFF");
    Put(at, data_bytes + kHeaderBytes - 8, 4);
    text("WAVE");
    text("fmt ");
    Put(at, 16, 4);
    Put(at, 1, 2);  // PCM
    Put(at, static_cast<uint32_t>(channels_), 2);
    Put(at, rate_, 4);
    Put(at, rate_ * frame_bytes, 4);
    Put(at, frame_bytes, 2);
    Put(at, 16, 2);
    text("data");
    Put(at, data_bytes, 4);
    return out_.Write(header, sizeof header);
}

bool WavWriter::Begin(int channels, uint32_t rate) {
    channels_ = channels;
    rate_ = rate;
    return WriteHeader(kMostData / 4 * 4);
}

bool WavWriter::Open(const std::string& name, int channels, uint32_t rate) {
    return out_.Open(name) && Begin(channels, rate);
}

bool WavWriter::OpenDescriptor(int fd, int channels, uint32_t rate) {
    out_.OpenDescriptor(fd);
    return Begin(channels, rate);
}

bool WavWriter::Count(uint64_t bytes) {
    bytes_ += bytes;
    if (bytes_ > kMostData) error_ = "the sound is longer than a WAV file can hold";
    return error_.empty();
}

bool WavWriter::WriteSilence(size_t count) {
    silence_ += 2 * uint64_t{count};
    return Count(2 * uint64_t{count});
}

bool WavWriter::EndSilence() {
    const uint64_t bytes = silence_;
    silence_ = 0;
    return bytes == 0 || out_.WriteZeros(bytes);
}

bool WavWriter::Write(const int16_t* samples, size_t count) {
    if (!Count(2 * uint64_t{count}) || !EndSilence()) return false;
    if constexpr (std::endian::native == std::endian::little) return out_.Write(samples, count * 2);
    for (size_t i = 0; i < count; ++i) {
        const auto sample = static_cast<uint16_t>(samples[i]);
        const uint8_t bytes[2] = {static_cast<uint8_t>(sample), static_cast<uint8_t>(sample >> 8)};
        if (!out_.Write(bytes, 2)) return false;
    }
    return true;
}

bool WavWriter::Commit() {
    if (!EndSilence()) return false;
    const bool mended = !out_.seekable() || (out_.Seek(0) && WriteHeader(static_cast<uint32_t>(bytes_)));
    return mended && out_.Commit();
}

}  // namespace tools
