// How loud sounds are: exact where nothing has to be converted, and inside full scale always.
#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "platform/sound/sound_fixture.h"

namespace {

class LevelTest : public SoundTest {
protected:
    // What frame 0 of a buffer of four equal frames gives on both sides.
    template <class Sample>
    std::pair<float, float> Play(const WAVEFORMATEX& wfx, std::vector<Sample> frame) {
        headless::Reset();
        std::vector<Sample> samples;
        for (int i = 0; i < 4; ++i) samples.insert(samples.end(), frame.begin(), frame.end());
        IDirectSoundBuffer* buffer = Make(wfx, samples);
        EXPECT_EQ(buffer->Play(0, 0, 0), DS_OK);
        WaitUntilFrame(10);
        return {headless::Sound().At(0, 0), headless::Sound().At(3, 1)};
    }
};

using Sides = std::pair<float, float>;

TEST_F(LevelTest, EverySampleOf16BitsPassesExactly) {
    std::vector<int16_t> all;
    for (int n = -32768; n <= 32767; ++n) all.push_back(static_cast<int16_t>(n));
    IDirectSoundBuffer* buffer = Make(Pcm(2, 44100, 16), all);
    ASSERT_EQ(buffer->Play(0, 0, 0), DS_OK);
    WaitUntilFrame(40000);
    for (int n = -32768; n <= 32767; ++n) {
        const int at = n + 32768;
        ASSERT_EQ(headless::Sound().At(at / 2, at % 2), static_cast<float>(n) / 32768);
    }
}

TEST_F(LevelTest, EveryFormatHasItsScale) {
    using B = unsigned char;
    EXPECT_EQ(Play<B>(Pcm(1, 44100, 8), {0}), Sides(-1.0f, -1.0f));
    EXPECT_EQ(Play<B>(Pcm(1, 44100, 8), {0x80}), Sides(0.0f, 0.0f));
    EXPECT_EQ(Play<B>(Pcm(2, 44100, 8), {0xC0, 0x40}), Sides(0.5f, -0.5f));
    EXPECT_EQ(Play<int16_t>(Pcm(1, 44100, 16), {16384}), Sides(0.5f, 0.5f));
    EXPECT_EQ(Play<B>(Pcm(2, 44100, 24), {0, 0, 0x40, 0, 0, 0xC0}), Sides(0.5f, -0.5f));
    EXPECT_EQ(Play<int32_t>(Pcm(2, 44100, 32), {1 << 30, -(1 << 30)}), Sides(0.5f, -0.5f));
    EXPECT_EQ(Play<float>(Pcm(2, 44100, 32, WAVE_FORMAT_IEEE_FLOAT), {0.25f, -0.75f}), Sides(0.25f, -0.75f));
}

TEST_F(LevelTest, NumbersThatAreNoneAreSilent) {
    const WAVEFORMATEX wfx = Pcm(2, 44100, 32, WAVE_FORMAT_IEEE_FLOAT);
    const float nan = std::numeric_limits<float>::quiet_NaN(), inf = std::numeric_limits<float>::infinity();
    EXPECT_EQ(Play<float>(wfx, {nan, -inf}), Sides(0.0f, 0.0f));
    EXPECT_EQ(Play<float>(wfx, {0.5f, 0.5f}), Sides(0.5f, 0.5f));  // and nothing of them stays
}

TEST_F(LevelTest, ManyChannelsFoldByTheirPlaces) {
    const float half = 0.70710678f, x = 0.25f;
    // Front left, front right, centre, low frequency, back left, back right, side left, side right.
    const Sides rows[8] = {{x, 0},        {0, x},        {half * x, half * x}, {half * x, half * x},
                           {half * x, 0}, {0, half * x}, {half * x, 0},        {0, half * x}};
    for (int c = 0; c < 8; ++c) {
        std::vector<int16_t> frame(8, 0);
        frame[static_cast<size_t>(c)] = 8192;
        const Sides sides = Play<int16_t>(Pcm(8, 44100, 16), frame);
        EXPECT_NEAR(sides.first, rows[c].first, 1e-6) << c;
        EXPECT_NEAR(sides.second, rows[c].second, 1e-6) << c;
    }
}

TEST_F(LevelTest, VolumeInHundredthsOfADecibel) {
    IDirectSoundBuffer* buffer = Make(Pcm(2, 44100, 16), std::vector<int16_t>(200000, 16384));
    ASSERT_EQ(buffer->Play(0, 0, DSBPLAY_LOOPING), DS_OK);
    int64_t frame = 0;
    for (const LONG volume : {0, -1, -600, -602, -2000, -6000, -9999, -10000, 0}) {
        ASSERT_EQ(buffer->SetVolume(volume), DS_OK);
        WaitUntilFrame(frame + 1000);
        const double expected = volume == -10000 ? 0 : 0.5 * std::pow(10.0, volume / 2000.0);
        for (const int64_t at : {frame, frame + 999})
            EXPECT_NEAR(headless::Sound().At(at, 0), expected, expected * 1e-5) << volume;
        frame += 1000;
    }
    EXPECT_EQ(headless::Sound().At(frame - 1, 1), 0.5f);
}

TEST_F(LevelTest, OverloadIsLimitedAndFullScaleIsNot) {
    std::vector<int16_t> tone;
    for (int i = 0; i < 88200; ++i) {
        const double loud = i < 22050 ? 0.5 : i < 44100 ? 1.0 : 0.5;
        const auto x =
            static_cast<int16_t>(std::lround(loud * 32767 * std::sin(2 * std::numbers::pi * i / 100)));
        tone.insert(tone.end(), {x, static_cast<int16_t>(x / 2)});
    }
    IDirectSoundBuffer* first = Make(Pcm(2, 44100, 16), tone);
    IDirectSoundBuffer* second = Make(Pcm(2, 44100, 16), tone);
    ASSERT_EQ(first->Play(0, 0, 0), DS_OK);
    ASSERT_EQ(second->Play(0, 0, 0), DS_OK);
    WaitUntilFrame(88200);
    float peak = 0, recovered = 0;
    for (int i = 0; i < 88200; ++i) {
        const float left = headless::Sound().At(i, 0), right = headless::Sound().At(i, 1);
        const float wanted = 2 * static_cast<float>(tone[static_cast<size_t>(2 * i)]) / 32768;
        if (i < 22050) {
            ASSERT_EQ(left, wanted);
        }
        ASSERT_LE(std::fabs(left), 1.0f);
        ASSERT_NEAR(left, 2 * right, 1e-4);  // both sides alike
        ASSERT_GE(left * wanted, 0.0f);      // nothing wraps
        peak = std::max(peak, std::fabs(left));
        if (i >= 86000) recovered = std::max(recovered, std::fabs(left - wanted));
    }
    EXPECT_EQ(peak, 1.0f);
    EXPECT_LT(recovered, 1e-3f);
    // Once the gain has settled the shape is kept: a sine of half the height, not a square.
    double worst = 0;
    for (int i = 30000; i < 44000; ++i)
        worst =
            std::max(worst, std::fabs(headless::Sound().At(i, 0) - std::sin(2 * std::numbers::pi * i / 100)));
    EXPECT_LT(worst, 0.01);
}

}  // namespace
