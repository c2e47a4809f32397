// A sound device on the headless host, sound files of all kinds, and what is in a sound's buffer.
#pragma once

#include <gtest/gtest.h>
#include <sndfile.h>

#include <cmath>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "packages/encode.h"
#include "sound/dsbuffer.h"
#include "sound_platform/sound_fixture.h"
#include "support/calls.h"
#include "support/media.h"
#include "support/tempfolder.h"
#include "xa/encoder.h"

namespace soundtest {

using test::Call;

using Samples = std::vector<int16_t>;

constexpr HRESULT kFailed = E_FAIL;  // logged as HRESULT->UnknownError

// Tones that wander, with noise: no two stretches are alike, and the mixer's limiter stays out of it.
inline Samples Music(int frames, int channels, int rate) {
    Samples samples;
    samples.reserve(static_cast<size_t>(frames) * static_cast<size_t>(channels));
    uint32_t noise = 1;
    for (int i = 0; i < frames; ++i) {
        const double t = static_cast<double>(i) / rate;
        for (int c = 0; c < channels; ++c) {
            noise = noise * 1664525u + 1013904223u;
            const double tone = std::sin(t * (1400 + 300 * c + 200 * std::sin(0.7 * t)));
            samples.push_back(static_cast<int16_t>(9000 * tone + static_cast<int>(noise >> 22) - 512));
        }
    }
    return samples;
}

inline std::string Chunk(const std::string& name, const std::string& data) {
    return name + test::LittleEndian(data.size(), 4) + data + std::string(data.size() & 1, '\0');
}

inline std::string Riff(const std::string& chunks) {
    return "RIFF" + test::LittleEndian(4 + chunks.size(), 4) + "WAVE" + chunks;
}

struct Format {
    int tag = 1, channels = 1, rate = 44100, average = -1, align = -1, bits = 16;
    std::string extension = {};  // with its length in front
};

inline std::string FormatBlock(const Format& f) {
    const int align = f.align >= 0 ? f.align : f.channels * f.bits / 8;
    const auto number = [](int64_t n, int bytes) {
        return test::LittleEndian(static_cast<uint64_t>(n), bytes);
    };
    return number(f.tag, 2) + number(f.channels, 2) + number(f.rate, 4) +
           number(f.average >= 0 ? f.average : int64_t{f.rate} * align, 4) + number(align, 2) +
           number(f.bits, 2) + f.extension;
}

inline std::string WavOf(const Format& format, const std::string& data) {
    return Riff(Chunk("fmt ", FormatBlock(format)) + Chunk("data", data));
}

inline std::string Bytes(const Samples& samples) {
    return std::string(reinterpret_cast<const char*>(samples.data()), samples.size() * 2);
}

// A file with a codec of the library, and its samples as the library itself reads them.
struct CodedFile {
    std::string file;
    Samples samples;
};

inline CodedFile Encode(int subtype, const Samples& samples, int channels, int rate,
                        int container = SF_FORMAT_WAV) {
    const std::string file = test::Encode({rate, channels, samples}, container | subtype);
    return {file, test::Decode(file).samples};
}

inline std::string XaFile(const Samples& samples, int channels, int rate, xa::Mode mode = xa::Mode::kFine) {
    const std::vector<uint8_t> file = xa::Encode(samples, channels, static_cast<uint32_t>(rate), mode);
    return {file.begin(), file.end()};
}

// To be called in front of what shall fail.
using Failure = std::function<void()>;

inline Failure Fail(Call call, int64_t result, int skip = 0, int times = 1) {
    return [=] { test::Order(call, result, skip, times); };
}
inline Failure Both(const Failure& first, const Failure& second) {
    return [=] { first(), second(); };
}

class SoundTest : public ::SoundTest {
protected:
    void TearDown() override {
        test::ForgetCalls();
        m_sound.reset();
        ::SoundTest::TearDown();
    }

    // A new sound with that file's bytes. Its load has not begun.
    CDSBuffer* Make(const std::string& bytes, const std::string& name = "s.wav") {
        m_sound = std::make_unique<CDSBuffer>(m_device);
        m_sound->SetFileName(m_folder.Write(name, bytes).c_str());
        return m_sound.get();
    }

    // The log of what `action` does.
    template <class Action>
    static std::string LogOf(Action action) {
        const size_t before = headless::Log().size();
        action();
        return headless::Log().substr(before);
    }

    // The parts that the sound holds.
    static std::string Held(const CDSBuffer& sound) {
        std::string held;
        if (sound.m_hFile != nullptr) held += "file ";
        if (sound.m_pSrcFormat != nullptr) held += "format ";
        if (sound.m_pSrc != nullptr) held += "source ";
        if (sound.m_pDst != nullptr) held += "pcm ";
        if (sound.m_hAcm != nullptr) held += "converter ";
        if (sound.m_pDSB != nullptr) held += "buffer ";
        return held;
    }

    static Samples ContentSamples(IDirectSoundBuffer* buffer) {
        const std::string bytes = Contents(buffer);
        Samples samples(bytes.size() / 2);
        std::memcpy(samples.data(), bytes.data(), samples.size() * 2);
        return samples;
    }

    test::TempFolder m_folder;
    std::unique_ptr<CDSBuffer> m_sound;
};

}  // namespace soundtest
