// All counters of two small streams, step by step, worked out by hand.
#include "sound/sound_support.h"

namespace soundtest {
namespace {

struct Step {
    DWORD cursor;
    DWORD read, used, done, write;
    int half, state, end_half;
};

class Trace : public SoundTest {
protected:
    // 5300 bytes at 1000 bytes a second; the ring has 2000.
    CDSBuffer* LoadWav(int loop) {
        Samples samples(5300);
        for (size_t i = 0; i < samples.size(); ++i) samples[i] = static_cast<int16_t>((i % 200 + 20) << 8);
        const std::string wav = test::Wav(samples, {1, 1000, 8});
        m_pcm = wav.substr(44);
        CDSBuffer* sound = Make(wav);
        sound->SetStreamSeconds(5);
        sound->m_bLoop = loop;
        EXPECT_EQ(sound->Load(1), 0);
        return sound;
    }

    static void Expect(const CDSBuffer& s, const Step& step, size_t line) {
        EXPECT_EQ(s.m_nSrcRead, step.read) << line;
        EXPECT_EQ(s.m_nSrcUsed, step.used) << line;
        EXPECT_EQ(s.m_nDstDone, step.done) << line;
        EXPECT_EQ(s.m_nWritePos, step.write) << line;
        EXPECT_EQ(s.m_nHalf, step.half) << line;
        EXPECT_EQ(s.m_nEndState, step.state) << line;
        EXPECT_EQ(s.m_nEndHalf, step.end_half) << line;
    }

    static void Run(CDSBuffer* sound, const std::vector<Step>& steps) {
        for (size_t i = 0; i < steps.size(); ++i) {
            if (i == 1) {
                EXPECT_EQ(sound->Play(), 0);
            }
            if (i >= 2) {
                EXPECT_EQ(sound->m_pDSB->SetCurrentPosition(steps[i].cursor), DS_OK);
                EXPECT_EQ(sound->StreamPlay(), 0);
            }
            Expect(*sound, steps[i], i);
        }
    }

    std::string m_pcm;
};

TEST_F(Trace, Wav) {
    CDSBuffer* sound = LoadWav(0);
    EXPECT_EQ(sound->m_nSeconds, 5u);
    EXPECT_EQ(sound->m_nBufSize, 2000u);
    EXPECT_EQ(sound->m_nSrcSize, 2000u);
    EXPECT_EQ(sound->m_nDstSize, 2000u);
    const std::vector<Step> steps = {
        {0, 2000, 2000, 2000, 0, 0, 0, 0},        // load
        {0, 2000, 2000, 2000, 0, 0, 0, 0},        // Play starts over
        {700, 2000, 2000, 2000, 0, 0, 0, 0},      // nothing due
        {1200, 3000, 3000, 3000, 1000, 1, 0, 0},  // [A] reads 2000, gives 1000 back
        {1300, 3000, 3000, 3000, 1000, 1, 0, 0}, {500, 4000, 4000, 4000, 0, 0, 0, 0},  // [B]
        {1200, 5000, 5000, 5000, 1000, 1, 0, 0},  // [A] reads the 1300 that are left, gives 300 back
        {500, 0, 0, 5300, 0, 0, 0, 0},  // [B] the end: 300 bytes, 700 of silence; the source starts over
        {1200, 1000, 1000, 6300, 1000, 1, 3, 0},  // [A] the beginning again, all of it turned to silence
        {500, 1000, 1000, 6300, 0, 0, 4, 1},      // [B] silence, in the second half
        {500, 1000, 1000, 6300, 0, 0, 4, 1},      // not yet there
        {1000, 1000, 1000, 6300, 0, 0, 4, 1},    {1001, 1000, 1000, 6300, 0, 0, 5, 1},  // stopped
        {1200, 1000, 1000, 6300, 0, 0, 5, 1},
    };
    EXPECT_EQ(LogOf([&] { Run(sound, steps); }), "");
    EXPECT_EQ(sound->IsPlaying(), 0);
    EXPECT_EQ(Contents(sound->m_pDSB), std::string(2000, '\x80'));
    EXPECT_EQ(sound->Play(), 0);
    Expect(*sound, steps[0], 0);
    EXPECT_EQ(Contents(sound->m_pDSB), m_pcm.substr(0, 2000));
    EXPECT_EQ(sound->IsPlaying(), 1);
}

// A repeating one: the source starts over inside an update, and the state never leaves 0.
TEST_F(Trace, LoopingWav) {
    CDSBuffer* sound = LoadWav(1);
    const std::vector<Step> steps = {
        {0, 2000, 2000, 2000, 0, 0, 0, 0},
        {0, 2000, 2000, 2000, 0, 0, 0, 0},
        {1200, 3000, 3000, 3000, 1000, 1, 0, 0},
        {500, 4000, 4000, 4000, 0, 0, 0, 0},
        {1200, 5000, 5000, 5000, 1000, 1, 0, 0},
        {500, 700, 700, 700, 0, 0, 0, 0},  // 300 to the end, then 700 from the beginning in a second pass
        {1200, 1700, 1700, 1700, 1000, 1, 0, 0},
    };
    Run(sound, steps);
    EXPECT_EQ(Contents(sound->m_pDSB), m_pcm.substr(700, 1000) + m_pcm.substr(5000) + m_pcm.substr(0, 700));
}

// 5300 frames at 1000 a second: 10600 bytes of PCM, a ring of 4000. A block has 32 frames in 42 bytes, so the
// data are 165 blocks and one of 20 frames in 27 bytes: 6957 bytes.
TEST_F(Trace, Xa) {
    const Samples samples = Music(5300, 1, 1000);
    const std::string file = XaFile(samples, 1, 1000);
    ASSERT_EQ(file.size(), 32u + 6957u);
    CDSBuffer* sound = Make(file, "s.xa");
    sound->SetStreamSeconds(5);
    ASSERT_EQ(sound->Load(1), 0);
    EXPECT_EQ(sound->m_nKind, 2);
    EXPECT_EQ(sound->m_nBufSize, 4000u);
    EXPECT_EQ(sound->m_nSrcSize, 10000u);
    EXPECT_EQ(sound->m_nPcmLen, 10600u);
    EXPECT_EQ(sound->m_nDataPos, 32u);
    const std::vector<Step> steps = {
        {0, 2646, 2646, 4000, 0, 0, 0, 0},         // 62 blocks and 16 frames of a 63rd
        {0, 2646, 2646, 4000, 0, 0, 0, 0},         // Play starts over
        {2400, 3948, 3948, 6000, 2000, 1, 0, 0},   // [A] 16 frames, 30 blocks, 24 frames of one more
        {500, 5250, 5250, 8000, 0, 0, 0, 0},       // [B] 8 frames and 31 blocks
        {2400, 6594, 6594, 10000, 2000, 1, 0, 0},  // [A] 31 blocks and 8 frames of one more
        {500, 6957, 6957, 10600, 0, 0, 3, 0},      // [B] the last 300 frames, 1400 bytes of silence
        {2400, 6957, 6957, 10600, 2000, 1, 4, 0},  // [A] silence, in the first half
        {2600, 6957, 6957, 10600, 2000, 1, 4, 0}, {500, 6957, 6957, 10600, 2000, 1, 5, 0},  // stopped
    };
    EXPECT_EQ(LogOf([&] { Run(sound, steps); }), "");
    EXPECT_EQ(sound->IsPlaying(), 0);
    EXPECT_EQ(sound->Rewind(), 0);
    Expect(*sound, steps[0], 0);
    EXPECT_EQ(sound->IsPlaying(), 0);
}

// A sound shorter than a refill plays its beginning again, and the log says so.
TEST_F(Trace, OverRunLine) {
    CDSBuffer* sound = Make(test::Wav(Samples(400, 256), {1, 1000, 8}));
    sound->SetStreamSeconds(0);
    ASSERT_EQ(sound->Load(1), 0);
    EXPECT_EQ(sound->m_nDstDone, 400u);
    EXPECT_EQ(sound->m_nWritePos, 0u);
    const std::string line = "隊長！！大変です(号泣 Over=800 nDstLen=600\n";
    sound->m_pDSB->SetCurrentPosition(1200);
    EXPECT_EQ(LogOf([&] { EXPECT_EQ(sound->StreamPlay(), 0); }), "");  // 400 too many: cut
    EXPECT_EQ(sound->m_nDstDone, 800u);
    EXPECT_EQ(Contents(sound->m_pDSB).substr(0, 400), std::string(400, '\x80'));
    sound->m_pDSB->SetCurrentPosition(500);
    EXPECT_EQ(LogOf([&] { EXPECT_EQ(sound->StreamPlay(), 0); }), line);
    EXPECT_EQ(Contents(sound->m_pDSB).substr(1000, 401), std::string(400, '\x81') + '\x80');

    // An XA stream that is served on when it has ended: 400 frames, of which its header counts 100.
    std::string file = XaFile(Music(400, 1, 1000), 1, 1000);
    sound = Make(file.replace(8, 4, test::LittleEndian(100, 4)));
    sound->SetStreamSeconds(0);
    ASSERT_EQ(sound->Load(1), 0);
    EXPECT_EQ(LogOf([&] { EXPECT_EQ(sound->StreamUpdateXA(1999, 1000), 0); }), "");  // silence
    EXPECT_EQ(LogOf([&] { EXPECT_EQ(sound->StreamUpdateXA(3999, 3000), 0); }),
              "隊長！！大変です(号泣 Over=600 nDstLen=2000 nDstPos=0\n");
}

}  // namespace
}  // namespace soundtest
