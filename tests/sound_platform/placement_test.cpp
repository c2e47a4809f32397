// When sounds are heard: to the sample.
#include <algorithm>
#include <cmath>
#include <numbers>

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

// A sound that is known to end in silence against one that is not, begun at many places of a block.
TEST_F(SoundTest, KnownSilenceChangesNoSample) {
    std::vector<int16_t> samples(3000);
    std::fill_n(samples.begin(), 1001, int16_t{9999});
    const WAVEFORMATEX converted = Pcm(1, 22050, 16);
    IDirectSoundBuffer *known = Make(converted, samples), *loop = Make(converted, samples);
    samples.back() = 1;
    IDirectSoundBuffer* unknown = Make(converted, samples);
    constexpr int kApart = 8192, kTimes = 40;
    const auto begin = [](int i) { return i * kApart + i / 2 * 50; };
    for (int i = 0; i < kTimes; ++i) {
        WaitUntilFrame(begin(i));
        ASSERT_EQ((i % 2 ? known : unknown)->Play(0, 0, 0), DS_OK);
    }
    WaitUntilFrame(begin(kTimes));
    loop->Play(0, 0, DSBPLAY_LOOPING);
    Wait(500'000);
    const auto heard = [](int64_t frame) { return headless::Sound().At(frame, 0); };
    for (int i = 0; i < kTimes; i += 2) {
        for (int n = 0; n < 5000; ++n)
            ASSERT_EQ(heard(begin(i) + n), heard(begin(i + 1) + n)) << i << " " << n;
    }
    EXPECT_GT(Heard16(begin(kTimes) + 2 * 3000 + 1, 0), 9000) << "the second lap";
}

// The device mixes blocks some time after the clock has passed them. A sound that ends in that gap has ended:
// if it counted as playing, a pause would stop it at its beginning and the resume would play it again.
TEST_F(SoundTest, APauseAroundTheEndNeverRepeatsTheSound) {
    IDirectSoundBuffer* sound = Make(kStereo, Ramp(1000));
    headless::LagSound(384, 1'000'000);
    constexpr uint64_t kPeriod = 100'003;  // us
    for (uint64_t i = 0; i < 300; ++i) {
        headless::SetClock(headless::kClockOrigin + i * kPeriod * 1000);
        ASSERT_EQ(sound->Play(0, 0, 0), DS_OK);
        Wait(15'000 + i * 100);
        const bool paused = (Status(sound) & DSBSTATUS_PLAYING) != 0;
        ASSERT_EQ(sound->Stop(), DS_OK);
        Wait(10'000);
        EXPECT_EQ(paused ? sound->Play(0, 0, 0) : DS_OK, DS_OK);
    }
    Wait(500'000);
    int begun = 0, ended = 0;
    for (int64_t frame = 0; frame < headless::Sound().End(); ++frame) {
        begun += Heard16(frame, 0) == 1;
        ended += Heard16(frame, 0) == 1000;
    }
    EXPECT_EQ(begun, 300);
    EXPECT_EQ(ended, 300);
}

// Catching up with a device moves what starts, never what sounds.
TEST_F(SoundTest, SoundingVoicesPlayOnWhileBlocksCatchUp) {
    IDirectSoundBuffer* sound = Make(kStereo, Ramp(4000));
    IDirectSoundBuffer* late = Make(kStereo, Ramp(100, 10'000));
    headless::LagSound(384, 1'000'000, 30);
    ASSERT_EQ(sound->Play(0, 0, 0), DS_OK);
    Wait(200'000);
    for (int i = 0; i < 4000; ++i) ASSERT_EQ(Heard16(i, 0), 1 + i);
    for (uint64_t i = 1; i <= 40; ++i) {  // wherever it starts, also between two blocks
        headless::SetClock(headless::kClockOrigin + 200'000'000 + i * 20'300'000);
        ASSERT_EQ(late->Play(0, 0, 0), DS_OK);
    }
    Wait(200'000);
    int begun = 0;
    for (int64_t frame = 0; frame < headless::Sound().End(); ++frame) begun += Heard16(frame, 0) == 10'000;
    EXPECT_EQ(begun, 40);
}

// A chord of all slots, each cut off and started anew: reading the clock for each order moves nothing.
TEST_F(SoundTest, AChordOfAllSlotsStartsInOneFrame) {
    constexpr int kVoices = 576;
    for (int i = 0; i < kVoices; ++i) Make(kStereo, std::vector<int16_t>{16, 16});
    WaitUntilFrame(100);
    const uint64_t before = headless::Clock();
    for (IDirectSoundBuffer* sound : m_buffers) {
        ASSERT_EQ(sound->Stop(), DS_OK);
        ASSERT_EQ(sound->SetCurrentPosition(0), DS_OK);
        ASSERT_EQ(sound->Play(0, 0, 0), DS_OK);
    }
    EXPECT_EQ(headless::Clock(), before);
    WaitUntilFrame(10000);
    for (int64_t frame = 0; frame < 10000; ++frame)
        ASSERT_EQ(Heard16(frame, 0), frame == 100 ? 16 * kVoices : 0) << frame;
}

// What is heard of a ramp between two frames: its values in order.
void ExpectRamp(int64_t frame, int count, int from) {
    for (int i = 0; i < count; ++i) {
        const float left = headless::Sound().At(frame + i, 0);
        ASSERT_EQ(left, static_cast<float>(from + i) / 32768) << "frame " << frame + i;
    }
}

// Nothing is lost or repeated; a voice that is converted stops between two of its own samples and goes on
// there.
TEST_F(SoundTest, PauseAndResume) {
    std::vector<int16_t> samples;
    for (int i = 0; i < 8000; ++i) samples.push_back(static_cast<int16_t>((i * 7919) % 20011 - 10000));
    for (const int rate : {44100, 22050, 48000, 44101}) {
        headless::Reset();
        IDirectSoundBuffer* sound = Make(Pcm(1, rate, 16), samples);
        ASSERT_EQ(sound->Play(0, 0, 0), DS_OK);
        WaitUntilFrame(5000);
        const headless::SoundCapture whole = headless::Sound();
        ASSERT_EQ(sound->Stop(), DS_OK);
        ASSERT_EQ(sound->SetCurrentPosition(0), DS_OK);
        WaitUntilFrame(6000);
        ASSERT_EQ(sound->Play(0, 0, 0), DS_OK);
        WaitUntilFrame(7333);
        ASSERT_EQ(sound->Stop(), DS_OK);
        EXPECT_EQ(Status(sound), 0u);
        EXPECT_EQ(Position(sound), static_cast<DWORD>(1333 * rate / 44100) * 2);
        WaitUntilFrame(9001);
        EXPECT_EQ(Position(sound), static_cast<DWORD>(1333 * rate / 44100) * 2);
        ASSERT_EQ(sound->Play(0, 0, 0), DS_OK);
        WaitUntilFrame(12000);
        for (int i = 0; i < 1333; ++i)
            ASSERT_NEAR(headless::Sound().At(6000 + i, 0), whole.At(i, 0), 1e-6) << rate;
        for (int i = 1333; i < 4000; ++i)
            ASSERT_NEAR(headless::Sound().At(9001 - 1333 + i, 0), whole.At(i, 0), 1e-6) << rate << " " << i;
        EXPECT_EQ(headless::Sound().At(8000, 0), 0.0f);
        ASSERT_EQ(sound->Stop(), DS_OK);
    }
}

TEST_F(SoundTest, LoopsJoinWithoutAGap) {
    IDirectSoundBuffer* sound = Make(kStereo, Ramp(700));
    ASSERT_EQ(sound->Play(0, 0, DSBPLAY_LOOPING), DS_OK);
    WaitUntilFrame(5000);
    EXPECT_EQ(Status(sound), DSBSTATUS_PLAYING | DSBSTATUS_LOOPING);
    EXPECT_EQ(Position(sound), 5000u % 700 * 4);
    for (int lap = 0; lap < 7; ++lap) ExpectRamp(lap * 700, 700, 1);
    // Played once from now on: it ends at the end of this lap.
    ASSERT_EQ(sound->Play(0, 0, 0), DS_OK);
    WaitUntilFrame(7000);
    ExpectRamp(4900, 700, 1);
    EXPECT_EQ(Heard16(5600, 0), 0);
    EXPECT_EQ(Status(sound), 0u);
}

// A tone whose period is that of the loop stays a tone across the joint, also when it is converted.
TEST_F(SoundTest, ConvertedLoopsJoinToo) {
    std::vector<int16_t> samples;
    for (int i = 0; i < 2205; ++i)
        samples.push_back(
            static_cast<int16_t>(std::lround(16000 * std::sin(2 * std::numbers::pi * i / 22.05))));
    IDirectSoundBuffer* sound = Make(Pcm(1, 22050, 16), samples);
    ASSERT_EQ(sound->Play(0, 0, DSBPLAY_LOOPING), DS_OK);
    WaitUntilFrame(20000);
    for (int i = 200; i < 20000; ++i)
        ASSERT_NEAR(headless::Sound().At(i, 0), 16000.0 / 32768 * std::sin(2 * std::numbers::pi * i / 44.1),
                    1e-4)
            << i;
}

TEST_F(SoundTest, CursorsFollowTheClock) {
    for (const int rate : {44100, 22050, 48000, 11025, 96000}) {
        headless::Reset();
        IDirectSoundBuffer* sound = Make(Pcm(1, rate, 16), static_cast<DWORD>(4 * rate));
        ASSERT_EQ(sound->Play(0, 0, 0), DS_OK);
        for (const int64_t frame : {1, 500, 44100, 60001}) {
            WaitUntilFrame(frame);
            const auto place = static_cast<DWORD>(frame * rate / 44100);
            DWORD play = 0, write = 0;
            ASSERT_EQ(sound->GetCurrentPosition(&play, &write), DS_OK);
            EXPECT_EQ(play, place * 2) << rate;
            EXPECT_EQ(write, (place + static_cast<DWORD>(rate) / 100) * 2) << rate;
        }
        WaitUntilFrame(88200);
        EXPECT_EQ(Status(sound), 0u) << rate;
        EXPECT_EQ(Position(sound), 0u) << rate;
    }
}

TEST_F(SoundTest, SeekingWhilePlayingMovesAtOnce) {
    IDirectSoundBuffer* sound = Make(kStereo, Ramp(3000));
    ASSERT_EQ(sound->Play(0, 0, 0), DS_OK);
    WaitUntilFrame(500);
    ASSERT_EQ(sound->SetCurrentPosition(2000 * 4), DS_OK);
    EXPECT_EQ(Position(sound), 2000u * 4);
    WaitUntilFrame(2000);
    ExpectRamp(0, 500, 1);
    ExpectRamp(500, 1000, 2001);
    EXPECT_EQ(Heard16(1500, 0), 0);
}

TEST_F(SoundTest, WritesIntoAPlayingRingAreHeardAsWritten) {
    // Half a ring is written anew, with values that go on, while the other half plays.
    constexpr int kHalf = 2000;
    IDirectSoundBuffer* ring = Make(kStereo, Ramp(2 * kHalf));
    ASSERT_EQ(ring->Play(0, 0, DSBPLAY_LOOPING), DS_OK);
    for (int lap = 1; lap < 6; ++lap) {
        WaitUntilFrame(kHalf * lap + 300);
        const bool first = lap % 2 == 1;
        ASSERT_EQ(Position(ring) < kHalf * 4, !first);
        Write(ring, first ? 0 : kHalf * 4, Ramp(kHalf, 1 + kHalf * (lap + 1)));
    }
    WaitUntilFrame(kHalf * 6);
    ExpectRamp(0, kHalf * 6, 1);
}

// More orders than the mixer keeps, all within one frame: none is lost, the last one counts.
TEST_F(SoundTest, AFloodOfOrdersEndsInItsLast) {
    IDirectSoundBuffer* sound = Make(kStereo, Ramp(3000));
    headless::SetClock(headless::kClockOrigin);
    for (int i = 0; i < 30000; ++i) {
        ASSERT_EQ(sound->SetCurrentPosition(static_cast<DWORD>(i % 3000 * 4)), DS_OK);
        ASSERT_EQ(sound->Play(0, 0, 0), DS_OK);
        if (i % 8 == 0) headless::SetClock(headless::Clock());  // reading it would move it
    }
    ASSERT_EQ(sound->SetCurrentPosition(1000 * 4), DS_OK);
    WaitUntilFrame(1000);
    ExpectRamp(0, 1000, 1001);
}

// The output may change its rate while a voice sounds; the voice goes on where it is.
TEST_F(SoundTest, ANewOutputRateKeepsThePlaces) {
    IDirectSoundBuffer* primary = MakePrimary();
    IDirectSoundBuffer* sound = Make(Pcm(2, 22050, 16), Ramp(20000));
    ASSERT_EQ(sound->Play(0, 0, 0), DS_OK);
    WaitUntilFrame(10000);
    EXPECT_EQ(Position(sound), 5000u * 4);
    const WAVEFORMATEX low = Pcm(1, 22050, 8);
    ASSERT_EQ(primary->SetFormat(&low), DS_OK);
    EXPECT_EQ(Position(sound), 5000u * 4);
    Wait(100000);
    EXPECT_EQ(Position(sound), (5000u + 2205) * 4);
    // Left and right of the ramp are opposite: their mean is silence.
    const headless::SoundCapture& heard = headless::Sound();
    ASSERT_EQ(heard.End() - heard.first, 2205);
    for (int64_t i = heard.first; i < heard.End(); ++i) ASSERT_EQ(heard.At(i, 0), 0.0f);
}

// What starts before the device runs is in time as soon as it does, and so is what sounds across a
// standstill.
TEST_F(SoundTest, ADeviceThatStandsStill) {
    IDirectSoundBuffer* early = Make(kStereo, Ramp(3000));
    IDirectSoundBuffer* loop = Make(kStereo, Ramp(700, 5000));
    IDirectSoundBuffer* shorter = Make(kStereo, Ramp(500, 7000));
    IDirectSoundBuffer* moved = Make(kStereo, Ramp(3000, 9000));
    headless::StallSound(true);
    WaitUntilFrame(100);
    ASSERT_EQ(early->Play(0, 0, 0), DS_OK);
    ASSERT_EQ(shorter->Play(0, 0, 0), DS_OK);
    WaitUntilFrame(400);
    ASSERT_EQ(moved->SetCurrentPosition(2000 * 4), DS_OK);
    ASSERT_EQ(moved->Play(0, 0, 0), DS_OK);
    WaitUntilFrame(900);
    ASSERT_EQ(moved->Stop(), DS_OK);
    WaitUntilFrame(1000);
    headless::StallSound(false);
    WaitUntilFrame(1200);
    ASSERT_EQ(moved->Play(0, 0, 0), DS_OK);
    WaitUntilFrame(1300);
    ASSERT_EQ(moved->Stop(), DS_OK);
    ASSERT_EQ(loop->Play(0, 0, DSBPLAY_LOOPING), DS_OK);
    WaitUntilFrame(1400);
    headless::StallSound(true);
    WaitUntilFrame(2600);
    headless::StallSound(false);
    WaitUntilFrame(4000);
    for (int frame = 0; frame < 4000; ++frame) {
        int want = frame >= 100 && frame < 3100 ? frame - 99 : 0;
        if (frame >= 1200 && frame < 1300) want += 9000 + 2500 + frame - 1200;
        if (frame >= 1300) want += 5000 + (frame - 1300) % 700;
        if (frame < 1000 || (frame >= 1400 && frame < 2600)) want = 0;
        ASSERT_EQ(Heard16(frame, 0), want) << frame;
    }
    EXPECT_EQ(Status(shorter), 0u);
}

// A sound that has ended while nothing was heard is at its end all the same, and pausing it starts nothing
// anew.
TEST_F(SoundTest, ASoundThatEndsUnheard) {
    IDirectSoundBuffer* sound = Make(kStereo, Ramp(500));
    headless::StallSound(true);
    ASSERT_EQ(sound->Play(0, 0, 0), DS_OK);
    EXPECT_EQ(Status(sound), DWORD{DSBSTATUS_PLAYING});
    WaitUntilFrame(22050);
    EXPECT_EQ(Status(sound), 0u);
    headless::StallSound(false);
    WaitUntilFrame(30000);
    EXPECT_EQ(Status(sound), 0u);
    for (int frame = 0; frame < 30000; ++frame) ASSERT_EQ(Heard16(frame, 0), 0) << frame;
}

// More orders than are kept for a device that does not run: what was carried out early has its time all the
// same.
TEST_F(SoundTest, AFloodWhileTheDeviceStandsStill) {
    IDirectSoundBuffer* sound = Make(kStereo, Ramp(30000));
    IDirectSoundBuffer* other = Make(kStereo, Ramp(10));
    headless::StallSound(true);
    WaitUntilFrame(1000);
    ASSERT_EQ(sound->SetCurrentPosition(0), DS_OK);
    ASSERT_EQ(sound->Play(0, 0, 0), DS_OK);
    for (int i = 0; i < 5000; ++i) ASSERT_EQ(other->Stop(), DS_OK);
    WaitUntilFrame(20000);
    headless::StallSound(false);
    WaitUntilFrame(21000);
    for (int frame = 20000; frame < 21000; ++frame) ASSERT_EQ(Heard16(frame, 0), frame - 999) << frame;
}

TEST_F(SoundTest, ReleasingAVoiceThatSounds) {
    IDirectSoundBuffer* first = Make(kStereo, Ramp(3000));
    IDirectSoundBuffer* second = Make(kStereo, Ramp(3000));
    ASSERT_EQ(first->Play(0, 0, 0), DS_OK);
    ASSERT_EQ(second->Play(0, 0, 0), DS_OK);
    WaitUntilFrame(100);
    ASSERT_EQ(first->SetCurrentPosition(0), DS_OK);
    EXPECT_EQ(first->Release(), 0u);
    std::erase(m_buffers, first);
    WaitUntilFrame(1000);
    ExpectRamp(100, 900, 101);
}

}  // namespace
