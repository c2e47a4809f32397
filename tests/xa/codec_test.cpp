// What the encoder makes and the decoder gives back, however the calls cut it.
#include "xa_support.h"

namespace {

using namespace xatest;
using xa::Mode;

TEST(XaCodec, BothModesKeepTheirQualityAtEveryRateAndWidth) {
    struct Case {
        int rate, channels;
    };
    for (Case c :
         {Case{11025, 1}, Case{22050, 1}, Case{22050, 2}, Case{44100, 1}, Case{44100, 2}, Case{48000, 2}}) {
        Samples music = Music(c.rate * 4 + 13, c.channels, c.rate);
        for (Mode mode : {Mode::kFine, Mode::kFast}) {
            Bytes file = xa::Encode(music, c.channels, c.rate, mode);
            EXPECT_GE(SignalToNoise(music, ToSamples(DecodeWhole(file))), mode == Mode::kFine ? 72.0 : 38.0)
                << c.rate << " " << c.channels;
        }
    }
}

TEST(XaCodec, EveryLengthComesBackToTheFrame) {
    for (int channels = 1; channels <= 2; ++channels) {
        for (Mode mode : {Mode::kFast, Mode::kFine}) {
            for (int frames = 0; frames <= 70; ++frames) {
                Bytes file = xa::Encode(Music(frames, channels, 8000), channels, 8000, mode);
                ASSERT_EQ(DecodeWhole(file).size(), static_cast<size_t>(frames) * channels * 2);
            }
        }
    }
}

TEST(XaCodec, FillsAFormatThatASoundBufferTakes) {
    Decoder decoder(xa::Encode(Music(100, 2, 22050), 2, 22050, Mode::kFine));
    ASSERT_NE(decoder.get(), nullptr);
    EXPECT_EQ(decoder.format.wFormatTag, WAVE_FORMAT_PCM);
    EXPECT_EQ(decoder.format.nChannels, 2);
    EXPECT_EQ(decoder.format.nSamplesPerSec, 22050u);
    EXPECT_EQ(decoder.format.nAvgBytesPerSec, 88200u);
    EXPECT_EQ(decoder.format.nBlockAlign, 4);
    EXPECT_EQ(decoder.format.wBitsPerSample, 16);
    EXPECT_EQ(decoder.format.cbSize, 0);
}

// As a stream does: source and room of any size, what was not used is handed in again, no source once all is
// in.
Bytes DecodeInPieces(const Bytes& file, unsigned seed, size_t most_source, size_t most_room, int laps = 1) {
    std::mt19937 random(seed);
    Decoder decoder(file);
    Bytes data = DataOf(file), out;
    for (int lap = 0; lap < laps; ++lap) {
        for (size_t at = 0, idle = 0; at < data.size() && idle < 100;) {
            size_t source = std::min<size_t>(1 + random() % most_source, data.size() - at);
            size_t room = random() % (most_room + 1), before = out.size(), used = 0;
            EXPECT_TRUE(decoder.Convert(data.data() + at, source, room, &out, &used));
            at += used;
            idle = used == 0 && out.size() == before ? idle + 1 : 0;
        }
    }
    for (int idle = 0; idle < 100;) {
        size_t before = out.size(), used = 0;
        EXPECT_TRUE(decoder.Convert(nullptr, 0, random() % (most_room + 1), &out, &used));
        idle = out.size() == before ? idle + 1 : 0;
    }
    return out;
}

TEST(XaCodec, AnyCutOfTheCallsGivesTheSamePcm) {
    for (unsigned seed = 1; seed <= 300; ++seed) {
        std::mt19937 random(seed);
        int channels = 1 + static_cast<int>(random() % 2);
        Mode mode = random() % 2 ? Mode::kFine : Mode::kFast;
        Bytes file =
            xa::Encode(Music(static_cast<int>(random() % 700), channels, 11025), channels, 11025, mode);
        size_t most_source = 1 + random() % (seed % 3 == 0 ? 3 : 400);
        size_t most_room = 4 + random() % (seed % 4 == 0 ? 5 : 1000);
        ASSERT_EQ(DecodeInPieces(file, seed, most_source, most_room), DecodeWhole(file)) << "seed " << seed;
    }
}

// The decoder of a looping stream is not opened anew: the second round must begin like the first, without the
// padding of the last byte and without a memory of the end.
TEST(XaCodec, ASecondRoundThroughTheDataIsTheFirstOnceMore) {
    for (int frames : {31, 64, 331}) {
        for (Mode mode : {Mode::kFast, Mode::kFine}) {
            Bytes file = xa::Encode(Music(frames, 1, 22050), 1, 22050, mode);
            Bytes once = DecodeWhole(file), thrice;
            for (int i = 0; i < 3; ++i) thrice.insert(thrice.end(), once.begin(), once.end());
            EXPECT_EQ(DecodeInPieces(file, 5, 90, 200, 3), thrice);
        }
    }
}

TEST(XaCodec, DataThatEndsEarlyIsFlushedToItsLastWholeFrame) {
    Bytes file = xa::Encode(Music(320, 2, 22050), 2, 22050, Mode::kFast);
    Bytes data = DataOf(file), whole = DecodeWhole(file);
    for (size_t length = 0; length < 120; ++length) {
        Decoder decoder(file);
        Bytes out;
        size_t used = 0;
        ASSERT_TRUE(length == 0 || decoder.Convert(data.data(), length, 4096, &out, &used));
        ASSERT_TRUE(decoder.Convert(nullptr, 0, 4096, &out, &used));
        DWORD size = 0;
        ASSERT_NE(xaDecodeSize(decoder.get(), static_cast<DWORD>(length), &size), 0);
        ASSERT_EQ(out, Bytes(whole.begin(), whole.begin() + size)) << length;
        if (length % 36 == 0) continue;
        // A flush of a cut block ends the run: what follows begins again.
        ASSERT_TRUE(decoder.Convert(data.data(), data.size(), 4096, &out, &used));
        ASSERT_EQ(Bytes(out.begin() + size, out.begin() + size + 64),
                  Bytes(whole.begin(), whole.begin() + 64))
            << length;
    }
}

TEST(XaCodec, LoudSoundsClipAndDoNotWrapAndSilenceStaysSilence) {
    Samples square(2000);
    for (size_t i = 0; i < square.size(); ++i) square[i] = i / 50 % 2 ? 32767 : -32768;
    for (Mode mode : {Mode::kFast, Mode::kFine}) {
        Samples back = ToSamples(DecodeWhole(xa::Encode(square, 1, 44100, mode)));
        ASSERT_EQ(back.size(), square.size());
        for (size_t i = 0; i < back.size(); ++i) ASSERT_EQ(back[i] < 0, square[i] < 0) << i;
    }
    EXPECT_EQ(DecodeWhole(xa::Encode(Samples(1001), 1, 44100, Mode::kFast)), Bytes(2002));
}

}  // namespace
