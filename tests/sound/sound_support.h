// A sound device on the headless host, sound files of all kinds, and what is in a sound's buffer.
#pragma once

#include <gtest/gtest.h>
#include <sndfile.h>

#include <cmath>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "host/headless/headless.h"
#include "host/headless/sound.h"
#include "platform/directsound_test.h"
#include "sound/dsbuffer.h"
#include "sound/faults.h"
#include "support/media.h"
#include "support/tempfolder.h"
#include "xa/encoder.h"

namespace soundtest {

using Samples = std::vector<int16_t>;

constexpr HRESULT kFailed = E_FAIL;  // logged as HRESULT->UnknownError

// Tones that wander, with noise: no two stretches are alike, and the mixer's limiter stays out of it.
inline Samples Music(int frames, int channels, int rate, uint32_t seed = 1) {
    Samples samples;
    samples.reserve(static_cast<size_t>(frames) * static_cast<size_t>(channels));
    uint32_t noise = seed * 2654435761u + 1;
    for (int i = 0; i < frames; ++i) {
        const double t = static_cast<double>(i) / rate;
        for (int c = 0; c < channels; ++c) {
            noise = noise * 1664525u + 1013904223u;
            const double tone = std::sin(t * (1400 + 300 * c + 200 * std::sin(0.7 * t)) * (1 + 0.01 * seed));
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
    std::string extension;  // with its length in front
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

// A WAV file with a codec of the library, and its samples as the library itself reads them.
struct CodedWav {
    std::string file;
    Samples samples;
};

inline std::string ReadAll(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

inline CodedWav Encode(const std::string& path, int subtype, const Samples& samples, int channels, int rate,
                       int container = SF_FORMAT_WAV) {
    SF_INFO info = {};
    info.samplerate = rate;
    info.channels = channels;
    info.format = container | subtype;
    SNDFILE* out = sf_open(path.c_str(), SFM_WRITE, &info);
    EXPECT_NE(out, nullptr) << sf_strerror(nullptr);
    if (out == nullptr) return {};
    sf_write_short(out, samples.data(), static_cast<sf_count_t>(samples.size()));
    sf_close(out);
    CodedWav coded;
    coded.file = ReadAll(path);
    SF_INFO in_info = {};
    SNDFILE* in = sf_open(path.c_str(), SFM_READ, &in_info);
    EXPECT_NE(in, nullptr);
    if (in == nullptr) return coded;
    coded.samples.resize(static_cast<size_t>(in_info.frames) * static_cast<size_t>(channels));
    sf_read_short(in, coded.samples.data(), static_cast<sf_count_t>(coded.samples.size()));
    sf_close(in);
    return coded;
}

class SoundTest : public testing::Test {
protected:
    void SetUp() override {
        headless::Reset();
        directsound_test::FailNothing();
        faults::FailNothing();
        OpenDevice(44100, 2);
    }

    void TearDown() override {
        m_sound.reset();
        if (m_primary != nullptr) m_primary->Release();
        if (m_device != nullptr) m_device->Release();
        EXPECT_EQ(directsound_test::LiveBuffers(), 0);
        EXPECT_EQ(directsound_test::LiveDevices(), 0);
    }

    void OpenDevice(int rate, int channels) {
        if (m_primary != nullptr) m_primary->Release();
        if (m_device != nullptr) m_device->Release();
        ASSERT_EQ(DirectSoundCreate(nullptr, &m_device, nullptr), DS_OK);
        ASSERT_EQ(m_device->SetCooperativeLevel(nullptr, DSSCL_PRIORITY), DS_OK);
        DSBUFFERDESC desc = {};
        desc.dwSize = sizeof(desc);
        desc.dwFlags = DSBCAPS_PRIMARYBUFFER;
        ASSERT_EQ(m_device->CreateSoundBuffer(&desc, &m_primary, nullptr), DS_OK);
        WAVEFORMATEX wfx = {WAVE_FORMAT_PCM,
                            static_cast<WORD>(channels),
                            static_cast<DWORD>(rate),
                            static_cast<DWORD>(rate * channels * 2),
                            static_cast<WORD>(channels * 2),
                            16,
                            0};
        ASSERT_EQ(m_primary->SetFormat(&wfx), DS_OK);
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

    static std::string Contents(IDirectSoundBuffer* buffer) {
        void* part = nullptr;
        DWORD bytes = 0;
        if (buffer->Lock(0, 1, &part, &bytes, nullptr, nullptr, DSBLOCK_ENTIREBUFFER) != DS_OK)
            return "(locked)";
        std::string text(static_cast<const char*>(part), bytes);
        buffer->Unlock(part, bytes, nullptr, 0);
        return text;
    }

    static Samples ContentSamples(IDirectSoundBuffer* buffer) {
        const std::string bytes = Contents(buffer);
        Samples samples(bytes.size() / 2);
        std::memcpy(samples.data(), bytes.data(), samples.size() * 2);
        return samples;
    }

    test::TempFolder m_folder;
    IDirectSound* m_device = nullptr;
    IDirectSoundBuffer* m_primary = nullptr;
    std::unique_ptr<CDSBuffer> m_sound;
};

}  // namespace soundtest
