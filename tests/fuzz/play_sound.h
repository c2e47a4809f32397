// Takes any bytes as a sound file: loads it whole and as a stream, plays it, and services it for a few laps.
#pragma once

#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "sound/dsbuffer.h"
#include "sound/dsound.h"
#include "support/calls.h"

namespace fuzz {

struct SoundFile {
    std::string path =
        (std::filesystem::temp_directory_path() / ("lumetra-sound-" + std::to_string(getpid()))).string();
    ~SoundFile() { std::filesystem::remove(path); }
    void Write(const uint8_t* data, size_t size) const {
        std::ofstream(path, std::ios::binary)
            .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    }
};

// Puts the cursor once into each half, which is where refills are due.
inline void Serve(CDSBuffer* sound, int refills) {
    for (int i = 0; i < refills && sound->m_pDSB != nullptr; ++i) {
        const DWORD place = i % 2 == 0 ? sound->m_nBufSize / 8 * 5 : sound->m_nBufSize / 4;
        sound->m_pDSB->SetCurrentPosition(place);
        sound->StreamPlay();
        if (sound->m_bStream == 1 && sound->m_nWritePos >= sound->m_nBufSize) std::abort();
    }
}

// One of the calls from kLock on, once, after up to seven that go their way.
inline void FailOne(uint8_t choice) {
    constexpr auto kFirst = static_cast<int>(test::Call::kLock), kAll = static_cast<int>(test::Call::kCount);
    auto call = static_cast<test::Call>(kFirst + choice % (kAll - kFirst));
    if (call == test::Call::kBufferRelease) call = test::Call::kCreateSoundBuffer;
    const bool handle = call >= test::Call::kXaOpen;  // null is its failure
    test::Order(call, handle ? 0 : call == test::Call::kMmioRead ? -1 : E_FAIL, choice / 32);
}

// For a process that does nothing else. Never closed: the host may be gone before a static object is
// destroyed.
inline CDSound& Device() {
    static CDSound& device = *new CDSound;
    if (device.m_pDS == nullptr && device.Init(nullptr, 1) != 0) std::abort();
    return device;
}

inline void PlaySound(CDSound& device, const uint8_t* data, size_t size) {
    static const SoundFile file;
    file.Write(data, size);
    for (int loop = -1; loop <= 3; ++loop) {  // -1: whole. From 2 on one call fails, chosen by the last byte
        CDSBuffer sound(device.m_pDS);
        if (loop >= 2) FailOne(size > 0 ? data[size - 1] : 0);
        sound.SetFileName(file.path.c_str());
        sound.SetStreamSeconds(0);
        sound.m_bLoop = loop == 1;
        const int result = sound.Load(loop >= 0 && loop != 2);
        if (result == 0 && sound.m_pDSB == nullptr) std::abort();
        sound.Play();
        Serve(&sound, 4);
        sound.Rewind();
        Serve(&sound, 1);
        test::ForgetCalls();
    }
}

}  // namespace fuzz
