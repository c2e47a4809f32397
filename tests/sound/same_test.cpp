// A stream that is served once in each frame sounds as the same file loaded whole: to the sample, to the end,
// round the loop, and whatever is done to it in between.
#include <random>

#include "sound/sound_support.h"

namespace soundtest {
namespace {

constexpr int kRate = 8000;
constexpr uint64_t kFrameNs = 125'000;  // one frame of sound at that rate
constexpr uint64_t kService = 133;      // frames between two services: 16.6 ms

struct Kind {
    std::string name, file;
    bool IsXa() const { return name.ends_with(".xa"); }
};

// The same file with an earlier end.
Kind Shortened(const Kind& kind, size_t bytes) {
    Kind shorter = kind;
    const size_t at = kind.IsXa() ? 4 : kind.file.find("data") + 4;
    return shorter.file.replace(at, 4, test::LittleEndian(bytes, 4)), shorter;
}

class Same : public SoundTest {
protected:
    void SetUp() override {
        SoundTest::SetUp();
        const WAVEFORMATEX wfx = Pcm(2, kRate, 16);
        ASSERT_EQ(MakePrimary()->SetFormat(&wfx), DS_OK);
        for (const auto& entry : std::filesystem::directory_iterator(SOUND_DATA "/same"))
            m_kinds.push_back({entry.path().filename(), test::ReadFile(entry.path())});
        std::vector<int16_t> samples;
        for (const float x : Whole(m_kinds[0].file)) samples.push_back(static_cast<int16_t>(x * 32768));
        m_kinds.push_back({"PCM", test::Wav(samples, {1, kRate, 16})});
        samples.insert(samples.end(), samples.begin(), samples.end());
        m_kinds.push_back({"PCM 8 bits stereo", test::Wav(samples, {2, kRate, 8})});
    }

    // The left side of the sound loaded whole, as the output gives it.
    std::vector<float> Whole(const std::string& file) {
        EXPECT_EQ(Make(file)->Load(0), 0);
        const std::string content = Contents(m_sound->m_pDSB).substr(0, m_sound->m_nPcmLen);
        const size_t frame = m_sound->m_wfx.nBlockAlign;
        std::vector<float> left;
        for (size_t at = 0; at + frame <= content.size(); at += frame) {
            const auto sample = static_cast<int16_t>(test::Number(content, at, 2));
            left.push_back(m_sound->m_wfx.wBitsPerSample == 8
                               ? static_cast<float>(static_cast<BYTE>(content[at]) - 128) / 128
                               : static_cast<float>(sample) / 32768);
        }
        return left;
    }

    CDSBuffer* Streamed(const std::string& file) {
        CDSBuffer* sound = Make(file);
        EXPECT_EQ(sound->Load(1), 0);
        EXPECT_EQ(sound->m_bStream, 1);
        headless::SetSoundSink(nullptr, nullptr);  // forgets what was heard so far
        return sound;
    }

    // Plays the file as a stream for so many frames, and expects to hear the whole and then silence, or to
    // hear it again and again. Returns the frames until it stopped; 0 when it did not.
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

    std::vector<Kind> m_kinds;
};

TEST_F(Same, FromTheFirstSampleToTheLast) {
    for (const Kind& kind : m_kinds) {
        for (const size_t part : {10, 8}) {
            SCOPED_TRACE(kind.name);
            const Kind cut = Shortened(kind, (kind.file.size() - 100) * part / 10 / 4 * 4);
            const std::vector<float> whole = Whole(cut.file);
            ASSERT_GT(whole.size(), 3u * kRate);
            const int64_t stopped = ExpectSame(cut.file, whole, whole.size() + 5 * kRate, false);
            EXPECT_EQ(m_sound->m_nEndState, 5);
            // The refill with the sound's end, then silence in the next half: an XA stream stops when the
            // cursor gets there, a WAV stream one half later.
            const int64_t half = static_cast<int64_t>(m_sound->m_nBufSize / m_sound->m_wfx.nBlockAlign) / 2;
            const int64_t end_half = (static_cast<int64_t>(whole.size()) - 1) / half;
            if (kind.name == "PCM" || kind.IsXa()) {
                EXPECT_EQ(stopped / half, end_half + (kind.IsXa() ? 1 : 2));
            }
            EXPECT_EQ(m_sound->m_nEndHalf, stopped / half % 2);
        }
    }
}

// Blocks of more than a quarter of the ring, the last one cut: its part must find room, or wait for it.
TEST_F(Same, ALargePartOfABlockAtTheEnd) {
    constexpr int kAlign = 2400;  // 4793 frames; the ring has three blocks
    for (int blocks = 6; blocks < 12; ++blocks) {
        for (int part : {1800, 2200, 2396}) {
            SCOPED_TRACE(std::to_string(blocks) + " " + std::to_string(part));
            std::string data;
            std::minstd_rand random(static_cast<unsigned>(blocks * part));
            for (int i = 0; i < blocks * kAlign + part; ++i)
                data += static_cast<char>(i % kAlign < 4 ? 0 : random() & 0x99);  // small steps up and down
            std::string file = test::ReadFile(SOUND_DATA "/same/ima.wav").substr(0, 60);
            file.replace(32, 2, test::LittleEndian(kAlign, 2));
            file.replace(38, 2, test::LittleEndian(2 * kAlign - 7, 2));
            file.replace(file.find("data") + 4, 99, test::LittleEndian(data.size(), 4) + data);
            const std::vector<float> whole = Whole(file);
            ExpectSame(file, whole, whole.size() + 3 * kRate, false);
        }
    }
}

// Also when the file's last block is cut, or half a frame stands at its end: still no gap.
TEST_F(Same, RoundTheLoop) {
    for (const Kind& kind : m_kinds) {
        if (kind.name == "gsm.wav") continue;  // its codec carries what it knows over into the next lap
        std::vector<Kind> laps = {kind};
        if (!kind.IsXa()) laps.push_back(Shortened(kind, (kind.file.size() - 100) / 4 * 2 - 101));
        for (const Kind& lap : laps) {
            SCOPED_TRACE(lap.name);
            const std::vector<float> whole = Whole(lap.file);
            EXPECT_EQ(ExpectSame(lap.file, whole, whole.size() * 5, true), 0);
        }
    }
}

// What is to be heard: a place in the sound that moves while it plays.
struct Model {
    int64_t place = 0;
    bool playing = false, paused = false;
    std::vector<float> heard;

    void Advance(const std::vector<float>& whole, uint64_t frames) {
        for (uint64_t i = 0; i < frames; ++i) {
            const bool sounds = playing && place < static_cast<int64_t>(whole.size());
            heard.push_back(sounds ? whole[static_cast<size_t>(place)] : 0);
            if (playing) ++place;
        }
    }

    void Act(CDSBuffer* sound, uint32_t choice) {
        const bool sounds = sound->IsPlaying() != 0;
        if (choice == 0) {
            EXPECT_EQ(sound->Play(), 0);
        } else if (choice == 1) {
            EXPECT_EQ(sound->Rewind(), 0);
        } else if (choice == 2) {
            EXPECT_EQ(sound->Stop(), 0);
        } else if (choice == 3) {
            EXPECT_EQ(sound->Pause(), 0);
        } else {
            sound->Resume();
        }
        if (choice <= 1) place = 0;
        playing = choice == 0 || (choice == 1 && sounds) || (choice == 4 && (playing || paused));
        if (choice >= 3) paused = choice == 3 && sounds;
    }
};

TEST_F(Same, AThousandRunsOfActsAtRandom) {
    std::vector<std::vector<float>> wholes;
    for (const Kind& kind : m_kinds) wholes.push_back(Whole(kind.file));
    for (uint32_t seed = 0; seed < 1000; ++seed) {
        const size_t k = seed % m_kinds.size();
        std::mt19937 random(seed);
        CDSBuffer* sound = Streamed(m_kinds[k].file);
        Model model;
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
                model.Act(sound, random() % 5);
                until_act = 1 + (random() % 3 == 0 ? random() % 400 : random() % 24000);
            }
            Wait(left);
            model.Advance(wholes[k], left);
            until_act -= left;
            ASSERT_EQ(sound->StreamPlay(), 0);
        }
        for (size_t i = 0; i < model.heard.size(); ++i)
            ASSERT_EQ(Heard(start + static_cast<int64_t>(i)), model.heard[i])
                << m_kinds[k].name << " seed " << seed << " at " << i;
    }
}

}  // namespace
}  // namespace soundtest
