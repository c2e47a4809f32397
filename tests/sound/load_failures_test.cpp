// Every way in which a load can fail: what the log says, and what is left.
#include "sound/sound_support.h"

namespace soundtest {
namespace {

struct Row {
    std::string log;
    Failure fail;
    std::string left;
    char content = '?';  // of the buffer: 's' silence, 'd' the sound, '?' anything
};

class LoadFailures : public SoundTest {
protected:
    template <class Load>
    std::string FailedLoad(const std::string& file, const Failure& fail, Load load) {
        Make(file);
        test::ForgetCalls();
        fail();
        const std::string log = LogOf([&] { EXPECT_EQ(load(*m_sound), 1); });
        test::ForgetCalls();
        return log;
    }

    void Check(const Row& row, const std::string& file, int stream) {
        SCOPED_TRACE(row.log);
        const bool xa = file[0] == 'K';
        EXPECT_EQ(
            FailedLoad(file, row.fail, [&](auto& s) { return xa ? s.LoadXA(stream) : s.LoadWav(stream); }),
            row.log);
        EXPECT_EQ(Held(*m_sound), row.left);
        EXPECT_EQ(m_sound->m_bStream, stream);
        const bool buffer = m_sound->m_pDSB != nullptr, open = m_sound->m_hFile != nullptr;
        if (row.content != '?') {
            const std::string pcm =
                row.content == 'd' ? Bytes(m_samples) : std::string(m_samples.size() * 2, '\0');
            EXPECT_EQ(Contents(m_sound->m_pDSB), pcm);
        }
        // Whatever is done with what is left, nothing is read without a file.
        EXPECT_EQ(m_sound->Play(), buffer && (open || stream == 0) ? 0 : 1);
        m_sound->PlayCurrent(0, 0);
        m_sound->StreamPlay();
        EXPECT_EQ(test::Calls(Call::kMmioRead) + test::Calls(Call::kFileRead) > 0, open);
        EXPECT_EQ(LogOf([&] { m_sound->Term(); }), "");  // nothing that it cannot close
        EXPECT_EQ(Held(*m_sound), "");
        if (!xa) return;
        // By content it is the other loader's next.
        EXPECT_EQ(FailedLoad(file, row.fail, [&](auto& s) { return s.Load(stream); }),
                  row.log + "CDSBuffer::LoadWav WAVE not found\n");
        EXPECT_EQ(Held(*m_sound), "");
    }

    const Samples m_samples = Music(22 * 8000, 1, 8000);
};

const std::string kNoBuffer =
    "HRESULT->DSERR_BADFORMAT\nCDSBuffer::CreateDSB 1stCreateFailed\n"
    "HRESULT->DSERR_BADFORMAT\nCDSBuffer::CreateDSB CreateDSBError\n";
const std::string kNoCaps = "CDSBuffer::CreateDSB GetCapsError\n";

TEST_F(LoadFailures, WholeWav) {
    const std::string line = "CDSBuffer::LoadWav ";
    const Row rows[] = {
        {line + "RIFF DecError\n", Fail(Call::kMmioDescend, 1), ""},
        {line + "fmt DecError\n", Fail(Call::kMmioDescend, 1, 1), ""},
        {line + "fmt read Error\n", Fail(Call::kMmioRead, 17), "format "},
        {line + "fmtAscError\n", Fail(Call::kMmioAscend, 1), ""},
        {line + "data DecError\n", Fail(Call::kMmioDescend, 1, 2), ""},
        {line + "ACM SUGGEST ERROR\n", Fail(Call::kAcmFormatSuggest, 1), ""},
        {line + "ACM OPEN ERROR\n", Fail(Call::kAcmStreamOpen, 1), ""},
        {line + "Size(s2d)Get Error\n", Fail(Call::kAcmStreamSize, 1), "converter "},
        {kNoCaps + line + "DSBCreateError\n", Fail(Call::kGetCaps, kFailed), "converter buffer "},
        {line + "LockError\n", Fail(Call::kLock, kFailed), "converter buffer "},
        {line + "LockError\n", Fail(Call::kLock, DSERR_BUFFERLOST, 0, 2), "converter buffer "},
        {line + "PrepareError\n", Fail(Call::kAcmPrepare, 1), "converter buffer ", 's'},
        {line + "ConvertError\n", Fail(Call::kAcmConvert, 1), "converter buffer ", 's'},
        {line + "UnprepareError\n", Fail(Call::kAcmUnprepare, 1), "converter buffer ", 'd'},
        {line + "UnlockError\n", Fail(Call::kUnlock, kFailed), "converter buffer ", 'd'},
    };
    for (const Row& row : rows) Check(row, test::Wav(m_samples, {1, 8000}), 0);
}

TEST_F(LoadFailures, StreamedWav) {
    const std::string line = "CDSBuffer::LoadWav ";
    const Row rows[] = {
        {line + "Size(d2s)Get Error\n", Fail(Call::kAcmStreamSize, 1, 1), "converter "},
        {line + "Size(s2d)Get Error\n", Fail(Call::kAcmStreamSize, 1, 2), "converter "},
        {kNoBuffer + line + "DSBCreateError(Stream)\n", Fail(Call::kCreateSoundBuffer, DSERR_BADFORMAT, 0, 2),
         "converter "},
        {kNoCaps + line + "DSBCreateError(Stream)\n", Fail(Call::kGetCaps, kFailed), "converter buffer "},
        {"CDSBuffer::StreamUpdateWav ReadError\n" + line + "StreamUpdateError\n",
         Fail(Call::kMmioRead, -1, 1), "file format source pcm converter buffer "},
    };
    for (const Row& row : rows) Check(row, test::Wav(m_samples, {1, 8000}), 1);
}

TEST_F(LoadFailures, WholeXa) {
    const std::string line = "CDSBuffer::LoadXA ";
    const Row rows[] = {
        {line + "DecodeOpenError\n", Fail(Call::kXaOpen, 0), ""},
        {line + "DecodeSizeError\n", Fail(Call::kXaSize, 0), "converter "},
        {kNoBuffer + line + "DSBCreateError\n", Fail(Call::kCreateSoundBuffer, DSERR_BADFORMAT, 0, 2),
         "converter "},
        {line + "LockError\n", Fail(Call::kLock, kFailed), "converter buffer "},
        {line + "LockError\n", Fail(Call::kLock, DSERR_BUFFERLOST, 0, 2), "converter buffer "},
        {line + "Convert\n", Fail(Call::kXaConvert, 0), "converter buffer "},
        {"HRESULT->DSERR_INVALIDCALL\n" + line + "UnlockError\n", Fail(Call::kUnlock, DSERR_INVALIDCALL),
         "converter buffer "},
    };
    for (const Row& row : rows) Check(row, XaFile(m_samples, 1, 8000), 0);
}

TEST_F(LoadFailures, StreamedXa) {
    const std::string line = "CDSBuffer::LoadXA ";
    const Row rows[] = {
        {kNoCaps + line + "DSBCreateError(Stream)\n", Fail(Call::kGetCaps, kFailed), "converter buffer "},
        {"CDSBuffer::StreamUpdateXA ConvertError\n" + line + "StreamUpdateError\n", Fail(Call::kXaConvert, 0),
         "file source pcm converter buffer "},
    };
    for (const Row& row : rows) Check(row, XaFile(m_samples, 1, 8000), 1);
}

}  // namespace
}  // namespace soundtest
