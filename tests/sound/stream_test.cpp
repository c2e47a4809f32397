// Streams: what a refill does at which cursor, every failure of one, and what goes on after it.
#include "sound/sound_support.h"

namespace soundtest {
namespace {

constexpr DWORD kRing = 32000;  // two seconds at 8000 Hz, 16 bits

class Stream : public SoundTest {
protected:
    void SetUp() override {
        SoundTest::SetUp();
        m_samples = Music(22 * 8000, 1, 8000);
        m_wav = test::Wav(m_samples, {1, 8000, 16});
    }

    CDSBuffer* Loaded(const std::string& bytes) {
        test::ForgetCalls();
        CDSBuffer* sound = Make(bytes);
        EXPECT_EQ(sound->Load(1), 0);
        EXPECT_EQ(sound->m_bStream, 1);
        EXPECT_EQ(sound->m_nBufSize, kRing);
        test::ForgetCalls();
        return sound;
    }

    static void SetCursor(CDSBuffer* sound, DWORD position) {
        ASSERT_EQ(sound->m_pDSB->SetCurrentPosition(position), DS_OK);
    }

    // Whatever is done with a stream that has lost its file, nothing is read.
    static void ExpectNoReading(CDSBuffer* sound) {
        test::ForgetCalls();
        for (DWORD cursor = 0; cursor < kRing; cursor += 2000) {
            SetCursor(sound, cursor + 2);
            sound->StreamPlay();
            sound->Play();
        }
        EXPECT_EQ(test::Calls(Call::kMmioRead) + test::Calls(Call::kFileRead), 0);
    }

    Samples m_samples;
    std::string m_wav;
};

struct RefillRow {
    const char* log;
    Failure fail;
};

// What can fail in either kind's refill once there is sound to copy. In LockError's lines: the place and the
// bytes.
const RefillRow kCopyFailures[] = {
    {"BufferLost(Lock)\n", Both(Fail(Call::kLock, DSERR_BUFFERLOST), Fail(Call::kRestore, kFailed))},
    {"LockError %d %d HRESULT->DSERR_INVALIDPARAM\n", Fail(Call::kLock, DSERR_INVALIDPARAM)},
    {"LockError %d %d HRESULT->UnknownError\n", Fail(Call::kLock, DSERR_BUFFERLOST, 0, 2)},
    {"BufSizeCalcError\n", Both(Fail(Call::kLock, DS_OK), Fail(Call::kUnlock, DS_OK))},
    {"BufSizeCalcError\nCDSBuffer::StreamUpdate%s UnlockError\n", Fail(Call::kLock, DS_OK)},
    {"UnlockError\n", Fail(Call::kUnlock, kFailed)},
};

TEST_F(Stream, RefillFailures) {
    std::vector<RefillRow> wav_rows = {
        {"ReadError\n", Fail(Call::kMmioRead, -1)},
        {"PrepareError B\n", Fail(Call::kAcmPrepare, 11)},
        {"ConvertError 200\n", Fail(Call::kAcmConvert, 512)},
        {"UnprepareError\n", Fail(Call::kAcmUnprepare, 1)},
    };
    std::vector<RefillRow> xa_rows = {{"ConvertError\n", Fail(Call::kXaConvert, 0)}};
    for (auto* rows : {&wav_rows, &xa_rows})
        rows->insert(rows->end(), std::begin(kCopyFailures), std::end(kCopyFailures));
    const std::string xa_file = XaFile(m_samples, 1, 8000, xa::Mode::kFast);
    for (const bool xa : {false, true}) {
        const std::string kind = xa ? "XA" : "Wav";
        for (const int half : {0, 1}) {
            for (const RefillRow& row : xa ? xa_rows : wav_rows) {
                SCOPED_TRACE(kind + " " + row.log);
                CDSBuffer* sound = Loaded(xa ? xa_file : m_wav);
                EXPECT_EQ(sound->m_nKind, xa ? 2 : 1);
                SetCursor(sound, 16002);
                if (half == 1) {
                    EXPECT_EQ(sound->StreamPlay(), 0);
                    SetCursor(sound, 2);
                }
                std::string log = row.log;
                if (log.find("%d %d") != std::string::npos)
                    log.replace(log.find("%d %d"), 5, half == 0 ? "0 16000" : "16000 16000");
                if (log.find("%s") != std::string::npos) log.replace(log.find("%s"), 2, kind);
                row.fail();
                EXPECT_EQ(LogOf([&] { EXPECT_EQ(sound->StreamPlay(), 1); }),
                          "CDSBuffer::StreamUpdate" + kind + " " + log + "CDSBuffer::StreamPlay" + kind +
                              (half == 0 ? " [A]" : " [B]") + "StreamUpdateError\n");
                EXPECT_EQ(sound->m_nHalf, half);
                EXPECT_EQ(sound->m_nEndState, 0);
                if (row.log == std::string("ConvertError\n")) continue;  // what had been read is gone
                EXPECT_EQ(LogOf([&] { EXPECT_EQ(sound->StreamPlay(), 0); }), "");  // tries again
                EXPECT_EQ(sound->m_nHalf, 1 - half);
            }
        }
    }
}

TEST_F(Stream, LostBufferIsRestoredAndGoesOn) {
    CDSBuffer* sound = Loaded(m_wav);
    test::Lose(sound->m_pDSB);
    SetCursor(sound, 20000);
    EXPECT_EQ(LogOf([&] { EXPECT_EQ(sound->StreamPlay(), 0); }), "");
    EXPECT_EQ(Contents(sound->m_pDSB).substr(0, 16000), Bytes(m_samples).substr(kRing, 16000));
}

TEST_F(Stream, CursorDecides) {
    const struct {
        int half;
        DWORD cursor;
        bool refills;
    } rows[] = {
        {0, 0, false},    {0, 2, false},     {0, 15998, false}, {0, 16000, false}, {0, 16002, true},
        {0, 23998, true}, {0, 24000, false}, {0, 24002, false}, {0, 31998, false}, {1, 0, false},
        {1, 2, true},     {1, 15998, true},  {1, 16000, false}, {1, 16002, false}, {1, 31998, false},
    };
    for (const auto& row : rows) {
        CDSBuffer* sound = Loaded(m_wav);
        sound->m_nHalf = row.half;
        SetCursor(sound, row.cursor);
        EXPECT_EQ(sound->StreamPlay(), 0);
        EXPECT_EQ(test::Calls(Call::kMmioRead), row.refills ? 1 : 0) << row.half << " " << row.cursor;
        EXPECT_EQ(sound->m_nHalf, row.refills ? 1 - row.half : row.half) << row.cursor;
    }
    CDSBuffer* sound = Loaded(m_wav);
    test::Order(Call::kGetCurrentPosition, kFailed);
    EXPECT_EQ(LogOf([&] { EXPECT_EQ(sound->StreamPlay(), 1); }),
              "CDSBuffer::StreamPlay GetCurrentPosError\n");
}

TEST_F(Stream, StopsInsideTheSilentHalf) {
    const struct {
        int end_half, loop;
        DWORD cursor;
        bool stops;
    } rows[] = {
        {0, 0, 0, false},     {0, 0, 2, true},      {0, 0, 15998, true}, {0, 0, 16000, false},
        {0, 0, 16002, false}, {1, 0, 16000, false}, {1, 0, 16002, true}, {1, 0, 31996, true},
        {1, 0, 31998, true},  {1, 0, 2, false},     {0, 1, 2, false},    {1, 1, 16002, false},
    };
    for (const auto& row : rows) {
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
            EXPECT_EQ(test::Calls(Call::kMmioRead), 0);
        }
    }
    CDSBuffer* sound = Loaded(m_wav);
    sound->m_nEndState = 5;
    const int locks = test::Calls(Call::kLock), cursors = test::Calls(Call::kGetCurrentPosition);
    EXPECT_EQ(sound->StreamUpdateWav(kRing - 1, kRing / 4), 0);
    EXPECT_EQ(sound->StreamUpdateXA(kRing - 1, kRing / 4), 0);
    EXPECT_EQ(sound->StreamPlay(), 0);
    EXPECT_EQ(test::Calls(Call::kLock), locks);
    EXPECT_EQ(test::Calls(Call::kGetCurrentPosition), cursors);
    EXPECT_EQ(test::Calls(Call::kMmioRead), 0);
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
    test::Order(Call::kPlay, kFailed);
    EXPECT_EQ(sound->Play(), 1);
    EXPECT_EQ(sound->Play(), 0);
    test::Order(Call::kPlay, 1);
    EXPECT_EQ(sound->Rewind(), 1);  // could not go on playing
    EXPECT_EQ(sound->m_nEndState, 0);
}

TEST_F(Stream, ResetFailures) {
    const std::string xa_file = XaFile(m_samples, 1, 8000);
    const struct {
        const std::string& file;
        Failure fail;
        const char* log;
        bool held;  // the file: else it has to be loaded anew
    } rows[] = {
        {m_wav, Fail(Call::kAcmConvert, 2),
         "CDSBuffer::StreamUpdateWav ConvertError 2\nCDSBuffer::StreamUpdateResetWav StreamUpdateError\n",
         true},
        {m_wav, Fail(Call::kAcmStreamOpen, 1), "CDSBuffer::StreamUpdateResetWav ACM OPEN ERROR\n", false},
        {xa_file, Fail(Call::kXaConvert, 0),
         "CDSBuffer::StreamUpdateXA ConvertError\nCDSBuffer::StreamUpdateResetXA StreamUpdateError\n", true},
        {xa_file, Fail(Call::kXaOpen, 0), "CDSBuffer::StreamUpdateResetXA DecodeOpenError\n", false},
        {xa_file, Fail(Call::kFileRead, 31), "CDSBuffer::LoadXA HeaderReadError\n", false},
    };
    for (const auto& row : rows) {
        for (const bool play : {false, true}) {
            SCOPED_TRACE(row.log);
            CDSBuffer* sound = Loaded(row.file);
            row.fail();
            EXPECT_EQ(LogOf([&] { EXPECT_EQ(play ? sound->Play() : sound->Rewind(), 1); }), row.log);
            EXPECT_EQ(sound->m_hFile != nullptr, row.held);
            EXPECT_EQ(sound->m_pSrcFormat != nullptr, row.held && sound->m_nKind == 1);
            if (row.held) {
                EXPECT_EQ(sound->Play(), 0);
            } else {
                ExpectNoReading(sound);
            }
        }
    }
}

// A file that ends before its declared length: silence for what is missing, and the end at the declared
// length.
TEST_F(Stream, FileShorterThanDeclared) {
    for (size_t held : {0u, 1u, 2u, 5000u, 20000u, 70001u, 200000u}) {
        std::string wav = m_wav;
        wav.resize(44 + held);
        CDSBuffer* sound = Loaded(wav);
        EXPECT_EQ(sound->m_nPcmLen, 352000u);
        EXPECT_EQ(sound->m_nEndState, held < kRing ? 1 : 0) << held;
        std::string in_ring = wav.substr(44, kRing);
        in_ring.resize(kRing);
        if (held % 2 == 0) {
            EXPECT_EQ(Contents(sound->m_pDSB), in_ring) << held;
        }
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
    const std::string ima = Encode(SF_FORMAT_IMA_ADPCM, samples, 1, 8000).file;
    const std::string ms = Encode(SF_FORMAT_MS_ADPCM, samples, 1, 8000).file;
    const std::string xa_file = XaFile(samples, 1, 8000, xa::Mode::kFast);
    std::string longer = xa_file;
    longer[10] = '\1';  // 65,536 frames more than there are
    const auto cut = [](const std::string& bytes, size_t by) { return bytes.substr(0, bytes.size() - by); };
    const auto data = [](const std::string& wav, size_t size) {
        std::string text = wav.substr(0, wav.find("data") + 4) + test::LittleEndian(size, 4);
        return text + wav.substr(text.size(), size);
    };
    const std::string pcm = test::Wav(samples, {1, 8000, 16});
    std::vector<std::string> files = {data(ms, 9001), cut(ima, 1), cut(ms, 77), longer, cut(longer, 100)};
    for (const size_t size : {0, 1, 2, 40001}) files.push_back(data(pcm, size));
    for (const size_t size : {3, 255, 9000}) files.push_back(data(ima, size));
    for (const size_t by : {size_t{1}, size_t{5000}, xa_file.size() - 32}) files.push_back(cut(xa_file, by));
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
