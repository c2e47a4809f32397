// Loading WAV files whole: what is refused, and what loads although something is wrong.
#include "sound/sound_support.h"

namespace soundtest {
namespace {

class Wav : public SoundTest {
protected:
    std::string LoadLog(CDSBuffer* sound, int stream = 0) {
        return LogOf([&] { m_result = sound->Load(stream); });
    }
    std::string LoadLog(const std::string& bytes, int stream = 0) { return LoadLog(Make(bytes), stream); }
    int m_result = -1;
};

constexpr char kLine[] = "CDSBuffer::LoadWav ";

TEST_F(Wav, LoadedWhole) {
    const Samples samples = Music(10000, 2, 22050);
    CDSBuffer* sound = Make(test::Wav(samples, {2, 22050, 16}));
    EXPECT_EQ(LoadLog(sound), "");
    EXPECT_EQ(m_result, 0);
    EXPECT_EQ(Held(*sound), "buffer ");
    EXPECT_EQ(sound->m_pDSBCreated, sound->m_pDSB);
    EXPECT_EQ(sound->m_nKind, 1);
    EXPECT_EQ(sound->m_bStream, 0);
    EXPECT_EQ(sound->m_nDataLen, 40000u);
    EXPECT_EQ(sound->m_nDataPos, 44u);
    EXPECT_EQ(sound->m_nPcmLen, 40000u);
    EXPECT_EQ(sound->m_nSrcSize, 40000u);
    EXPECT_EQ(sound->m_nBufSize, 40000u);
    EXPECT_EQ(sound->m_nSeconds, 0u);
    EXPECT_EQ(sound->m_wfx.nSamplesPerSec, 22050u);
    EXPECT_EQ(sound->m_wfx.nChannels, 2);
    EXPECT_EQ(ContentSamples(sound->m_pDSB), samples);
    EXPECT_EQ(test::Calls(Call::kAcmConvert), 1);
    EXPECT_EQ(sound->Load(0), 0);  // again, over the old one
    EXPECT_EQ(ContentSamples(sound->m_pDSB), samples);
}

TEST_F(Wav, LostBufferIsRestoredOnce) {
    const Samples samples = Music(8820, 1, 44100);
    test::Order(Call::kLock, DSERR_BUFFERLOST);
    test::Order(Call::kRestore, kFailed);  // its result is not looked at
    EXPECT_EQ(LoadLog(test::Wav(samples)), "");
    EXPECT_EQ(test::Calls(Call::kRestore), 1);
    EXPECT_EQ(m_result, 0);
    EXPECT_EQ(ContentSamples(m_sound->m_pDSB), samples);
}

TEST_F(Wav, WhatIsNoWav) {
    const std::string fmt = Chunk("fmt ", FormatBlock({})), data = Chunk("data", "abcd");
    const std::pair<std::string, const char*> rows[] = {
        {"", "RIFF DecError\n"},
        {"RIFF\1\1\1", "RIFF DecError\n"},
        {"RIFF\1\1\1\1WAV", "RIFF DecError\n"},  // a RIFF chunk has a type
        {"RIFX\1\1\1\1", "WAVE not found\n"},
        {"#TITLE of a chart", "WAVE not found\n"},
        {"RIFF" + std::string(4, '\0') + "AVI fmt ", "WAVE not found\n"},
        {"KWD2" + std::string(40, '1'), "WAVE not found\n"},
        {Riff(""), "fmt DecError\n"},
        {Riff(data), "fmt DecError\n"},
        {Riff(fmt), "fmt read Error\n"},  // 18 bytes are read of a block of 16
        {Riff("fmt "), "fmt DecError\n"},
        {Riff(fmt + "da"), "data DecError\n"},
        {Riff(fmt + Chunk("LIST", "INFOabcd")), "data DecError\n"},
        {Riff(data + fmt + Chunk("JUNK", "....")), "data DecError\n"},
    };
    for (const auto& [bytes, log] : rows) {
        EXPECT_EQ(LoadLog(bytes), kLine + std::string(log)) << bytes;
        EXPECT_EQ(m_result, 1);
        EXPECT_EQ(m_sound->m_pDSB, nullptr);
    }
}

TEST_F(Wav, FilesThatAreWrongButLoad) {
    const Samples samples = Music(8820, 1, 44100);
    const std::string pcm = Bytes(samples), fmt = Chunk("fmt ", FormatBlock({}));
    const std::string data = Chunk("data", pcm);
    const auto odd = [](const std::string& name, const std::string& text) {  // no pad byte behind it
        return name + test::LittleEndian(text.size(), 4) + text;
    };
    const auto sized = [&](uint64_t size) {
        return "RIFF" + test::LittleEndian(size, 4) + "WAVE" + fmt + data;
    };
    const std::string long_fmt = Chunk("fmt ", FormatBlock({}) + std::string(10000, 'x'));
    const std::pair<const char*, std::string> rows[] = {
        {"RIFF size 0", sized(0)},
        {"RIFF size too small", sized(30)},
        {"RIFF size 4 GB", sized(0xFFFFFFFF)},
        {"chunks in front and between", Riff(Chunk("JUNK", "abc") + Chunk("LIST", "INFOxyz") + fmt +
                                             Chunk("fact", "1234") + Chunk("cue ", "odd") + data)},
        {"odd chunk without pad", Riff(odd("note", "abc") + fmt + odd("cue ", "a") + data)},
        {"odd chunk padded by a space", Riff(odd("note", "abc") + " " + fmt + data)},
        {"empty chunks", Riff(Chunk("JUNK", "") + fmt + Chunk("JUNK", "") + data)},
        {"long format block", Riff(long_fmt + data)},
        {"format block of 2 bytes in excess", Riff(Chunk("fmt ", FormatBlock({}) + "\xff\xff") + data)},
        {"two data chunks", Riff(fmt + data + Chunk("data", "no"))},
    };
    for (const auto& [what, bytes] : rows) {
        EXPECT_EQ(LoadLog(bytes), "") << what;
        ASSERT_EQ(m_result, 0) << what;
        EXPECT_EQ(ContentSamples(m_sound->m_pDSB), samples) << what;
    }
    EXPECT_EQ(LoadLog(Make(sized(0), "picture.bmp")), "");  // by content, whatever the name
    EXPECT_EQ(m_result, 0);
}

TEST_F(Wav, ShortSoundsGetASilentTail) {
    const struct {
        int frames, channels, rate, bits;
        size_t bytes;
    } rows[] = {
        {4410, 2, 44100, 16, 26460},                               // 100 ms
        {0, 2, 44100, 16, 26460},    {6614, 2, 44100, 16, 26460},  // one frame short of 150 ms
        {6615, 2, 44100, 16, 26460}, {6616, 2, 44100, 16, 26464},
        {10, 1, 11025, 8, 1653},     {10, 1, 11025, 16, 3308},  // 3307.5, in whole frames
        {10, 2, 22050, 16, 13232},
    };
    for (const auto& row : rows) {
        const Samples samples = Music(row.frames, row.channels, row.rate);
        const std::string wav = test::Wav(samples, {row.channels, row.rate, row.bits});
        EXPECT_EQ(LoadLog(wav), "");
        ASSERT_EQ(m_result, 0);
        const std::string content = Contents(m_sound->m_pDSB);
        const std::string pcm = wav.substr(44, samples.size() * static_cast<size_t>(row.bits / 8));
        ASSERT_EQ(content.size(), row.bytes) << row.frames;
        EXPECT_EQ(m_sound->m_nBufSize, row.bytes);
        EXPECT_EQ(content.substr(0, pcm.size()), pcm);
        EXPECT_EQ(content.substr(pcm.size()),
                  std::string(row.bytes - pcm.size(), row.bits == 8 ? '\x80' : '\0'));
    }
}

TEST_F(Wav, DataLongerThanTheFile) {
    const Samples samples = Music(20000, 1, 44100);
    for (int bits : {8, 16}) {
        std::string wav = test::Wav(samples, {1, 44100, bits});
        const size_t declared = 20000u * static_cast<size_t>(bits / 8), held = declared / 4;
        wav.resize(44 + held);
        EXPECT_EQ(LoadLog(wav), "");
        ASSERT_EQ(m_result, 0);
        EXPECT_EQ(m_sound->m_nPcmLen, declared);
        EXPECT_EQ(Contents(m_sound->m_pDSB),
                  wav.substr(44) + std::string(declared - held, bits == 8 ? '\x80' : '\0'));
    }
}

TEST_F(Wav, StreamOnlyFromTwentySecondsOn) {
    const std::pair<int, bool> rows[] = {{19 * 8000, false}, {19 * 8000 + 7200, false}, {20 * 8000, true}};
    for (const auto& [frames, streamed] : rows) {
        const std::string wav = test::Wav(Samples(static_cast<size_t>(frames)), {1, 8000, 8});
        for (int stream : {0, 1, -5}) {
            EXPECT_EQ(LoadLog(wav, stream), "");
            EXPECT_EQ(m_sound->m_bStream, streamed && stream != 0 ? 1 : 0) << frames << " " << stream;
            EXPECT_EQ(m_sound->m_nSeconds, static_cast<DWORD>(frames / 8000));
            EXPECT_EQ(m_sound->m_nBufSize, m_sound->m_bStream ? 16000u : static_cast<DWORD>(frames));
        }
    }
}

TEST_F(Wav, CreateDSB) {
    const std::string wav = test::Wav(Music(8820, 1, 44100));
    const std::string second = "HRESULT->DSERR_BADFORMAT\nCDSBuffer::CreateDSB 1stCreateFailed\n";
    test::Order(Call::kCreateSoundBuffer, DSERR_BADFORMAT);
    EXPECT_EQ(LoadLog(wav), second);
    EXPECT_EQ(m_result, 0);
    DSBCAPS caps = {};
    caps.dwSize = sizeof(caps);
    ASSERT_EQ(m_sound->m_pDSB->GetCaps(&caps), DS_OK);
    EXPECT_EQ(caps.dwFlags, 0x10080u);

    test::Order(Call::kCreateSoundBuffer, DSERR_BADFORMAT, 0, 2);
    EXPECT_EQ(LoadLog(wav), second + "HRESULT->DSERR_BADFORMAT\nCDSBuffer::CreateDSB CreateDSBError\n" +
                                "CDSBuffer::LoadWav DSBCreateError\n");
    EXPECT_EQ(m_result, 1);
    EXPECT_EQ(m_sound->m_pDSB, nullptr);

    EXPECT_EQ(LoadLog(wav), "");
    ASSERT_EQ(m_sound->m_pDSB->GetCaps(&caps), DS_OK);
    EXPECT_EQ(caps.dwFlags, 0x180CAu);

    CDSBuffer homeless;
    homeless.SetFileName(m_folder.Path("s.wav").c_str());
    EXPECT_EQ(LoadLog(&homeless), "CDSBuffer::CreateDSB DSobj==NULL\nCDSBuffer::LoadWav DSBCreateError\n");
}

TEST_F(Wav, TermWithoutAKindSaysSo) {
    CDSBuffer sound(m_device);
    int something = 0;
    sound.m_hFile = sound.m_hAcm = &something;
    EXPECT_EQ(LogOf([&] { EXPECT_EQ(sound.Term(), 0); }),
              "CDSBuffer::Term hFile Error?\nCDSBuffer::Term hAcm Error?\n");
    EXPECT_EQ(sound.m_hFile, nullptr);
    EXPECT_EQ(sound.m_hAcm, nullptr);
}

// Sizes and numbers that no true file has: each ends in a row of its own, and no memory goes with them.
TEST_F(Wav, HostileNumbers) {
    const auto header = [](const Format& format, uint64_t fmt_size, uint64_t data_size) {
        return "RIFF" + std::string(4, '\xff') + "WAVEfmt " + test::LittleEndian(fmt_size, 4) +
               FormatBlock(format) + "data" + test::LittleEndian(data_size, 4) + "0123456789";
    };
    const std::string refused =
        "HRESULT->DSERR_INVALIDPARAM\nCDSBuffer::CreateDSB 1stCreateFailed\n"
        "HRESULT->DSERR_INVALIDPARAM\nCDSBuffer::CreateDSB CreateDSBError\n"
        "CDSBuffer::LoadWav DSBCreateError\n";
    const std::string bad_rate =
        "HRESULT->DSERR_BADFORMAT\nCDSBuffer::CreateDSB 1stCreateFailed\n"
        "HRESULT->DSERR_BADFORMAT\nCDSBuffer::CreateDSB CreateDSBError\n"
        "CDSBuffer::LoadWav DSBCreateError\n";
    const std::string no_codec = "CDSBuffer::LoadWav ACM SUGGEST ERROR\n";
    constexpr int k4GHz = -294967296;
    const std::pair<std::string, std::string> rows[] = {
        {header({}, 16, 0xFFFFFFFE), refused},
        {header({1, 1, 44100, -1, -1, 8}, 16, 0xFFFFFFFE), refused},
        {header({7, 1, 44100, -1, -1, 8}, 16, 0xFFFFFFFE), refused},
        {header({17, 1, 44100, -1, 1024, 4}, 16, 0xFFFFFFFE), refused},
        {header({1, 0, 44100, -1, -1, 16}, 16, 100), no_codec},
        {header({1, 9, 44100, -1, -1, 16}, 16, 100), no_codec},
        {header({1, 1, 44100, -1, 3, 16}, 16, 100), no_codec},
        {header({17, 2, 44100, -1, 0, 4}, 16, 100), no_codec},
        {header({17, 2, 44100, -1, 8, 4}, 16, 100), no_codec},
        {header({1, 1, 0, -1, -1, 16}, 16, 100), no_codec},
        {header({1, 1, k4GHz, -1, -1, 16}, 16, 100), no_codec},
        {header({1, 1, k4GHz, -1, -1, 8}, 16, 100), bad_rate},
        {header({}, 0, 100), "CDSBuffer::LoadWav data DecError\n"},
        {header({}, 0x80000000, 100), "CDSBuffer::LoadWav fmt read Error\n"},
        {header({}, 0xFFFFFFFF, 100), "CDSBuffer::LoadWav fmt read Error\n"},
        {header({0xFFFE, 2, 44100, -1, -1, 16, "\xff\xff"}, 18, 100), no_codec},
    };
    int number = 0;
    for (const auto& [bytes, log] : rows) {
        EXPECT_EQ(LoadLog(bytes), log) << number;
        EXPECT_EQ(m_result, 1) << number;
        EXPECT_EQ(m_sound->m_pDSB, nullptr) << number;
        LoadLog(bytes, 1);  // a stream needs no memory for its length
        EXPECT_TRUE(m_sound->m_pDSB == nullptr || m_sound->m_nBufSize < 1 << 24) << number;
        m_sound->Play();
        m_sound->StreamPlay();
        ++number;
    }
}

// As a writer to a pipe leaves the length, and as careless writers leave nBlockAlign.
TEST_F(Wav, LengthsAndBlocksThatTheFormatTells) {
    const std::string samples = std::string("\1\0\2\0\3\0\4\0", 8);
    for (const int align : {0, 1, 2}) {
        const std::string file = "RIFF" + std::string(4, '\xff') + "WAVEfmt " + test::LittleEndian(16, 4) +
                                 FormatBlock({1, 1, 44100, -1, align, 16}) + "data" +
                                 test::LittleEndian(0xFFFFFFFF, 4) + samples;
        EXPECT_EQ(LoadLog(file), "") << align;
        EXPECT_EQ(m_sound->m_nPcmLen, samples.size()) << align;
        EXPECT_EQ(Contents(m_sound->m_pDSB).substr(0, samples.size()), samples) << align;
    }
}

}  // namespace
}  // namespace soundtest
