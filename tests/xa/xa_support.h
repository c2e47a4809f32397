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

// Plucked chords with falling partials, a bass and a drum of noise on every half second: peaks near full
// scale.
inline Samples Music(int frames, int channels, int rate) {
    static const double kChords[4][3] = {
        {220, 261.63, 329.63}, {174.61, 220, 261.63}, {196, 246.94, 293.66}, {164.81, 207.65, 246.94}};
    std::mt19937 random(7);
    Samples out(static_cast<size_t>(frames) * channels);
    double noise = 0;
    for (int i = 0; i < frames; ++i) {
        double t = static_cast<double>(i) / rate;
        double beat = std::fmod(t, 0.5);
        noise = 0.6 * noise + 0.4 * (static_cast<double>(random()) / 2147483648.0 - 1.0);
        double drum = 0.5 * noise * std::exp(-beat * 30);
        const double* chord = kChords[static_cast<int>(t) % 4];
        for (int c = 0; c < channels; ++c) {
            double sum = 0.25 * std::sin(2 * M_PI * chord[0] / 4 * t) + drum;
            for (int n = 0; n < 3; ++n) {
                double frequency = chord[n] * (c == 0 ? 1.0 : 1.003);
                for (int k = 1; k <= 6; ++k) {
                    if (frequency * k * 2 < rate)
                        sum +=
                            0.12 / (k * k) * std::exp(-beat * 2 * k) * std::sin(2 * M_PI * frequency * k * t);
                }
            }
            out[static_cast<size_t>(i) * channels + c] = static_cast<int16_t>(std::lround(sum * 28000));
        }
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
        Bytes in(source, source + source_size);
        Bytes to(room);
        XaConvertBlock block = {};
        block.pSrc = in.data();
        block.nSrcLen = static_cast<DWORD>(in.size());
        block.pDst = to.data();
        block.nDstBufLen = static_cast<DWORD>(to.size());
        bool good = xaDecodeConvert(handle_, &block) != 0;
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
    Bytes data = DataOf(file);
    DWORD size = 0;
    EXPECT_NE(xaDecodeSize(decoder.get(), static_cast<DWORD>(data.size()), &size), 0);
    Bytes out;
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
    double signal = 0, noise = 0;
    for (size_t i = 0; i < a.size() && i < b.size(); ++i) {
        signal += static_cast<double>(a[i]) * a[i];
        noise += (static_cast<double>(a[i]) - b[i]) * (static_cast<double>(a[i]) - b[i]);
    }
    return noise == 0 ? 200 : 10 * std::log10(signal / noise);
}

}  // namespace xatest
