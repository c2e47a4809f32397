// Sounds to encode and a way to drive the decoder, shared by the XA tests.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "sound/xadec.h"
#include "xa/encoder.h"

namespace xatest {

using Samples = std::vector<int16_t>;
using Bytes = std::vector<uint8_t>;

// A falling tone on each side and a drum of noise on every half second: peaks near full scale.
inline Samples Music(int frames, int channels, int rate) {
    std::mt19937 random(7);
    Samples out;
    for (int i = 0; i < frames; ++i) {
        const double t = static_cast<double>(i) / rate, beat = std::fmod(t, 0.5);
        const double drum = 0.4 * (static_cast<double>(random()) / 2147483648.0 - 1.0) * std::exp(-beat * 30);
        for (int c = 0; c < channels; ++c)
            out.push_back(
                static_cast<int16_t>(28000 * (drum + 0.5 * std::sin((2500 - 900 * beat) * (t + c)))));
    }
    return out;
}

class Decoder {
public:
    explicit Decoder(const Bytes& file) : handle_(xaDecodeOpen(file.data(), &format)) {}
    ~Decoder() { xaDecodeClose(handle_); }
    Decoder(const Decoder&) = delete;
    Decoder& operator=(const Decoder&) = delete;
    void* get() const { return handle_; }
    // One call on copies of exactly these sizes, so that a sanitizer sees every byte beyond them.
    bool Convert(const uint8_t* source, size_t source_size, size_t room, Bytes* out, size_t* used) {
        Bytes in(source, source + source_size), to(room);
        XaConvertBlock block = {in.data(), static_cast<DWORD>(in.size()), 0,
                                to.data(), static_cast<DWORD>(to.size()), 0};
        const bool good = xaDecodeConvert(handle_, &block) != 0;
        EXPECT_LE(block.nSrcUsed, in.size());
        EXPECT_LE(block.nDstUsed, to.size());
        EXPECT_EQ(block.nDstUsed % format.nBlockAlign, 0u);
        out->insert(out->end(), to.begin(), to.begin() + block.nDstUsed);
        *used = block.nSrcUsed;
        return good;
    }
    WAVEFORMATEX format = {};

private:
    void* handle_;
};

inline Bytes DataOf(const Bytes& file) {
    return Bytes(file.begin() + XA_HEADER_SIZE, file.end());
}

// All of a file in one call.
inline Bytes DecodeWhole(const Bytes& file) {
    Decoder decoder(file);
    Bytes data = DataOf(file), out;
    DWORD size = 0;
    EXPECT_NE(xaDecodeSize(decoder.get(), static_cast<DWORD>(data.size()), &size), 0);
    size_t used = 0;
    EXPECT_TRUE(decoder.Convert(data.data(), data.size(), size, &out, &used));
    EXPECT_EQ(used, data.size());
    EXPECT_EQ(out.size(), size);
    return out;
}

inline Samples ToSamples(const Bytes& pcm) {
    Samples out(pcm.size() / 2);
    if (!out.empty()) std::memcpy(out.data(), pcm.data(), out.size() * 2);
    return out;
}

// In decibels.
inline double SignalToNoise(const Samples& a, const Samples& b) {
    double signal = 0, noise = 1e-9;
    for (size_t i = 0; i < a.size() && i < b.size(); ++i) {
        signal += std::pow(a[i], 2);
        noise += std::pow(a[i] - b[i], 2);
    }
    return 10 * std::log10(signal / noise);
}

}  // namespace xatest
