// The desktop host's output end to end: SDL writes what it is given to a file, and sounds lie in it at the
// distances at which they were started.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <vector>

#include "host/host.h"
#include "platform/sound/directsound.h"

namespace {

constexpr int kRate = 44100;

std::vector<float> ReadLeft(const char* path) {
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> bytes((std::istreambuf_iterator<char>(file)), {});
    std::vector<float> left(bytes.size() / 8);
    for (size_t i = 0; i < left.size(); ++i) std::memcpy(&left[i], bytes.data() + 8 * i, 4);
    return left;
}

// A single loud sample, then silence.
IDirectSoundBuffer* MakeClick(IDirectSound* device) {
    const WAVEFORMATEX wfx = {WAVE_FORMAT_PCM, 2, kRate, kRate * 4, 4, 16, 0};
    const DSBUFFERDESC desc = {sizeof desc, DSBCAPS_STATIC, 400, 0, &wfx};
    IDirectSoundBuffer* click = nullptr;
    EXPECT_EQ(device->CreateSoundBuffer(&desc, &click, nullptr), DS_OK);
    void* data = nullptr;
    DWORD bytes = 0;
    EXPECT_EQ(click->Lock(0, 0, &data, &bytes, nullptr, nullptr, DSBLOCK_ENTIREBUFFER), DS_OK);
    const int16_t frame[2] = {16384, 16384};
    std::memcpy(data, frame, sizeof frame);
    EXPECT_EQ(click->Unlock(data, bytes, nullptr, 0), DS_OK);
    return click;
}

TEST(DesktopSound, StartsKeepTheirDistances) {
    const std::string path = testing::TempDir() + "lumetra_sound.raw";
    std::remove(path.c_str());
    setenv("SDL_AUDIODRIVER", "disk", 1);
    setenv("SDL_DISKAUDIOFILE", path.c_str(), 1);
    IDirectSound* device = nullptr;
    ASSERT_EQ(DirectSoundCreate(nullptr, &device, nullptr), DS_OK);
    IDirectSoundBuffer* click = MakeClick(device);
    host::SleepMilliseconds(500);  // the device opens beside the program
    std::vector<double> times;
    for (int i = 0; i < 60; ++i) {
        host::SleepMilliseconds(23);
        times.push_back(static_cast<double>(host::Nanoseconds()) * 1e-9);
        ASSERT_EQ(click->SetCurrentPosition(0), DS_OK);
        ASSERT_EQ(click->Play(0, 0, 0), DS_OK);
    }
    host::SleepMilliseconds(300);
    DWORD status = 9;
    EXPECT_EQ(click->GetStatus(&status), DS_OK);
    EXPECT_EQ(status, 0u);
    click->Release();
    device->Release();
    EXPECT_TRUE(host::Shutdown());  // the file is complete

    std::vector<double> onsets;
    const std::vector<float> left = ReadLeft(path.c_str());
    for (size_t i = 0; i < left.size(); ++i) {
        if (left[i] == 0) continue;
        ASSERT_EQ(left[i], 0.5f);
        onsets.push_back(static_cast<double>(i) / kRate);
    }
    std::remove(path.c_str());
    ASSERT_EQ(onsets.size(), times.size());
    for (size_t i = 0; i < onsets.size(); ++i)
        EXPECT_NEAR(onsets[i] - onsets[0], times[i] - times[0], 1e-3) << i;
}

}  // namespace
