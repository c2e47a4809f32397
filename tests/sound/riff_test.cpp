// The stand-ins for reading RIFF files, apart from what the loads need of them.
#include "platform/mmio.h"

#include <gtest/gtest.h>

#include <cstdio>

#include "sound/sound_support.h"

namespace soundtest {
namespace {

class RiffFile : public testing::Test {
protected:
    HMMIO Open(const std::string& bytes) {
        m_path = m_folder.Write("a.wav", bytes);
        return mmioOpenA(m_path.c_str(), nullptr, MMIO_READ | MMIO_ALLOCBUF);
    }
    test::TempFolder m_folder;
    std::string m_path;
    MMCKINFO chunk = {};
};

TEST_F(RiffFile, ReadsAndSeeks) {
    HMMIO h = Open("0123456789");
    char text[16] = {};
    EXPECT_EQ(mmioRead(h, text, 4), 4);
    EXPECT_EQ(mmioSeek(h, 0, SEEK_CUR), 4);
    EXPECT_EQ(mmioSeek(h, -5, SEEK_CUR), -1);
    EXPECT_EQ(mmioSeek(h, 0, SEEK_CUR), 4);
    EXPECT_EQ(mmioSeek(h, -3, SEEK_CUR), 1);
    EXPECT_EQ(mmioRead(h, text, 2), 2);
    EXPECT_STREQ(text, "1223");
    EXPECT_EQ(mmioSeek(h, -2, SEEK_END), 8);
    EXPECT_EQ(mmioRead(h, text, 16), 2);
    EXPECT_EQ(mmioRead(h, text, 16), 0);
    EXPECT_EQ(mmioRead(h, text, -1), -1);
    EXPECT_EQ(mmioRead(h, nullptr, 1), -1);
    EXPECT_EQ(mmioSeek(h, 100, SEEK_SET), 100);
    EXPECT_EQ(mmioRead(h, text, 1), 0);
    EXPECT_EQ(mmioSeek(h, INT32_MAX, SEEK_SET), INT32_MAX);
    EXPECT_EQ(mmioSeek(h, 1, SEEK_CUR), -1);
    EXPECT_EQ(mmioSeek(h, 0, 3), -1);
    MMCKINFO end = {0, 0xFFFFFFFF, 0, 0xFFFFFFFF, 0};
    EXPECT_EQ(mmioAscend(h, &end, 0), MMIOERR_CANNOTSEEK);
    EXPECT_EQ(mmioClose(h, 0), MMSYSERR_NOERROR);
}

TEST_F(RiffFile, FindsChunks) {
    const std::string inner = Chunk("one ", "abc") + Chunk("LIST", "infoxxxx") + Chunk("two ", "defg");
    HMMIO h = Open(Riff(inner));
    MMCKINFO riff = {};
    ASSERT_EQ(mmioDescend(h, &riff, nullptr, 0), MMSYSERR_NOERROR);
    EXPECT_EQ(riff.dwDataOffset, 8u);
    EXPECT_EQ(riff.cksize, 4 + inner.size());
    EXPECT_EQ(riff.fccType, mmioFOURCC('W', 'A', 'V', 'E'));
    ASSERT_EQ(mmioDescend(h, &chunk, &riff, 0), MMSYSERR_NOERROR);
    EXPECT_EQ(chunk.ckid, mmioFOURCC('o', 'n', 'e', ' '));
    EXPECT_EQ(chunk.cksize, 3u);
    EXPECT_EQ(chunk.dwDataOffset, 20u);
    ASSERT_EQ(mmioAscend(h, &chunk, 0), MMSYSERR_NOERROR);
    EXPECT_EQ(mmioSeek(h, 0, SEEK_CUR), 24);  // behind the pad byte
    chunk = {0, 0, mmioFOURCC('i', 'n', 'f', 'o'), 0, 0};
    ASSERT_EQ(mmioDescend(h, &chunk, &riff, MMIO_FINDLIST), MMSYSERR_NOERROR);
    EXPECT_EQ(chunk.cksize, 8u);
    mmioSeek(h, 0, SEEK_SET);
    chunk = {0, 0, mmioFOURCC('W', 'A', 'V', 'E'), 0, 0};
    EXPECT_EQ(mmioDescend(h, &chunk, nullptr, MMIO_FINDRIFF), MMSYSERR_NOERROR);
    chunk = {mmioFOURCC('t', 'w', 'o', ' '), 7, 7, 7, 7};
    ASSERT_EQ(mmioDescend(h, &chunk, &riff, MMIO_FINDCHUNK), MMSYSERR_NOERROR);
    EXPECT_EQ(chunk.cksize, 4u);
    EXPECT_EQ(chunk.fccType, 0u);
    chunk.ckid = mmioFOURCC('o', 'n', 'e', ' ');
    EXPECT_EQ(mmioDescend(h, &chunk, &riff, MMIO_FINDCHUNK), MMIOERR_CHUNKNOTFOUND);  // forward only
    mmioClose(h, 0);
}

// A file of nothing but empty chunks must not be walked to its end, chunk by chunk.
TEST_F(RiffFile, SearchIsBounded) {
    HMMIO h = Open(Riff(""));
    std::filesystem::resize_file(m_path, 0x7FFF0000);
    ASSERT_EQ(mmioDescend(h, &chunk, nullptr, 0), MMSYSERR_NOERROR);
    chunk.ckid = mmioFOURCC('d', 'a', 't', 'a');
    EXPECT_EQ(mmioDescend(h, &chunk, nullptr, MMIO_FINDCHUNK), MMIOERR_CHUNKNOTFOUND);
    EXPECT_LT(mmioSeek(h, 0, SEEK_CUR), 10'000'000);
    mmioClose(h, 0);
}

}  // namespace
}  // namespace soundtest
