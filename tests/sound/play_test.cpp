// The operations on a sound, one after another: their results, the sound's state and what is heard.
#include <cmath>

#include "sound/dsound.h"
#include "sound/sound_support.h"

namespace soundtest {
namespace {

class Play : public SoundTest {
protected:
    // Loudest sample that is heard in so many hundredths of a second, in dB of the sound's own level.
    static int Loudness(int hundredths) {
        const int64_t from = headless::SoundFrame(headless::Clock());
        Wait(static_cast<uint64_t>(hundredths) * 10'000);
        float most = 0;
        for (int i = 0; i < 441 * hundredths; ++i)
            most = std::max(most, std::fabs(headless::Sound().At(from + i, 0)));
        return most > 0 ? static_cast<int>(std::lround(20 * std::log10(most / 0.5))) : -999;
    }

    int Do(char operation) {
        CDSBuffer& s = *m_sound;
        switch (operation) {
            case 'P':
                return s.Play();
            case 'O':
                return s.PlayCurrent(0, 5);
            case 'L':
                return s.PlayCurrent(1, 6);
            case '2':
                return s.PlayCurrent(2, 0);
            case 'S':
                return s.Stop();
            case 'R':
                return s.Rewind();
            case 'p':
                return s.Pause();
            case 'r':
                return s.Resume(), 0;
            case 'c':
                return s.ClearPaused(), 0;
            case 'F':
                return s.FadeStart();
            case 'f':
                return s.FadeStep();
            case '.':
                return Loudness(20);
            default:
                return Loudness(150);
        }
    }

    // One line for each operation.
    std::string Run(const std::string& title, const std::string& operations) {
        std::ostringstream text;
        text << "== " << title << ": " << operations << '\n';
        for (const char operation : operations) {
            text << operation << ' ' << Do(operation);
            const CDSBuffer& s = *m_sound;
            text << (m_sound->IsPlaying() ? " sounds" : " is silent") << " at "
                 << (s.m_pDSB ? Position(s.m_pDSB) : 0) << ", was " << s.m_bWasPlaying << ", loop "
                 << s.m_bLoop << ", parameter " << s.m_nPlayParam << ", fade " << s.m_nFade << '\n';
        }
        return text.str();
    }
};

// '.' and '-' let 0.2 and 1.5 seconds pass; the other letters stand in Do.
TEST_F(Play, OperationsInTurn) {
    const std::string one_second = test::SquareWav(8000, 20, {1, 8000, 16});
    std::string text;
    for (const char* operations : {"P.P.-S", "P.p.r.-", "P-pr", "P.pprr", "P.pScr", "P.Fpr", "L-O-", "2-P-",
                                   "P.S.O.R.O.", "R", "LFf.f.f.f.f.f.f", "P.Ff.ff.O.f"}) {
        ASSERT_EQ(Make(one_second)->Load(0), 0);
        text += Run("whole", operations);
    }
    for (const char* operations : {"P.pr.R.", "PFf.S"}) {
        ASSERT_EQ(Make(one_second)->Load(1), 0);
        text += Run("stream", operations);
    }
    Make(one_second);
    m_sound->m_bWasPlaying = 1;
    text += Run("not loaded", "POSRprcFf");
    test::ExpectStored(text, SOUND_DATA "/operations.txt");
    EXPECT_EQ(headless::Log(), "");
}

// Where the cursor has to stand for a refill, and for the end.
TEST_F(Play, CursorsOfAStream) {
    std::ostringstream text;
    for (const int loop : {0, 1}) {
        for (const int state : {0, 4}) {
            for (const int half : {0, 1}) {
                text << "== loop " << loop << ", state " << state << ", half " << half << '\n';
                for (const DWORD cursor : {0, 1, 499, 500, 999, 1000, 1001, 1499, 1500, 1501, 1998, 1999}) {
                    CDSBuffer* sound = Make(test::ReadFile(SOUND_DATA "/files/stream_pcm8"));
                    ASSERT_EQ(sound->Load(1), 0);
                    sound->PlayCurrent(loop, 0);
                    sound->m_nHalf = sound->m_nEndHalf = half;
                    sound->m_nEndState = state;
                    sound->m_pDSB->SetCurrentPosition(cursor);
                    test::ForgetCalls();
                    EXPECT_EQ(sound->StreamPlay(), 0);
                    text << cursor << ": half " << sound->m_nHalf << " state " << sound->m_nEndState
                         << (test::Calls(Call::kMmioRead) ? " reads" : "")
                         << (sound->IsPlaying() ? "\n" : " stops\n");
                }
            }
        }
    }
    test::ExpectStored(text.str(), SOUND_DATA "/cursors.txt");
}

// Updates that begin and end anywhere in the ring, through its end and with room for parts of a block.
TEST_F(Play, UpdatesAnywhereInTheRing) {
    std::string text;
    for (const char* file :
         {"stream_pcm8", "stream_pcm16_odd", "stream_ima", "stream_ms_stereo", "stream_xa"}) {
        text += std::string("== ") + file + "\n";
        for (const DWORD write : {0, 1, 700, 1900}) {
            for (const auto& [end, least] : {std::pair{999, 500}, {1899, 100}, {50, 40}, {1998, 1999}}) {
                CDSBuffer* sound = Make(test::ReadFile(std::string(SOUND_DATA "/files/") + file));
                ASSERT_EQ(sound->Load(1), 0);
                sound->m_nWritePos = write;
                const auto e = static_cast<DWORD>(end), n = static_cast<DWORD>(least);
                text += LogOf([&] {
                    EXPECT_EQ(
                        sound->m_nKind == 2 ? sound->StreamUpdateXA(e, n) : sound->StreamUpdateWav(e, n), 0);
                });
                text +=
                    std::to_string(write) + " to " + std::to_string(end) + ": " + StreamState(*sound) + "\n";
            }
        }
    }
    test::ExpectStored(text, SOUND_DATA "/updates.txt");
}

// At most four calls a start, and none that changes the volume.
TEST_F(Play, CallsOfAStart) {
    ASSERT_EQ(Make(test::SquareWav(8000))->Load(0), 0);
    for (const int most : {3, 4}) {
        test::ForgetCalls();
        EXPECT_EQ(m_sound->Play(), 0);
        EXPECT_EQ(test::Calls(), most);
        EXPECT_EQ(test::Calls(Call::kSetVolume), 0);
    }
}

TEST_F(Play, NamesAndHandlesOfAnUnusedSound) {
    CDSBuffer sound(m_device);
    sound.SetFileName(std::string(300, 'n').c_str());
    EXPECT_EQ(std::string(sound.m_szName), std::string(259, 'n'));
    int something = 0;
    sound.m_hFile = sound.m_hAcm = &something;  // without a kind
    EXPECT_EQ(LogOf([&] { EXPECT_EQ(sound.Term(), 0); }),
              "    CDSBuffer::Term hFile Error?\n    CDSBuffer::Term hAcm Error?\n");
    EXPECT_EQ(Held(sound), "");
    sound.m_pDS = nullptr;
    sound.SetFileName(m_folder.Write("s", test::SquareWav(800)).c_str());
    EXPECT_EQ(LogOf([&] { EXPECT_EQ(sound.Load(0), 1); }),
              "    CDSBuffer::CreateDSB DSobj==NULL\n    CDSBuffer::LoadWav DSBCreateError\n");
}

TEST_F(Play, DevicesOfBothQualities) {
    const struct {
        int quality;
        WAVEFORMATEX wfx;
        char silence;
    } rows[] = {{1, {1, 2, 44100, 176400, 4, 16, 0}, '\0'}, {0, {1, 1, 22050, 22050, 1, 8, 0}, '\x80'}};
    for (const auto& row : rows) {
        CDSound device;
        ASSERT_EQ(device.Init(nullptr, row.quality), 0);
        EXPECT_EQ(std::memcmp(&device.m_wfxPrimary, &row.wfx, sizeof row.wfx), 0);
        EXPECT_EQ(Contents(device.m_pSilent), std::string(2 * row.wfx.nAvgBytesPerSec, row.silence));
        Wait(5'000'000);
        EXPECT_EQ(Status(device.m_pSilent), DSBSTATUS_PLAYING | DSBSTATUS_LOOPING);
        for (const int slot : {0, 1, 575}) {
            device.m_pSlot[slot] = new CDSBuffer(device.m_pDS);
            device.m_pSlot[slot]->SetFileName(m_folder.Write("s", test::SquareWav(800)).c_str());
            EXPECT_EQ(device.m_pSlot[slot]->Load(0), 0);
        }
        EXPECT_EQ(test::LiveBuffers(), 2 + 3);
        for (int i = 0; i < 2; ++i) EXPECT_EQ(device.Term(), 0);
        EXPECT_EQ(test::LiveBuffers(), 0);
        for (const CDSBuffer* slot : device.m_pSlot) EXPECT_EQ(slot, nullptr);
    }
    CDSound never;
    EXPECT_EQ(
        never.PlaySilentBuffer() + never.StopSilentBuffer() + never.Compact() + never.CreateSilentBuffer(2),
        4);
}

}  // namespace
}  // namespace soundtest
