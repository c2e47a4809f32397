// What the encoder makes and the decoder returns, however the calls cut it, also of damaged files. Headers
// that no file has are among the sounds of tests/sound.
#include "sound/xaformat.h"
#include "xa_support.h"

namespace {

using namespace xatest;
using xa::Mode;

constexpr Mode kModes[] = {Mode::kFast, Mode::kFine};

void Put32(Bytes* file, int at, uint32_t value) {
    for (int i = 0; i < 4; ++i) (*file)[at + i] = static_cast<uint8_t>(value >> (8 * i));
}

TEST(XaCodec, BothModesKeepTheirQualityAndLoudSoundsDoNotWrap) {
    for (const auto& [rate, channels] : {std::pair{11025, 1}, {22050, 2}, {44100, 1}, {48000, 2}}) {
        const Samples music = Music(rate * 2 + 13, channels, rate);
        Samples square(2000);
        for (size_t i = 0; i < square.size(); ++i) square[i] = i / 50 % 2 ? 32767 : -32768;
        for (const Mode mode : kModes) {
            const Bytes file = xa::Encode(music, channels, rate, mode);
            EXPECT_GE(SignalToNoise(music, ToSamples(DecodeWhole(file))), mode == Mode::kFine ? 72.0 : 36.0)
                << rate;
            const Samples back = ToSamples(DecodeWhole(xa::Encode(square, channels, rate, mode)));
            for (size_t i = 0; i < back.size(); ++i) ASSERT_EQ(back[i] < 0, square[i] < 0) << i;
        }
    }
}

TEST(XaCodec, EveryLengthComesBackToTheFrame) {
    for (const int channels : {1, 2}) {
        for (const Mode mode : kModes) {
            for (int frames = 0; frames <= 70; ++frames) {
                const Bytes file =
                    xa::Encode(Samples(static_cast<size_t>(frames * channels)), channels, 8000, mode);
                ASSERT_EQ(DecodeWhole(file), Bytes(static_cast<size_t>(frames * channels * 2))) << frames;
            }
        }
    }
}

// As a stream does: source and room of any size, what was not used is handed in again, no source once all is
// in. Each lap through the data begins like the first.
Bytes DecodeInPieces(const Bytes& file, std::mt19937* random, size_t most_source, size_t most_room,
                     int laps) {
    Decoder decoder(file);
    const Bytes data = DataOf(file);
    Bytes out;
    for (int lap = 0; lap <= laps; ++lap) {
        const size_t end = lap < laps ? data.size() : 0;
        for (size_t at = 0, idle = 0; (at < end || end == 0) && idle < 100;) {
            const size_t source = end == 0 ? 0 : std::min<size_t>(1 + (*random)() % most_source, end - at);
            const size_t room = (*random)() % (most_room + 1), before = out.size();
            size_t used = 0;
            EXPECT_TRUE(decoder.Convert(data.data() + at, source, room, &out, &used));
            at += used;
            idle = used == 0 && out.size() == before ? idle + 1 : 0;
        }
    }
    return out;
}

TEST(XaCodec, AnyCutOfTheCallsGivesTheSamePcm) {
    for (unsigned seed = 1; seed <= 300; ++seed) {
        std::mt19937 random(seed);
        const int channels = 1 + static_cast<int>(random() % 2), laps = 1 + static_cast<int>(random() % 3);
        const Samples music = Music(static_cast<int>(random() % 700), channels, 11025);
        const Bytes file = xa::Encode(music, channels, 11025, kModes[random() % 2]);
        const size_t most_source = 1 + random() % (seed % 3 == 0 ? 3 : 400);
        const size_t most_room = 4 + random() % (seed % 4 == 0 ? 5 : 1000);
        const Bytes once = DecodeWhole(file);
        Bytes all;
        for (int i = 0; i < laps; ++i) all.insert(all.end(), once.begin(), once.end());
        ASSERT_EQ(DecodeInPieces(file, &random, most_source, most_room, laps), all) << "seed " << seed;
    }
}

TEST(XaCodec, DataThatEndsEarlyIsFlushedToItsLastWholeFrame) {
    const Bytes file = xa::Encode(Music(320, 2, 22050), 2, 22050, Mode::kFast);
    const Bytes data = DataOf(file), whole = DecodeWhole(file);
    for (size_t length = 1; length < 120; ++length) {
        Decoder decoder(file);
        Bytes out;
        size_t used = 0;
        DWORD size = 0;
        ASSERT_TRUE(decoder.Convert(data.data(), length, 4096, &out, &used));
        ASSERT_TRUE(decoder.Convert(nullptr, 0, 4096, &out, &used));
        ASSERT_NE(xaDecodeSize(decoder.get(), static_cast<DWORD>(length), &size), 0);
        ASSERT_EQ(out, Bytes(whole.begin(), whole.begin() + size)) << length;
        if (length % 36 == 0) continue;
        // A flush of a cut block ends the run: what follows begins again.
        ASSERT_TRUE(decoder.Convert(data.data(), data.size(), 4096, &out, &used));
        ASSERT_EQ(Bytes(out.begin() + size, out.end()), whole) << length;
    }
}

TEST(XaCodec, SizesStopBeforeTheyOverflow) {
    const struct {
        int channels;
        Mode mode;
        DWORD length;
        uint64_t pcm;  // 0: refused
    } rows[] = {
        {1, Mode::kFast, 18, 64},
        {1, Mode::kFast, 18 * 1000 + 2, 64000},
        {1, Mode::kFast, 18 * 1000 + 3, 64004},
        {2, Mode::kFast, 36 * 7 + 5, 7 * 128 + 4},
        {1, Mode::kFine, 42 * 9 + 41, 9 * 64 + 62},
        {2, Mode::kFine, 84 * 3 + 7, 3 * 128 + 4},
        {1, Mode::kFast, 603979775, 2147483644},
        {1, Mode::kFast, 603979776, 0},
        {2, Mode::kFine, 0xFFFFFFFF, 0},
    };
    for (const auto& row : rows) {
        const Decoder decoder(xa::Encode(Music(64, row.channels, 8000), row.channels, 8000, row.mode));
        DWORD pcm = 77;
        EXPECT_EQ(xaDecodeSize(decoder.get(), row.length, &pcm) != 0, row.pcm > 0) << row.length;
        EXPECT_EQ(pcm, row.pcm) << row.length;
    }
}

// The sample count only tells whether the last byte is half empty; the caller cuts by it. A length beyond the
// data changes nothing, and with none at all nothing is taken.
TEST(XaCodec, HeadersThatLie) {
    const Bytes honest = xa::Encode(Music(200, 2, 22050), 2, 22050, Mode::kFine);
    const Bytes data = DataOf(honest), pcm = DecodeWhole(honest);
    for (const auto& [at, value] : {std::pair{XA_AT_FRAMES, 0u},
                                    {XA_AT_FRAMES, ~0u},
                                    {XA_AT_DATA_BYTES, ~0u},
                                    {XA_AT_DATA_BYTES, 0u}}) {
        Bytes file = honest, out;
        Put32(&file, at, value);
        Decoder decoder(file);
        size_t used = 0;
        ASSERT_TRUE(decoder.Convert(data.data(), data.size(), pcm.size(), &out, &used));
        ASSERT_TRUE(decoder.Convert(nullptr, 0, pcm.size() - out.size(), &out, &used));
        EXPECT_EQ(out, at == XA_AT_DATA_BYTES && value == 0 ? Bytes() : pcm) << at << " " << value;
    }
}

TEST(XaCodec, ADamagedBlockFailsAndWhatCameBeforeIsGiven) {
    const uint8_t damage[] = {XA_FILTERS, XA_RANGES, 255, 255};
    for (int at = 0; at < 4; ++at) {
        Bytes file = xa::Encode(Music(200, 2, 22050), 2, 22050, Mode::kFine), out;
        const Bytes pcm = DecodeWhole(file);
        file[static_cast<size_t>(XA_HEADER_SIZE + 84 + at)] = damage[at];
        Decoder decoder(file);
        size_t used = 0;
        EXPECT_FALSE(
            decoder.Convert(DataOf(file).data(), file.size() - XA_HEADER_SIZE, pcm.size(), &out, &used));
        EXPECT_EQ(used, 84u);
        EXPECT_EQ(out, Bytes(pcm.begin(), pcm.begin() + 128));
    }
}

}  // namespace
