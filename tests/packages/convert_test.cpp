// Sounds and pictures of other kinds become WAV and BMP files.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "packages/encode.h"
#include "platform/substitutes/picture.h"
#include "platform/substitutes/sound.h"

namespace {

using test::Image;
using test::PngKind;
using test::SoundFile;

template <class Convert>
std::string Converted(const std::string& file, Convert convert) {
    ByteBlock block;
    if (!convert(reinterpret_cast<const BYTE*>(file.data()), file.size(), &block)) return "";
    return std::string(reinterpret_cast<const char*>(block.Data()), block.Size());
}

std::string ToWav(const std::string& file) {
    return Converted(file, [](const BYTE* bytes, size_t size, ByteBlock* wav) {
        return SoundToWav(bytes, size, nullptr, wav);
    });
}

// Empty when it is refused.
Image ToImage(const std::string& file) {
    const std::string bmp = Converted(file, PictureToBmp);
    if (bmp.empty()) return {};
    EXPECT_EQ(test::Number(bmp, 2, 4), bmp.size());
    return test::ReadBmp(bmp);
}

uint32_t OnBlack(uint32_t color) {
    const uint32_t alpha = color >> 24;
    uint32_t result = 0;
    for (const int shift : {16, 8, 0}) result |= ((color >> shift & 0xFF) * alpha + 127) / 255 << shift;
    return result;
}

TEST(PackageSounds, LosslessKindsAreTheSame) {
    for (const int channels : {1, 2, 6}) {
        const test::Sound sound = test::Tone(70'001, channels, 22050);
        EXPECT_TRUE(ToWav(Encode(sound, SoundFile::kFlac)) == Encode(sound, SoundFile::kWav)) << channels;
    }
}

TEST(PackageSounds, OtherKindsAreCloseAndAsLong) {
    struct {
        SoundFile kind;
        int rate;
        double worst;  // of full scale, in dB
    } const rows[] = {
        {SoundFile::kOgg, 44100, -45}, {SoundFile::kOpus, 48000, -45}, {SoundFile::kMp3, 44100, -60}};
    for (const auto& row : rows) {
        const test::Sound sound = test::Tone(30'000, 2, row.rate);
        const test::Sound got = test::Decode(ToWav(Encode(sound, row.kind)));
        EXPECT_EQ(got.rate, row.rate);
        ASSERT_EQ(got.channels, 2);
        ASSERT_EQ(got.samples.size(), sound.samples.size()) << static_cast<int>(row.kind);
        double sum = 0;
        for (size_t i = 8000; i + 8000 < got.samples.size(); ++i)
            sum += std::pow((got.samples[i] - sound.samples[i]) / 32768.0, 2);
        EXPECT_LT(10 * std::log10(sum / static_cast<double>(got.samples.size() - 16000)), row.worst)
            << static_cast<int>(row.kind);
    }
}

// A square wave of full scale rings beyond it, which must not wrap around.
TEST(PackageSounds, OverloadIsLimited) {
    test::Sound sound = {44100, 1, {}};
    for (int i = 0; i < 20'000; ++i) sound.samples.push_back(i / 60 % 2 ? -32768 : 32767);
    const test::Sound got = test::Decode(ToWav(Encode(sound, SoundFile::kOgg)));
    int limited = 0;
    for (size_t i = 0; i < got.samples.size(); ++i) {
        limited += got.samples[i] == 32767 || got.samples[i] == -32768;
        const size_t in_half = i % 60;
        if (in_half > 15 && in_half < 45) {
            EXPECT_EQ(got.samples[i] < 0, sound.samples[i] < 0) << i;
        }
    }
    EXPECT_GT(limited, 100);
}

TEST(PackageSounds, WhatBreaksOffIsCut) {
    for (const SoundFile kind : {SoundFile::kOgg, SoundFile::kFlac, SoundFile::kMp3, SoundFile::kOpus}) {
        const std::string whole = Encode(test::Tone(96'000, 2, 48000), kind);
        const std::string wav = ToWav(whole.substr(0, whole.size() / 2));
        ASSERT_FALSE(wav.empty()) << static_cast<int>(kind);
        const size_t frames = test::Decode(wav).samples.size() / 2;
        EXPECT_GT(frames, 24'000u) << static_cast<int>(kind);
        EXPECT_LT(frames, 80'000u) << static_cast<int>(kind);
    }
}

TEST(PackagePictures, EveryPngShowsItsColours) {
    using Part = uint32_t;  // one byte of it counts
    constexpr uint32_t kOpaque = 0xFF000000;
    const auto many = [](Part x, Part y) { return kOpaque | x * 7 << 16 | y * 5 << 8 | (x ^ y); };
    const struct {
        PngKind kind;
        std::function<uint32_t(Part, Part)> color;
    } rows[] = {
        {PngKind::kRgb, many},
        {PngKind::k16Bits, many},
        {PngKind::kInterlaced, many},
        {PngKind::kGrey, [](Part x, Part y) { return kOpaque | 0x010101 * (x * y & 0xFF); }},
        {PngKind::kPalette, [](Part x, Part y) { return kOpaque | x % 5 << 20 | y % 3 << 6; }},
        {PngKind::kRgba, [](Part x, Part y) { return x * 8 << 24 | y * 9 % 256 << 16 | x << 8 | 0xC0; }},
        {PngKind::kGreyAlpha, [](Part x, Part y) { return y * 8 << 24 | 0x010101 * (x * 8 & 0xFF); }},
        {PngKind::kPaletteAlpha, [](Part x, Part y) { return x % 4 * 85 << 24 | y % 3 << 20 | 0xFF; }},
    };
    for (const auto& row : rows) {
        for (const int width : {1, 2, 3, 31}) {
            const Image image = test::Paint(width, 29, row.color);
            const Image got = ToImage(EncodePng(image, row.kind));
            ASSERT_EQ(got.pixels.size(), image.pixels.size()) << static_cast<int>(row.kind);
            for (size_t i = 0; i < got.pixels.size(); ++i)
                ASSERT_EQ(got.pixels[i], OnBlack(image.pixels[i])) << static_cast<int>(row.kind) << " " << i;
        }
    }
}

TEST(PackagePictures, JpegShowsItsColoursClosely) {
    const Image image =
        test::Paint(37, 21, [](uint32_t x, uint32_t y) { return x * 6 << 16 | y * 11 << 8 | 64; });
    const Image got = ToImage(EncodeJpeg(image));
    ASSERT_EQ(got.width, 37);
    ASSERT_EQ(got.height, 21);
    for (size_t i = 0; i < got.pixels.size(); ++i) {
        for (const int shift : {0, 8, 16}) {
            const int a = static_cast<int>(got.pixels[i] >> shift & 0xFF),
                      b = static_cast<int>(image.pixels[i] >> shift & 0xFF);
            ASSERT_LE(std::abs(a - b), 4) << i;
        }
    }
}

TEST(PackagePictures, GifShowsItsFirstPictureOnItsScreen) {
    const Image image = test::Paint(
        13, 21, [](int x, int y) { return static_cast<uint32_t>((x % 7) << 21 | (y % 11) << 4); });
    for (const bool interlaced : {false, true}) {
        const Image got = ToImage(EncodeGif(image, {0, 0, 0, 0, -1, interlaced}));
        EXPECT_TRUE(got.pixels == image.pixels && got.width == 13) << interlaced;
    }
    const uint32_t clear = image.At(1, 0);  // index 1
    const Image placed = ToImage(EncodeGif(image, {3, 2, 15, 40, 1, false}));
    ASSERT_EQ(placed.width, 15);
    ASSERT_EQ(placed.height, 40);
    for (int y = 0; y < 40; ++y) {
        for (int x = 0; x < 15; ++x) {
            const bool inside = x >= 3 && y >= 2 && y < 23;
            const uint32_t color = inside ? image.At(x - 3, y - 2) : 0;
            ASSERT_EQ(placed.At(x, y), color == clear ? 0 : color) << x << " " << y;
        }
    }
}

TEST(PackagePictures, DamagedOnesAreRefused) {
    const Image image = test::Paint(
        40, 40, [](int x, int y) { return 0xFF000000u | static_cast<uint32_t>(x << 8 | (y & 3)); });
    for (const std::string& file :
         {EncodePng(image, PngKind::kRgb), EncodePng(image, PngKind::kInterlaced), EncodeGif(image)})
        EXPECT_TRUE(ToImage(file.substr(0, file.size() / 2)).pixels.empty());
    const std::string jpeg = EncodeJpeg(image);
    EXPECT_EQ(ToImage(jpeg.substr(0, jpeg.size() / 2)).width, 40)
        << "one that ends early shows its beginning";
    EXPECT_TRUE(ToImage(jpeg.substr(0, 60)).pixels.empty());
}

}  // namespace
