// When sounds are heard: to the sample.
#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>

#include "platform/sound/sound_fixture.h"

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

// A voice as its calls describe it.
struct Model {
    int64_t frames;
    int from;
    int64_t place = 0;
    bool playing = false, looping = false;

    int Next() {
        if (!playing) return 0;
        const int value = from + static_cast<int>(place++);
        if (place == frames) {
            place = 0;
            playing = looping;
        }
        return value;
    }
};

// Any calls at any time, also while the device stands still and more than the mixer keeps: each takes effect
// in its frame.
TEST_F(SoundTest, CallsTakeEffectInTheFrameOfTheClock) {
    for (unsigned seed = 0; seed < 100; ++seed) {
        headless::Reset();
        std::mt19937 random(seed);
        std::vector<Model> models = {{700, 1}, {2000, 1000}, {9000, 3000}};
        std::vector<IDirectSoundBuffer*> sounds;
        for (const Model& m : models)
            sounds.push_back(Make(kStereo, Ramp(static_cast<int>(m.frames), m.from)));
        std::vector<int> wanted;
        bool stalled = false;
        size_t running_from = 0;
        for (int act = 0; act < 60; ++act) {
            // Over shorter standstills, what sounds goes on where it was.
            const auto frames = (random() % 4 ? random() % 1500 : random() % 2) + (stalled ? 3000 : 0);
            for (size_t n = 0; n < frames; ++n) {
                int sum = 0;
                for (Model& m : models) sum += m.Next();
                wanted.push_back(stalled ? 0 : sum);
            }
            WaitUntilFrame(static_cast<int64_t>(wanted.size()));
            const size_t i = random() % models.size();
            Model& m = models[i];
            if (!stalled && wanted.size() > running_from) {  // otherwise the cursor waits for the device
                ASSERT_EQ(Position(sounds[i]), m.place * 4) << seed;
                ASSERT_EQ(Status(sounds[i]), DWORD{m.playing} | (m.playing && m.looping ? 4u : 0u)) << seed;
            }
            const unsigned choice = random() % 8;
            const int times = random() % 20 ? 1 : 5000;
            for (int n = 0; n < times; ++n) {
                headless::SetClock(headless::Clock());  // otherwise reading it would move it
                if (choice < 3) {
                    m.looping = choice == 1;
                    m.playing = true;
                    ASSERT_EQ(sounds[i]->Play(0, 0, m.looping ? DSBPLAY_LOOPING : 0), DS_OK);
                } else if (choice < 5) {
                    m.playing = false;
                    ASSERT_EQ(sounds[i]->Stop(), DS_OK);
                } else if (choice < 7) {
                    m.place = static_cast<int64_t>(random()) % m.frames;
                    ASSERT_EQ(sounds[i]->SetCurrentPosition(static_cast<DWORD>(m.place * 4)), DS_OK);
                }
            }
            if (choice < 7) continue;
            headless::StallSound(stalled = !stalled);
            running_from = wanted.size();
        }
        for (size_t frame = 0; frame < wanted.size(); ++frame)
            ASSERT_EQ(Heard16(static_cast<int64_t>(frame), 0), wanted[frame]) << seed << " at " << frame;
        for (IDirectSoundBuffer* sound : m_buffers) sound->Release();  // sounding ones, too
        m_buffers.clear();
    }
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

}  // namespace
