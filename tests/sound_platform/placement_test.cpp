// When sounds are heard: to the sample.
#include "sound_platform/sound_fixture.h"

namespace {

// Every frame of it has a value of its own.
std::vector<int16_t> Ramp(int frames, int from = 1) {
    std::vector<int16_t> samples;
    for (int i = 0; i < frames; ++i) {
        samples.push_back(static_cast<int16_t>(from + i));
        samples.push_back(static_cast<int16_t>(-from - i));
    }
    return samples;
}

const WAVEFORMATEX kStereo = Pcm(2, 44100, 16);

TEST_F(SoundTest, StartsInTheFrameOfTheClock) {
    IDirectSoundBuffer* sound = Make(kStereo, Ramp(1000));
    // Microseconds since the origin; 100 ms apart, the sound ends within 23.
    const uint64_t times[] = {0, 100003, 200011, 300017, 412345, 500001, 623456, 700022, 801234};
    uint64_t at = 0;
    for (const uint64_t time : times) {
        Wait(time - at);
        at = time;
        ASSERT_EQ(sound->Play(0, 0, 0), DS_OK);
    }
    Wait(50000);
    for (const uint64_t time : times) {
        const auto frame = static_cast<int64_t>(time * 44100 / 1000000);
        EXPECT_EQ(frame, headless::SoundFrame(headless::kClockOrigin + time * 1000));
        EXPECT_EQ(Heard16(frame - 1, 0), 0);
        for (int i = 0; i < 1000; ++i) {
            ASSERT_EQ(Heard16(frame + i, 0), 1 + i) << time;
            ASSERT_EQ(Heard16(frame + i, 1), -1 - i);
        }
        EXPECT_EQ(Heard16(frame + 1000, 0), 0);
    }
    EXPECT_EQ(Status(sound), 0u);
    EXPECT_EQ(Position(sound), 0u);
}

}  // namespace
