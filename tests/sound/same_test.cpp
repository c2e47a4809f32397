// A stream that is served once in each frame sounds as the same file loaded whole: to the sample, to the end,
// round the loop, and whatever is done to it in between.
#include <random>

#include "sound/sound_support.h"

namespace soundtest {
namespace {

constexpr int kRate = 8000;
constexpr uint64_t kFrameNs = 125'000;  // a frame of sound at that rate
constexpr uint64_t kService = 133;      // frames between two services: 16.6 ms

struct Kind {
    const char* name;
    std::string file;
    bool wav;
};

class Same : public SoundTest {
protected:
    void SetUp() override {
        SoundTest::SetUp();
        const WAVEFORMATEX wfx = Pcm(2, kRate, 16);
        ASSERT_EQ(MakePrimary()->SetFormat(&wfx), DS_OK);
    }

    std::vector<Kind> Kinds(int seconds) {
        const Samples mono = Music(seconds * kRate + 77, 1, kRate),
                      stereo = Music(seconds * kRate + 77, 2, kRate);
        const auto coded = [&](int subtype, const Samples& samples, int channels) {
            return Encode(subtype, samples, channels, kRate).file;
        };
        return {{"PCM", test::Wav(mono, {1, kRate, 16}), true},
                {"PCM 8 bits stereo", test::Wav(stereo, {2, kRate, 8}), true},
                {"24 bits", coded(SF_FORMAT_PCM_24, stereo, 2), true},
                {"IMA", coded(SF_FORMAT_IMA_ADPCM, mono, 1), true},
                {"IMA stereo", coded(SF_FORMAT_IMA_ADPCM, stereo, 2), true},
                {"Microsoft", coded(SF_FORMAT_MS_ADPCM, stereo, 2), true},
                {"GSM", coded(SF_FORMAT_GSM610, mono, 1), true},
                {"XA fine", XaFile(mono, 1, kRate), false},
                {"XA fast stereo", XaFile(stereo, 2, kRate, xa::Mode::kFast), false}};
    }

    // Frames of the sound loaded whole, as the output gives them.
    std::vector<float> Whole(const std::string& file) {
        EXPECT_EQ(Make(file)->Load(0), 0);
        const std::string content = Contents(m_sound->m_pDSB).substr(0, m_sound->m_nPcmLen);
        const size_t frame = m_sound->m_wfx.nBlockAlign;
        std::vector<float> left;
        for (size_t at = 0; at + frame <= content.size(); at += frame) {
            int16_t sample;
            std::memcpy(&sample, &content[at], 2);
            left.push_back(frame == m_sound->m_wfx.nChannels
                               ? static_cast<float>(static_cast<BYTE>(content[at]) - 128) / 128
                               : static_cast<float>(sample) / 32768);
        }
        return left;
    }

    CDSBuffer* Streamed(const std::string& file) {
        CDSBuffer* sound = Make(file);
        sound->SetStreamSeconds(1);
        EXPECT_EQ(sound->Load(1), 0);
        EXPECT_EQ(sound->m_bStream, 1);
        headless::SetSoundSink(nullptr, nullptr);  // forgets what was heard so far
        return sound;
    }

    // Plays the file as a stream for so many frames, and expects to hear the whole and then silence, or to
    // hear it again and again. Gives the frames until it stopped; 0 when it did not.
    int64_t ExpectSame(const std::string& file, const std::vector<float>& whole, size_t frames, bool loop) {
        CDSBuffer* sound = Streamed(file);
        sound->m_bLoop = loop;
        const int64_t start = Now();
        EXPECT_EQ(sound->Play(), 0);
        int64_t stopped = 0;
        while (Now() - start < static_cast<int64_t>(frames)) {
            Wait(kService);
            EXPECT_EQ(sound->StreamPlay(), 0);
            EXPECT_LE(sound->m_nEndState, loop ? 1 : 5);
            if (stopped == 0 && !sound->IsPlaying()) stopped = Now() - start;
        }
        for (size_t i = 0; i < frames; ++i) {
            const float expected = loop || i < whole.size() ? whole[i % whole.size()] : 0;
            if (Heard(start + static_cast<int64_t>(i)) == expected) continue;
            ADD_FAILURE() << "frame " << i;
            break;
        }
        return stopped;
    }

    static int64_t Now() { return headless::SoundFrame(headless::Clock()); }
    static float Heard(int64_t frame) { return headless::Sound().At(frame, 0); }
    static void Wait(uint64_t frames) { headless::AdvanceClock(frames * kFrameNs); }
};

TEST_F(Same, FromTheFirstSampleToTheLast) {
    for (int seconds : {4, 5, 22}) {
        for (const Kind& kind : Kinds(seconds)) {
            SCOPED_TRACE(kind.name);
            const std::vector<float> whole = Whole(kind.file);
            ASSERT_GT(whole.size(), static_cast<size_t>(seconds) * kRate);
            const int64_t stopped = ExpectSame(kind.file, whole, whole.size() + 5 * kRate, false);
            EXPECT_EQ(m_sound->m_nEndState, 5);
            // The refill with the sound's end, then silence in the next half: an XA stream stops when the
            // cursor gets there, a WAV stream one half later.
            const int64_t half = static_cast<int64_t>(m_sound->m_nBufSize / m_sound->m_wfx.nBlockAlign) / 2;
            const int64_t end_half = (static_cast<int64_t>(whole.size()) - 1) / half;
            if (kind.name == std::string("PCM") || !kind.wav) {
                EXPECT_EQ(stopped / half, end_half + (kind.wav ? 2 : 1)) << seconds;
            }
            EXPECT_EQ(m_sound->m_nEndHalf, stopped / half % 2);
        }
    }
}

// Blocks of more than a quarter of the ring, the last one cut: its part must find room, or wait for it.
TEST_F(Same, ALargePartOfABlockAtTheEnd) {
    constexpr int kAlign = 2400;  // 4793 frames; the ring has three blocks
    const std::string extension = test::LittleEndian(2, 2) + test::LittleEndian(2 * kAlign - 7, 2);
    for (int blocks = 6; blocks < 12; ++blocks) {
        for (int part : {1800, 2200, 2396}) {
            SCOPED_TRACE(std::to_string(blocks) + " " + std::to_string(part));
            std::string data;
            std::minstd_rand random(static_cast<unsigned>(blocks * part));
            for (int i = 0; i < blocks * kAlign + part; ++i)
                data += static_cast<char>(i % kAlign < 4 ? 0 : random() & 0x99);  // small steps up and down
            const std::string file = WavOf({17, 1, kRate, -1, kAlign, 4, extension}, data);
            const std::vector<float> whole = Whole(file);
            ExpectSame(file, whole, whole.size() + 3 * kRate, false);
        }
    }
}

// Also when the file's last block is cut, or half a frame stands at its end: still no gap.
TEST_F(Same, RoundTheLoop) {
    for (const Kind& kind : Kinds(3)) {
        if (kind.name == std::string("GSM"))
            continue;  // its codec carries what it knows over into the next lap
        std::vector<std::string> files = {kind.file};
        if (kind.wav) {
            const size_t at = kind.file.find("data") + 4, size = (kind.file.size() - at - 4) / 2 * 2 - 101;
            files.push_back(kind.file.substr(0, at) + test::LittleEndian(size, 4) +
                            kind.file.substr(at + 4, size));
        }
        for (const std::string& file : files) {
            SCOPED_TRACE(kind.name + std::to_string(file.size()));
            const std::vector<float> whole = Whole(file);
            EXPECT_EQ(ExpectSame(file, whole, whole.size() * 5, true), 0);
        }
    }
}

// What is to be heard: a place in the sound that moves while it plays.
struct Model {
    int64_t place = 0;
    bool playing = false;
    std::vector<float> heard;

    void Advance(const std::vector<float>& whole, uint64_t frames) {
        for (uint64_t i = 0; i < frames; ++i) {
            const bool sounds = playing && place < static_cast<int64_t>(whole.size());
            heard.push_back(sounds ? whole[static_cast<size_t>(place)] : 0);
            if (playing) ++place;
        }
    }
};

void ActAtRandom(CDSBuffer* sound, Model* model, std::mt19937* random, bool* paused) {
    const bool playing = sound->IsPlaying() != 0;
    switch ((*random)() % 5) {
        case 0:
            EXPECT_EQ(sound->Play(), 0);
            model->place = 0;
            model->playing = true;
            break;
        case 1:
            EXPECT_EQ(sound->Rewind(), 0);
            model->place = 0;
            model->playing = playing;
            break;
        case 2:
            EXPECT_EQ(sound->Stop(), 0);
            model->playing = false;
            break;
        case 3:
            EXPECT_EQ(sound->Pause(), 0);
            *paused = playing;
            model->playing = false;
            break;
        default:
            sound->Resume();
            if (*paused) model->playing = true;
            *paused = false;
            break;
    }
}

TEST_F(Same, AThousandRunsOfActsAtRandom) {
    const std::vector<Kind> kinds = Kinds(4);
    std::vector<std::vector<float>> wholes;
    for (const Kind& kind : kinds) wholes.push_back(Whole(kind.file));
    for (uint32_t seed = 0; seed < 1000; ++seed) {
        const size_t k = seed % kinds.size();
        std::mt19937 random(seed);
        CDSBuffer* sound = Streamed(kinds[k].file);
        Model model;
        bool paused = false;
        const int64_t start = Now();
        ASSERT_EQ(sound->Play(), 0);
        model.playing = true;
        uint64_t until_act = random() % 16000;
        for (int served = 0; served < 500; ++served) {
            uint64_t left = kService;
            while (until_act <= left) {
                Wait(until_act);
                model.Advance(wholes[k], until_act);
                left -= until_act;
                ActAtRandom(sound, &model, &random, &paused);
                until_act = 1 + (random() % 3 == 0 ? random() % 400 : random() % 24000);
            }
            Wait(left);
            model.Advance(wholes[k], left);
            until_act -= left;
            ASSERT_EQ(sound->StreamPlay(), 0);
        }
        for (size_t i = 0; i < model.heard.size(); ++i)
            ASSERT_EQ(Heard(start + static_cast<int64_t>(i)), model.heard[i])
                << kinds[k].name << " seed " << seed << " at " << i;
    }
}

}  // namespace
}  // namespace soundtest
