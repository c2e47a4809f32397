// A device at 44,100 Hz stereo, buffers of any format, and what was heard of them.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "host/headless/headless.h"
#include "host/headless/sound.h"
#include "platform/sound/directsound.h"
#include "support/calls.h"

inline WAVEFORMATEX Pcm(int channels, int rate, int bits, WORD tag = WAVE_FORMAT_PCM) {
    WAVEFORMATEX wfx = {};
    wfx.wFormatTag = tag;
    wfx.nChannels = static_cast<WORD>(channels);
    wfx.nSamplesPerSec = static_cast<DWORD>(rate);
    wfx.wBitsPerSample = static_cast<WORD>(bits);
    wfx.nBlockAlign = static_cast<WORD>(channels * bits / 8);
    wfx.nAvgBytesPerSec = wfx.nSamplesPerSec * wfx.nBlockAlign;
    return wfx;
}

constexpr DWORD kSoundFlags = DSBCAPS_GETCURRENTPOSITION2 | DSBCAPS_GLOBALFOCUS | DSBCAPS_CTRLVOLUME |
                              DSBCAPS_CTRLPAN | DSBCAPS_LOCSOFTWARE | DSBCAPS_STATIC;

inline DSBUFFERDESC Describe(const WAVEFORMATEX* wfx, DWORD bytes, DWORD flags = kSoundFlags) {
    return {sizeof(DSBUFFERDESC), flags, bytes, 0, wfx};
}

inline std::string Contents(IDirectSoundBuffer* buffer) {
    void* part = nullptr;
    DWORD bytes = 0;
    EXPECT_EQ(buffer->Lock(0, 1, &part, &bytes, nullptr, nullptr, DSBLOCK_ENTIREBUFFER), DS_OK);
    const std::string text(static_cast<const char*>(part), bytes);
    buffer->Unlock(part, bytes, nullptr, 0);
    return text;
}

class SoundTest : public testing::Test {
protected:
    void SetUp() override {
        headless::Reset();
        test::ForgetCalls();
        ASSERT_EQ(DirectSoundCreate(nullptr, &m_device, nullptr), DS_OK);
        ASSERT_EQ(m_device->SetCooperativeLevel(nullptr, DSSCL_PRIORITY), DS_OK);
    }

    void TearDown() override {
        for (IDirectSoundBuffer* buffer : m_buffers) EXPECT_EQ(buffer->Release(), 0u);
        if (m_device != nullptr) {
            EXPECT_EQ(m_device->Release(), 0u);
        }
        EXPECT_EQ(test::LiveBuffers(), 0);
        EXPECT_FALSE(headless::SoundIsOpen());  // so no device is left
    }

    // Buffers are released by the test's end.
    IDirectSoundBuffer* Make(const WAVEFORMATEX& wfx, DWORD bytes) { return Make(Describe(&wfx, bytes)); }
    IDirectSoundBuffer* MakePrimary() { return Make(Describe(nullptr, 0, DSBCAPS_PRIMARYBUFFER)); }
    IDirectSoundBuffer* Make(const DSBUFFERDESC& desc) {
        IDirectSoundBuffer* buffer = nullptr;
        EXPECT_EQ(m_device->CreateSoundBuffer(&desc, &buffer, nullptr), DS_OK);
        if (buffer != nullptr) m_buffers.push_back(buffer);
        return buffer;
    }

    template <class Sample>
    IDirectSoundBuffer* Make(const WAVEFORMATEX& wfx, const std::vector<Sample>& samples) {
        IDirectSoundBuffer* buffer = Make(wfx, static_cast<DWORD>(samples.size() * sizeof(Sample)));
        if (buffer != nullptr) Write(buffer, 0, samples);
        return buffer;
    }

    template <class Sample>
    static void Write(IDirectSoundBuffer* buffer, DWORD offset, const std::vector<Sample>& samples) {
        void* part[2];
        DWORD bytes[2];
        const auto size = static_cast<DWORD>(samples.size() * sizeof(Sample));
        ASSERT_EQ(buffer->Lock(offset, size, &part[0], &bytes[0], &part[1], &bytes[1], 0), DS_OK);
        std::memcpy(part[0], samples.data(), bytes[0]);
        if (part[1] != nullptr)
            std::memcpy(part[1], reinterpret_cast<const char*>(samples.data()) + bytes[0], bytes[1]);
        ASSERT_EQ(buffer->Unlock(part[0], bytes[0], part[1], bytes[1]), DS_OK);
    }

    static DWORD Status(IDirectSoundBuffer* buffer) {
        DWORD status = 0;
        EXPECT_EQ(buffer->GetStatus(&status), DS_OK);
        return status;
    }

    static DWORD Position(IDirectSoundBuffer* buffer) {
        DWORD play = 0;
        EXPECT_EQ(buffer->GetCurrentPosition(&play, nullptr), DS_OK);
        return play;
    }

    static void Wait(uint64_t microseconds) { headless::AdvanceClock(microseconds * 1000); }

    // To the reading at which that many frames of the output have passed since the clock's origin.
    static void WaitUntilFrame(int64_t frame) {
        const auto rate = static_cast<uint64_t>(headless::SoundRate());
        const auto n = static_cast<uint64_t>(frame);
        headless::SetClock(headless::kClockOrigin + n / rate * 1'000'000'000 +
                           (n % rate * 1'000'000'000 + rate - 1) / rate);
    }

    static int Heard16(int64_t frame, int channel) {
        return static_cast<int>(headless::Sound().At(frame, channel) * 32768.0f);
    }

    IDirectSound* m_device = nullptr;
    std::vector<IDirectSoundBuffer*> m_buffers;
};
