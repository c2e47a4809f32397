// Reading at and beyond the ends of a RIFF file. How its chunks are found, the loads show.
#include "platform/codec/mmio.h"

#include "sound/sound_support.h"

namespace soundtest {
namespace {

HMMIO Open(const std::string& path) {
    return mmioOpenA(path.c_str(), nullptr, MMIO_READ | MMIO_ALLOCBUF);
}

TEST(RiffFile, ReadsAndSeeks) {
    test::TempFolder folder;
    HMMIO h = Open(folder.Write("a.wav", "0123456789"));
    char text[16] = {};
    EXPECT_EQ(mmioRead(h, text, 4), 4);
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

// A file of nothing but empty chunks must not be walked to its end, chunk by chunk.
TEST(RiffFile, SearchIsBounded) {
    test::TempFolder folder;
    const std::string path = folder.Write("a.wav", Riff(""));
    std::filesystem::resize_file(path, 0x7FFF0000);
    HMMIO h = Open(path);
    MMCKINFO chunk = {};
    ASSERT_EQ(mmioDescend(h, &chunk, nullptr, 0), MMSYSERR_NOERROR);
    chunk.ckid = mmioFOURCC('d', 'a', 't', 'a');
    EXPECT_EQ(mmioDescend(h, &chunk, nullptr, MMIO_FINDCHUNK), MMIOERR_CHUNKNOTFOUND);
    EXPECT_LT(mmioSeek(h, 0, SEEK_CUR), 10'000'000);
    mmioClose(h, 0);
}

}  // namespace
}  // namespace soundtest
