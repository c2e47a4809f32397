// Streams: what a refill does at which cursor, every failure, and what goes on after one.
#include "sound/sound_support.h"

using DsCall = directsound_test::Call;
using faults::Call;

namespace soundtest {
namespace {

constexpr DWORD kRing = 32000;  // two seconds at 8000 Hz, 16 bits

std::string XaOf(const Samples& samples, int channels, int rate, xa::Mode mode = xa::Mode::kFine) {
    const std::vector<uint8_t> file = xa::Encode(samples, channels, static_cast<uint32_t>(rate), mode);
    return {file.begin(), file.end()};
}

class Stream : public SoundTest {
protected:
    void SetUp() override {
        SoundTest::SetUp();
        m_samples = Music(22 * 8000, 1, 8000);
        m_wav = test::Wav(m_samples, {1, 8000, 16});
    }

    void TearDown() override {
        directsound_test::FailNothing();
        SoundTest::TearDown();
    }

    CDSBuffer* Loaded(const std::string& bytes) {
        directsound_test::FailNothing();
        faults::FailNothing();
        CDSBuffer* sound = Make(bytes);
        EXPECT_EQ(sound->Load(1), 0);
        EXPECT_EQ(sound->m_bStream, 1);
        EXPECT_EQ(sound->m_nBufSize, kRing);
        faults::FailNothing();
        return sound;
    }

    static void SetCursor(CDSBuffer* sound, DWORD position) {
        ASSERT_EQ(sound->m_pDSB->SetCurrentPosition(position), DS_OK);
    }

    Samples m_samples;
    std::string m_wav;
};

TEST_F(Stream, LoadFailures) {
    struct Row {
        const char* log;
        std::function<void()> fail;
        bool held, buffer;  // file, format and blocks
    };
    const Row rows[] = {
        {"CDSBuffer::LoadWav Size(d2s)Get Error\n", [] { faults::FailNext(Call::kAcmStreamSize, 1, 1); },
         false, false},
        {"CDSBuffer::LoadWav Size(s2d)Get Error\n", [] { faults::FailNext(Call::kAcmStreamSize, 1, 2); },
         false, false},
        {"HRESULT->DSERR_OUTOFMEMORY\nCDSBuffer::CreateDSB 1stCreateFailed\nHRESULT->DSERR_OUTOFMEMORY\n"
         "CDSBuffer::CreateDSB CreateDSBError\nCDSBuffer::LoadWav DSBCreateError(Stream)\n",
         [] { directsound_test::FailNext(DsCall::kCreateSoundBuffer, DSERR_OUTOFMEMORY, 0, 2); }, false,
         false},
        {"CDSBuffer::CreateDSB GetCapsError\nCDSBuffer::LoadWav DSBCreateError(Stream)\n",
         [] { directsound_test::FailNext(DsCall::kGetCaps, kFailed); }, false, true},
        {"CDSBuffer::StreamUpdateWav ReadError\nCDSBuffer::LoadWav StreamUpdateError\n",
         [] { faults::FailNext(Call::kMmioRead, -1, 1); }, true, true},
    };
    for (const Row& row : rows) {
        CDSBuffer* sound = Make(m_wav);
        faults::FailNothing();
        directsound_test::FailNothing();
        row.fail();
        EXPECT_EQ(LogOf([&] { EXPECT_EQ(sound->Load(1), 1); }), row.log);
        directsound_test::FailNothing();
        faults::FailNothing();
        EXPECT_EQ(sound->m_hFile != nullptr, row.held) << row.log;
        EXPECT_EQ(sound->m_pSrcFormat != nullptr, row.held) << row.log;
        EXPECT_EQ(sound->m_pSrc != nullptr, row.held) << row.log;
        EXPECT_EQ(sound->m_pDst != nullptr, row.held) << row.log;
        EXPECT_NE(sound->m_hAcm, nullptr) << row.log;
        EXPECT_EQ(sound->m_pDSB != nullptr, row.buffer) << row.log;
        EXPECT_EQ(sound->m_bStream, 1);
        // Whatever is done with what is left, nothing is read without a file.
        EXPECT_EQ(sound->Play(), row.held ? 0 : 1) << row.log;
        if (row.buffer) SetCursor(sound, row.held ? 0 : 1);
        sound->PlayCurrent(0, 0);
        sound->StreamPlay();
        EXPECT_EQ(faults::Calls(Call::kMmioRead) > 0, row.held) << row.log;
    }
}

TEST_F(Stream, RefillFailures) {
    struct Row {
        const char* log;
        std::function<void()> fail;
    };
    const Row rows[] = {
        {"ReadError\n", [] { faults::FailNext(Call::kMmioRead, -1); }},
        {"PrepareError B\n", [] { faults::FailNext(Call::kAcmPrepare, 11); }},
        {"ConvertError 200\n", [] { faults::FailNext(Call::kAcmConvert, 512); }},
        {"UnprepareError\n", [] { faults::FailNext(Call::kAcmUnprepare, 1); }},
        {"BufferLost(Lock)\n",
         [] {
             directsound_test::FailNext(DsCall::kLock, DSERR_BUFFERLOST);
             directsound_test::FailNext(DsCall::kRestore, kFailed);
         }},
        {"LockError %d %d HRESULT->DSERR_INVALIDPARAM\n",
         [] { directsound_test::FailNext(DsCall::kLock, DSERR_INVALIDPARAM); }},
        {"LockError %d %d HRESULT->UnknownError\n",
         [] { directsound_test::FailNext(DsCall::kLock, DSERR_BUFFERLOST, 0, 2); }},
        {"BufSizeCalcError\n", [] { faults::HalveNextLock(); }},
        {"BufSizeCalcError\nCDSBuffer::StreamUpdateWav UnlockError\n",
         [] {
             faults::HalveNextLock();
             directsound_test::FailNext(DsCall::kUnlock, kFailed);
         }},
        {"UnlockError\n", [] { directsound_test::FailNext(DsCall::kUnlock, kFailed); }},
    };
    for (int half : {0, 1}) {
        for (const Row& row : rows) {
            CDSBuffer* sound = Loaded(m_wav);
            SetCursor(sound, 16002);
            if (half == 1) {
                EXPECT_EQ(sound->StreamPlay(), 0);
                SetCursor(sound, 2);
            }
            char line[200];
            snprintf(line, sizeof(line), row.log, half == 0 ? 0 : 16000, 16000);
            row.fail();
            EXPECT_EQ(LogOf([&] { EXPECT_EQ(sound->StreamPlay(), 1); }),
                      "CDSBuffer::StreamUpdateWav " + std::string(line) + "CDSBuffer::StreamPlayWav [" +
                          (half == 0 ? "A" : "B") + "]StreamUpdateError\n");
            EXPECT_EQ(sound->m_nHalf, half) << row.log;
            EXPECT_EQ(sound->m_nEndState, 0);
            EXPECT_EQ(LogOf([&] { EXPECT_EQ(sound->StreamPlay(), 0); }), "") << row.log;  // tries again
            EXPECT_EQ(sound->m_nHalf, 1 - half);
        }
    }
}

TEST_F(Stream, XaRefillFailures) {
    const std::string file = XaOf(m_samples, 1, 8000, xa::Mode::kFast);
    const std::pair<const char*, std::function<void()>> rows[] = {
        {"ConvertError\n", [] { faults::FailNext(Call::kXaConvert, 0); }},
        {"BufferLost(Lock)\n",
         [] {
             directsound_test::FailNext(DsCall::kLock, DSERR_BUFFERLOST);
             directsound_test::FailNext(DsCall::kRestore, kFailed);
         }},
        {"LockError 0 16000 HRESULT->DSERR_BADFORMAT\n",
         [] { directsound_test::FailNext(DsCall::kLock, DSERR_BADFORMAT); }},
        {"BufSizeCalcError\n", [] { faults::HalveNextLock(); }},
        {"BufSizeCalcError\nCDSBuffer::StreamUpdateXA UnlockError\n",
         [] {
             faults::HalveNextLock();
             directsound_test::FailNext(DsCall::kUnlock, kFailed);
         }},
        {"UnlockError\n", [] { directsound_test::FailNext(DsCall::kUnlock, kFailed); }},
    };
    for (const auto& [log, fail] : rows) {
        CDSBuffer* sound = Loaded(file);
        EXPECT_EQ(sound->m_nKind, 2);
        SetCursor(sound, 20000);
        fail();
        EXPECT_EQ(LogOf([&] { EXPECT_EQ(sound->StreamPlay(), 1); }),
                  "CDSBuffer::StreamUpdateXA " + std::string(log) +
                      "CDSBuffer::StreamPlayXA [A]StreamUpdateError\n");
        EXPECT_EQ(sound->m_nHalf, 0);
        if (log == std::string("ConvertError\n")) continue;  // what had been read is gone
        EXPECT_EQ(LogOf([&] { EXPECT_EQ(sound->StreamPlay(), 0); }), "") << log;
        SetCursor(sound, 4);
        faults::FailNext(Call::kXaConvert, 0);
        EXPECT_EQ(LogOf([&] { EXPECT_EQ(sound->StreamPlay(), 1); }),
                  "CDSBuffer::StreamUpdateXA ConvertError\nCDSBuffer::StreamPlayXA [B]StreamUpdateError\n");
        EXPECT_EQ(sound->m_nHalf, 1);
    }
}

TEST_F(Stream, LostBufferIsRestoredAndGoesOn) {
    CDSBuffer* sound = Loaded(m_wav);
    directsound_test::Lose(sound->m_pDSB);
    SetCursor(sound, 20000);
    EXPECT_EQ(LogOf([&] { EXPECT_EQ(sound->StreamPlay(), 0); }), "");
    EXPECT_EQ(Contents(sound->m_pDSB).substr(0, 16000), Bytes(m_samples).substr(kRing, 16000));
}

TEST_F(Stream, CursorDecides) {
    struct Row {
        int half;
        DWORD cursor;
        bool refills;
    };
    const Row rows[] = {
        {0, 0, false},    {0, 2, false},     {0, 15998, false}, {0, 16000, false}, {0, 16002, true},
        {0, 23998, true}, {0, 24000, false}, {0, 24002, false}, {0, 31998, false}, {1, 0, false},
        {1, 2, true},     {1, 15998, true},  {1, 16000, false}, {1, 16002, false}, {1, 31998, false},
    };
    for (const Row& row : rows) {
        CDSBuffer* sound = Loaded(m_wav);
        sound->m_nHalf = row.half;
        SetCursor(sound, row.cursor);
        EXPECT_EQ(sound->StreamPlay(), 0);
        EXPECT_EQ(faults::Calls(Call::kMmioRead), row.refills ? 1 : 0) << row.half << " " << row.cursor;
        EXPECT_EQ(sound->m_nHalf, row.refills ? 1 - row.half : row.half) << row.cursor;
    }
    CDSBuffer* sound = Loaded(m_wav);
    directsound_test::FailNext(DsCall::kGetCurrentPosition, kFailed);
    EXPECT_EQ(LogOf([&] { EXPECT_EQ(sound->StreamPlay(), 1); }),
              "CDSBuffer::StreamPlay GetCurrentPosError\n");
}

TEST_F(Stream, StopsInsideTheSilentHalf) {
    struct Row {
        int end_half, loop;
        DWORD cursor;
        bool stops;
    };
    const Row rows[] = {
        {0, 0, 0, false},     {0, 0, 2, true},      {0, 0, 15998, true}, {0, 0, 16000, false},
        {0, 0, 16002, false}, {1, 0, 16000, false}, {1, 0, 16002, true}, {1, 0, 31996, true},
        {1, 0, 31998, true},  {1, 0, 2, false},     {0, 1, 2, false},    {1, 1, 16002, false},
    };
    for (const Row& row : rows) {
        CDSBuffer* sound = Loaded(m_wav);
        EXPECT_EQ(sound->PlayCurrent(row.loop, 0), 0);
        sound->m_nEndState = 4;
        sound->m_nEndHalf = row.end_half;
        sound->m_nHalf = 0;
        SetCursor(sound, row.cursor);
        EXPECT_EQ(sound->StreamPlay(), 0);
        EXPECT_EQ(sound->IsPlaying(), row.stops ? 0 : 1) << row.end_half << " " << row.cursor;
        EXPECT_EQ(sound->m_nEndState == 5, row.stops) << row.end_half << " " << row.cursor;
        if (row.loop == 0) {
            EXPECT_EQ(faults::Calls(Call::kMmioRead), 0);
        }
    }
    CDSBuffer* sound = Loaded(m_wav);
    sound->m_nEndState = 5;
    const int locks = directsound_test::Calls(DsCall::kLock),
              cursors = directsound_test::Calls(DsCall::kGetCurrentPosition);
    EXPECT_EQ(sound->StreamUpdateWav(kRing - 1, kRing / 4), 0);
    EXPECT_EQ(sound->StreamUpdateXA(kRing - 1, kRing / 4), 0);
    EXPECT_EQ(sound->StreamPlay(), 0);
    EXPECT_EQ(directsound_test::Calls(DsCall::kLock), locks);
    EXPECT_EQ(directsound_test::Calls(DsCall::kGetCurrentPosition), cursors);
    EXPECT_EQ(faults::Calls(Call::kMmioRead), 0);
}

TEST_F(Stream, PlayOperations) {
    CDSBuffer* sound = Loaded(m_wav);
    EXPECT_EQ(sound->PlayCurrent(0, 3), 0);
    DWORD status = 0;
    sound->m_pDSB->GetStatus(&status);
    EXPECT_EQ(status, DSBSTATUS_PLAYING | DSBSTATUS_LOOPING);
    SetCursor(sound, 20000);
    EXPECT_EQ(sound->StreamPlay(), 0);
    EXPECT_EQ(sound->Rewind(), 0);
    EXPECT_EQ(sound->IsPlaying(), 1);  // as before
    EXPECT_EQ(Contents(sound->m_pDSB), Bytes(m_samples).substr(0, kRing));
    EXPECT_EQ(sound->Stop(), 0);
    EXPECT_EQ(sound->Rewind(), 0);
    EXPECT_EQ(sound->IsPlaying(), 0);
    directsound_test::FailNext(DsCall::kPlay, kFailed);
    EXPECT_EQ(sound->Play(), 1);
    EXPECT_EQ(sound->Play(), 0);
    directsound_test::FailNext(DsCall::kPlay, 1);
    EXPECT_EQ(sound->Rewind(), 1);  // could not go on playing
    EXPECT_EQ(sound->m_nEndState, 0);
}

TEST_F(Stream, ResetFailures) {
    CDSBuffer* sound = Loaded(m_wav);
    faults::FailNext(Call::kAcmConvert, 2);
    EXPECT_EQ(
        LogOf([&] { EXPECT_EQ(sound->Play(), 1); }),
        "CDSBuffer::StreamUpdateWav ConvertError 2\nCDSBuffer::StreamUpdateResetWav StreamUpdateError\n");
    EXPECT_NE(sound->m_hFile, nullptr);
    EXPECT_NE(sound->m_pSrcFormat, nullptr);
    EXPECT_EQ(sound->Play(), 0);

    faults::FailNext(Call::kAcmStreamOpen, 1);
    EXPECT_EQ(LogOf([&] { EXPECT_EQ(sound->Rewind(), 1); }),
              "CDSBuffer::StreamUpdateResetWav ACM OPEN ERROR\n");
    EXPECT_EQ(sound->m_hFile, nullptr);
    EXPECT_EQ(sound->m_pSrcFormat, nullptr);
    faults::FailNothing();
    for (DWORD cursor = 0; cursor < kRing; cursor += 2000) {
        SetCursor(sound, cursor + 2);
        sound->StreamPlay();
        sound->Play();
    }
    EXPECT_EQ(faults::Calls(Call::kMmioRead), 0);

    sound = Loaded(XaOf(m_samples, 1, 8000));
    faults::FailNext(Call::kXaConvert, 0);
    EXPECT_EQ(LogOf([&] { EXPECT_EQ(sound->Play(), 1); }),
              "CDSBuffer::StreamUpdateXA ConvertError\nCDSBuffer::StreamUpdateResetXA StreamUpdateError\n");
    EXPECT_NE(sound->m_hFile, nullptr);
    EXPECT_EQ(sound->Play(), 0);
    faults::FailNext(Call::kXaOpen, 0);
    EXPECT_EQ(LogOf([&] { EXPECT_EQ(sound->Rewind(), 1); }),
              "CDSBuffer::StreamUpdateResetXA DecodeOpenError\n");
    EXPECT_EQ(sound->m_hFile, nullptr);
    sound = Loaded(XaOf(m_samples, 1, 8000));
    faults::FailNext(Call::kFileRead, 31);
    EXPECT_EQ(LogOf([&] { EXPECT_EQ(sound->Rewind(), 1); }), "CDSBuffer::LoadXA HeaderReadError\n");
    EXPECT_EQ(sound->m_hFile, nullptr);
    faults::FailNothing();
    for (DWORD cursor = 0; cursor < kRing; cursor += 2000) {
        SetCursor(sound, cursor + 2);
        sound->StreamPlay();
        sound->Play();
    }
    EXPECT_EQ(faults::Calls(Call::kFileRead), 0);
}

// A file that ends before its declared length: silence for what is missing, and the end at the declared
// length.
TEST_F(Stream, FileShorterThanDeclared) {
    for (size_t held : {0u, 1u, 2u, 5000u, 70001u, 200000u}) {
        std::string wav = m_wav;
        wav.resize(44 + held);
        CDSBuffer* sound = Loaded(wav);
        EXPECT_EQ(sound->m_nPcmLen, 352000u);
        EXPECT_EQ(LogOf([&] { EXPECT_EQ(sound->Play(), 0); }), "");
        int refills = 0, ended_at = 0;
        for (DWORD cursor = 0; sound->m_nEndState != 5 && refills < 200; ++refills) {
            cursor = cursor == 20000 ? 4000 : 20000;
            SetCursor(sound, cursor);
            EXPECT_EQ(sound->StreamPlay(), 0);
            if (sound->m_nDstDone >= sound->m_nPcmLen && ended_at == 0) ended_at = refills;
        }
        EXPECT_EQ(sound->m_nEndState, 5) << held;
        EXPECT_EQ(ended_at, 19) << held;  // 2 s by the first fill, 1 s by each refill
        EXPECT_EQ(sound->IsPlaying(), 0);
    }
}

TEST_F(Stream, ShortReadKeepsWhatWasHeld) {
    std::string wav = m_wav;
    wav.resize(44 + 20000);
    CDSBuffer* sound = Loaded(wav);
    EXPECT_EQ(sound->m_nEndState, 1);
    EXPECT_EQ(Contents(sound->m_pDSB), wav.substr(44) + std::string(kRing - 20000, '\0'));
}

// An update across the ring's end copies into both parts.
TEST_F(Stream, WrapsAtTheEndOfTheRing) {
    CDSBuffer* sound = Loaded(m_wav);
    sound->m_nWritePos = 30000;
    const std::string before = Contents(sound->m_pDSB);
    EXPECT_EQ(sound->StreamUpdateWav(15999, 8000), 0);  // 17999 bytes: 8999 frames and a byte of silence
    const std::string pcm = Bytes(m_samples).substr(kRing, 17998), after = Contents(sound->m_pDSB);
    EXPECT_EQ(after.substr(30000), pcm.substr(0, 2000));
    EXPECT_EQ(after.substr(0, 15998), pcm.substr(2000));
    EXPECT_EQ(after[15998], '\0');
    EXPECT_EQ(after.substr(15999, 30000 - 15999), before.substr(15999, 30000 - 15999));
    EXPECT_EQ(sound->m_nWritePos, 15998u);
}

// Sounds that end in the middle of everything must end; the over-run line is no failure.
TEST_F(Stream, PassesWithoutProgressReturn) {
    const Samples samples = Music(3 * 8000, 1, 8000);
    const CodedWav ima = Encode(m_folder.Path("i.wav"), SF_FORMAT_IMA_ADPCM, samples, 1, 8000);
    const CodedWav ms = Encode(m_folder.Path("m.wav"), SF_FORMAT_MS_ADPCM, samples, 1, 8000);
    const std::string xa_file = XaOf(samples, 1, 8000, xa::Mode::kFast);
    std::string longer = xa_file;
    longer[10] = '\1';  // 65,536 frames more than there are
    const auto cut = [](const std::string& bytes, size_t by) { return bytes.substr(0, bytes.size() - by); };
    const auto data = [](const std::string& wav, size_t size) {
        std::string text = wav.substr(0, wav.find("data") + 4) + test::LittleEndian(size, 4);
        return text + wav.substr(text.size(), size);
    };
    const std::string pcm = test::Wav(samples, {1, 8000, 16});
    const std::string files[] = {data(pcm, 0),
                                 data(pcm, 1),
                                 data(pcm, 2),
                                 data(pcm, 40001),
                                 data(ima.file, 255),
                                 data(ima.file, 3),
                                 data(ima.file, 9000),
                                 data(ms.file, 9001),
                                 cut(ima.file, 1),
                                 cut(ms.file, 77),
                                 cut(xa_file, 1),
                                 cut(xa_file, 5000),
                                 cut(xa_file, xa_file.size() - 32),
                                 longer,
                                 cut(longer, 100)};
    int number = 0;
    for (const std::string& file : files) {
        for (int loop : {0, 1}) {
            CDSBuffer* sound = Make(file);
            sound->SetStreamSeconds(0);
            sound->m_bLoop = loop;
            EXPECT_EQ(sound->Load(1), 0) << number;
            EXPECT_EQ(sound->m_bStream, 1) << number;
            EXPECT_EQ(sound->Play(), 0) << number;
            for (int i = 0; i < 40; ++i) {
                SetCursor(sound, i % 2 == 0 ? sound->m_nBufSize * 5 / 8 : sound->m_nBufSize / 4);
                EXPECT_EQ(sound->StreamPlay(), 0) << number;
                EXPECT_LT(sound->m_nWritePos, sound->m_nBufSize) << number;
            }
            if (loop == 1) {
                EXPECT_EQ(sound->IsPlaying(), 1) << number;
            }
        }
        ++number;
    }
}

}  // namespace
}  // namespace soundtest
