// Whole XA sounds, and how a file's kind is told.
#include "sound/sound_support.h"

namespace soundtest {
namespace {

class Xa : public SoundTest {
protected:
    void SetUp() override {
        SoundTest::SetUp();
        m_samples = Music(22 * 8000 + 5, 1, 8000);
        m_file = XaFile(m_samples, 1, 8000);
    }
    Samples m_samples;
    std::string m_file;
};

TEST_F(Xa, LoadedWhole) {
    CDSBuffer* sound = Make(m_file, "any.wav");
    EXPECT_EQ(LogOf([&] { EXPECT_EQ(sound->Load(0), 0); }), "");
    EXPECT_EQ(sound->m_nKind, 2);
    EXPECT_EQ(sound->m_bStream, 0);
    EXPECT_EQ(sound->m_nSeconds, 22u);
    EXPECT_EQ(sound->m_nDataPos, 32u);
    EXPECT_EQ(sound->m_nDataLen, m_file.size() - 32);
    EXPECT_EQ(sound->m_nSrcSize, m_file.size() - 32);
    EXPECT_EQ(sound->m_nBufSize, m_samples.size() * 2);
    EXPECT_EQ(Held(*sound), "buffer ");
    EXPECT_EQ(test::Calls(Call::kXaConvert), 1);
    const Samples content = ContentSamples(sound->m_pDSB);
    double noise = 0, level = 0;
    for (size_t i = 0; i < m_samples.size(); ++i) {
        noise += std::pow(content[i] - m_samples[i], 2);
        level += std::pow(m_samples[i], 2);
    }
    EXPECT_LT(noise, level * 1e-4);
}

TEST_F(Xa, WhatIsNoXaIsLeftToTheOtherLoader) {
    for (const std::string& bytes :
         {std::string(), std::string("KWD1"), std::string("KWD1") + std::string(27, '\1'),
          "kwd1" + std::string(40, '\0'), test::SquareWav(100)}) {
        CDSBuffer* sound = Make(bytes);
        EXPECT_EQ(LogOf([&] { EXPECT_EQ(sound->LoadXA(0), 1); }), "");
        EXPECT_EQ(sound->m_hFile, nullptr);
        EXPECT_EQ(sound->m_nKind, 0);
    }
    CDSBuffer* sound = Make(test::SquareWav(100), "s.xa");
    EXPECT_EQ(sound->Load(0), 0);
    EXPECT_EQ(sound->m_nKind, 1);
    sound->SetFileName(m_folder.Write("t.wav", m_file).c_str());
    EXPECT_EQ(sound->Load(0), 0);  // another kind in the same object
    EXPECT_EQ(sound->m_nKind, 2);
    sound->SetFileName("/no/such/file");
    EXPECT_EQ(LogOf([&] { EXPECT_EQ(sound->Load(0), 1); }), "CDSBuffer::LoadWav /no/such/file Open Error\n");
    EXPECT_EQ(sound->m_pDSB, nullptr);
}

// The header's sample count cuts; a count beyond the data adds nothing.
TEST_F(Xa, ExactLength) {
    Make(m_file)->Load(0);
    const std::string whole = Contents(m_sound->m_pDSB);
    for (const int64_t count : {0LL, 1LL, 100000LL, 176005LL, 176006LL, 0xFFFFFFFFLL}) {
        std::string file = m_file;
        EXPECT_EQ(Make(file.replace(8, 4, test::LittleEndian(count, 4)))->Load(0), 0);
        const size_t kept = std::min<size_t>(whole.size(), count * 2);
        EXPECT_EQ(Contents(m_sound->m_pDSB), whole.substr(0, kept) + std::string(whole.size() - kept, '\0'))
            << count;
    }
}

TEST_F(Xa, CutFilesAreSilentBehindTheCut) {
    Make(m_file)->Load(0);
    const std::string whole = Contents(m_sound->m_pDSB);
    // After 100 blocks of 32 frames, and 16 frames into the next.
    const std::pair<size_t, size_t> cuts[] = {{42 * 100, 6400}, {42 * 100 + 2 + 20, 6432}};
    for (const auto& [held, sounding] : cuts) {
        EXPECT_EQ(Make(m_file.substr(0, 32 + held))->Load(0), 0);
        EXPECT_EQ(Contents(m_sound->m_pDSB),
                  whole.substr(0, sounding) + std::string(whole.size() - sounding, '\0'));
    }
    std::string hostile = m_file;
    hostile.replace(4, 4, "\xff\xff\xff\xff");
    EXPECT_EQ(Make(hostile)->Load(0), 1);
    EXPECT_EQ(m_sound->m_pDSB, nullptr);
}

}  // namespace
}  // namespace soundtest
