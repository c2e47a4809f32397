// Headers that lie, data that is damaged, callers that pass nonsense.
#include "sound/xaformat.h"
#include "xa_support.h"

namespace {

using namespace xatest;
using xa::Mode;

Bytes SmallFile(Mode mode = Mode::kFine) {
    return xa::Encode(Music(200, 2, 22050), 2, 22050, mode);
}

void Put32(Bytes* file, int at, uint32_t value) {
    for (int i = 0; i < 4; ++i) (*file)[at + i] = static_cast<uint8_t>(value >> (8 * i));
}

TEST(XaHostile, HeadersThatNoFileHasAreRefused) {
    struct Case {
        const char* what;
        int at;
        int value;
        bool good;
    };
    const Case kCases[] = {
        {"as it is", 31, 0, true},
        {"magic", 3, '2', false},
        {"magic in lower case", 0, 'k', false},
        {"version 0", 12, 0, false},
        {"version 2", 12, 2, false},
        {"0 bits", 13, 0, false},
        {"8 bits", 13, 8, false},
        {"0 frames a block", 14, 0, false},
        {"255 frames a block", 14, 255, false},
        {"0 channels", 15, 0, false},
        {"3 channels", 15, 3, false},
        {"255 channels", 15, 255, false},
        {"unused byte", 25, 0xEE, true},
    };
    for (const Case& c : kCases) {
        Bytes file = SmallFile();
        file[c.at] = static_cast<uint8_t>(c.value);
        EXPECT_EQ(Decoder(file).get() != nullptr, c.good) << c.what;
    }
    for (uint32_t rate : {0u, 99u, 384001u, 0x80000000u, 0xFFFFFFFFu}) {
        Bytes file = SmallFile();
        Put32(&file, XA_AT_RATE, rate);
        EXPECT_EQ(Decoder(file).get(), nullptr) << rate;
    }
}

TEST(XaHostile, SizesStopBeforeTheyOverflow) {
    struct Case {
        int channels;
        Mode mode;
        DWORD length;
        uint64_t pcm;  // 0: refused
    };
    const Case kCases[] = {
        {2, Mode::kFine, 0, 0},
        {1, Mode::kFast, 18, 64},
        {1, Mode::kFast, 18 * 1000 + 2, 64000},
        {1, Mode::kFast, 18 * 1000 + 3, 64004},
        {2, Mode::kFast, 36 * 7 + 5, 7 * 128 + 4},
        {1, Mode::kFine, 42 * 9 + 41, 9 * 64 + 62},
        {2, Mode::kFine, 84 * 3 + 7, 3 * 128 + 4},
        {1, Mode::kFast, 603979775, 2147483644},
        {1, Mode::kFast, 603979776, 0},
        {2, Mode::kFast, 0xFFFFFFFF, 0},
        {1, Mode::kFast, 0x80000000, 0},
        {2, Mode::kFine, 0xFFFFFFFF, 0},
    };
    for (const Case& c : kCases) {
        Decoder decoder(xa::Encode(Music(64, c.channels, 8000), c.channels, 8000, c.mode));
        DWORD pcm = 77;
        int result = xaDecodeSize(decoder.get(), c.length, &pcm);
        EXPECT_EQ(result != 0, c.pcm > 0 || c.length == 0) << c.length;
        EXPECT_EQ(pcm, c.pcm) << c.length;
    }
}

// The sample count only tells whether the last byte is half empty; the caller cuts by it, the decoder does
// not.
TEST(XaHostile, LyingCountsLeaveTheDataAsItIs) {
    Bytes honest = SmallFile(), pcm = DecodeWhole(honest);
    for (uint32_t frames : {0u, 1u, 199u, 201u, 0xFFFFFFFFu}) {
        Bytes file = honest;
        Put32(&file, XA_AT_FRAMES, frames);
        EXPECT_EQ(DecodeWhole(file), pcm) << frames;
    }
    // A length that names more than comes: all that came is given, and a flush gives the rest.
    Bytes file = honest;
    Put32(&file, XA_AT_DATA_BYTES, 0xFFFFFFFF);
    Decoder longer(file);
    Bytes data = DataOf(honest), out;
    size_t used = 0;
    ASSERT_TRUE(longer.Convert(data.data(), data.size(), pcm.size(), &out, &used));
    ASSERT_TRUE(longer.Convert(nullptr, 0, pcm.size() - out.size(), &out, &used));
    EXPECT_EQ(out, pcm);
    // No data at all: nothing is taken, and the call returns.
    Put32(&file, XA_AT_DATA_BYTES, 0);
    Decoder empty(file);
    out.clear();
    ASSERT_TRUE(empty.Convert(data.data(), data.size(), 100, &out, &used));
    EXPECT_EQ(used, 0u);
    EXPECT_TRUE(out.empty());
}

TEST(XaHostile, ADamagedBlockFailsAndWhatCameBeforeIsGiven) {
    const uint8_t damage[] = {XA_FILTERS, XA_RANGES, 255, 255};
    for (int at = 0; at < 4; ++at) {
        Bytes file = SmallFile(), pcm = DecodeWhole(file);
        file[XA_HEADER_SIZE + 84 + at] = damage[at];
        Bytes data = DataOf(file), out;
        Decoder decoder(file);
        size_t used = 0;
        EXPECT_FALSE(decoder.Convert(data.data(), data.size(), pcm.size(), &out, &used));
        EXPECT_EQ(used, 84u);
        EXPECT_EQ(out, Bytes(pcm.begin(), pcm.begin() + 128));
        EXPECT_FALSE(decoder.Convert(data.data() + used, 84, 128, &out, &used));
    }
}

TEST(XaHostile, CallsWithoutTheirArgumentsAreRefused) {
    Bytes file = SmallFile();
    WAVEFORMATEX format = {};
    EXPECT_EQ(xaDecodeOpen(nullptr, &format), nullptr);
    EXPECT_EQ(xaDecodeOpen(file.data(), nullptr), nullptr);
    Decoder decoder(file);
    DWORD size = 0;
    EXPECT_EQ(xaDecodeSize(nullptr, 1, &size), 0);
    EXPECT_EQ(xaDecodeSize(decoder.get(), 1, nullptr), 0);
    XaConvertBlock block = {};
    EXPECT_EQ(xaDecodeConvert(nullptr, &block), 0);
    EXPECT_EQ(xaDecodeConvert(decoder.get(), nullptr), 0);
    block.nSrcLen = 1;
    EXPECT_EQ(xaDecodeConvert(decoder.get(), &block), 0);
    block.nSrcLen = 0;
    block.nDstBufLen = 1;
    EXPECT_EQ(xaDecodeConvert(decoder.get(), &block), 0);
}

}  // namespace
