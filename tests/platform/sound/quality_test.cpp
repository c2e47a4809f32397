// The rate converter's figures, by the spectrum of what is heard: level, ripple, images and aliases.
#include <cmath>
#include <numbers>

#include "platform/sound/sound_fixture.h"

namespace {

constexpr int kOut = 44100;
constexpr int kSettle = 4000,
              kFrames = 44100;  // measured: a second, so that whole frequencies fall between none
constexpr double kLevel = 0.5;  // -6 dB

class QualityTest : public SoundTest {
protected:
    // Plays a sine for more than a second, and keeps a second of it.
    void Play(int rate, double frequency) {
        headless::Reset();
        std::vector<float> samples;
        for (int i = 0; i < rate * 5 / 4; ++i)
            samples.push_back(
                static_cast<float>(kLevel * std::sin(2 * std::numbers::pi * frequency * i / rate)));
        IDirectSoundBuffer* sound = Make(Pcm(1, rate, 32, WAVE_FORMAT_IEEE_FLOAT), samples);
        ASSERT_EQ(sound->Play(0, 0, 0), DS_OK);
        WaitUntilFrame(kSettle + kFrames);
        ASSERT_EQ(sound->Stop(), DS_OK);
        m_second.clear();
        for (int i = 0; i < kFrames; ++i) m_second.push_back(headless::Sound().At(kSettle + i, 0));
    }

    struct Tone {
        double real, imaginary;
        double Decibels() const { return 20 * std::log10(std::hypot(real, imaginary) / kLevel + 1e-12); }
    };

    // One line of the Fourier transform, exact for frequencies of whole hertz.
    Tone At(double frequency) const {
        const double w = 2 * std::numbers::pi * frequency / kOut;
        double real = 0, imaginary = 0, c = 1, s = 0;
        const double dc = std::cos(w), ds = std::sin(w);
        for (const double x : m_second) {
            real += x * c;
            imaginary += x * s;
            const double next = c * dc - s * ds;
            s = s * dc + c * ds;
            c = next;
        }
        return {2 * real / kFrames, 2 * imaginary / kFrames};
    }

    // All that is heard, without that tone, against a tone of the level.
    double RestDecibels(double frequency, const Tone& tone) const {
        double rest = 0;
        for (int i = 0; i < kFrames; ++i) {
            const double w = 2 * std::numbers::pi * frequency * i / kOut;
            const double x =
                m_second[static_cast<size_t>(i)] - tone.real * std::cos(w) - tone.imaginary * std::sin(w);
            rest += x * x;
        }
        return 10 * std::log10(rest / kFrames / (kLevel * kLevel / 2) + 1e-20);
    }

    std::vector<double> m_second;
};

struct Row {
    int rate;
    double flat_to;  // Hz
};

// Up to 93 % of the lower Nyquist frequency going up, 90 % going down.
const Row kRates[] = {{8000, 3720},   {11025, 5120},  {16000, 7440},  {22050, 10250}, {32000, 14880},
                      {44101, 19500}, {48000, 19800}, {88200, 19800}, {96000, 19800}, {200000, 19800}};

TEST_F(QualityTest, TheToneAtItsLevelAndNothingBesideIt) {
    for (const Row& row : kRates) {
        for (int step = 0; step <= 10; ++step) {
            const double frequency = std::round(100 + (row.flat_to - 100) * step / 10);
            Play(row.rate, frequency);
            EXPECT_NEAR(At(frequency).Decibels(), 0.0, 0.01) << row.rate << " " << frequency;
            EXPECT_LT(RestDecibels(frequency, At(frequency)), -80.0) << row.rate << " " << frequency;
            const double image = row.rate - frequency;
            if (image < kOut / 2.0) {
                EXPECT_LT(At(image).Decibels(), -86.0) << row.rate << " " << frequency;
            }
        }
    }
}

TEST_F(QualityTest, NothingFoldsDownFromAboveTheOutputsRange) {
    for (const int rate : {48000, 88200, 96000, 200000}) {
        for (double frequency = 22100; frequency < rate / 2.0; frequency += 1871) {
            Play(rate, frequency);
            EXPECT_LT(RestDecibels(frequency, {}), -84.0) << rate << " " << frequency;
        }
    }
}

// Voices of one rate are converted together; what is heard is the sum of what each gives alone.
TEST_F(QualityTest, TogetherAsAlone) {
    constexpr int kVoices = 5, kLength = 8000;
    const auto start = [&](int voice) {
        std::vector<int16_t> samples;
        for (int i = 0; i < 3000; ++i)
            samples.push_back(static_cast<int16_t>((i * (7919 + 104729 * voice)) % 4001 - 2000));
        IDirectSoundBuffer* sound = Make(Pcm(1, 22050, 16), samples);
        WaitUntilFrame(voice * 111);
        ASSERT_EQ(sound->Play(0, 0, 0), DS_OK);
    };
    std::vector<double> sum(kLength, 0.0);
    for (int voice = 0; voice < kVoices; ++voice) {
        headless::Reset();
        start(voice);
        WaitUntilFrame(kLength);
        for (int i = 0; i < kLength; ++i) sum[static_cast<size_t>(i)] += headless::Sound().At(i, 1);
    }
    headless::Reset();
    for (int voice = 0; voice < kVoices; ++voice) start(voice);
    WaitUntilFrame(kLength);
    for (int i = 0; i < kLength; ++i)
        ASSERT_NEAR(headless::Sound().At(i, 1), sum[static_cast<size_t>(i)], 1e-5) << i;
}

}  // namespace
