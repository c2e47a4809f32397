// Files that ask for too much are refused or cut, and memory stays bounded.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "packages/encode.h"
#include "platform/substitutes/picture.h"
#include "platform/substitutes/sound.h"
#include "support/media.h"

namespace {

const BYTE* Bytes(const std::string& text) {
    return reinterpret_cast<const BYTE*>(text.data());
}

bool IsPictureTaken(const std::string& file) {
    ByteBlock bmp;
    return PictureToBmp(Bytes(file), file.size(), &bmp);
}

// Puts another number at a place, its highest byte first.
void Put(std::string* file, size_t at, uint32_t value, size_t bytes) {
    std::string number = test::LittleEndian(value, static_cast<int>(bytes));
    std::reverse(number.begin(), number.end());
    file->replace(at, bytes, number);
}

uint32_t Crc(const std::string& bytes) {
    uint32_t crc = ~0u;
    for (const char c : bytes) {
        crc ^= static_cast<unsigned char>(c);
        for (int i = 0; i < 8; ++i) crc = crc & 1 ? crc >> 1 ^ 0xEDB88320u : crc >> 1;
    }
    return ~crc;
}

// The same file with other sizes in its head.
std::string ResizedPng(std::string file, uint32_t width, uint32_t height) {
    Put(&file, 16, width, 4);
    Put(&file, 20, height, 4);
    Put(&file, 29, Crc(file.substr(12, 17)), 4);
    return file;
}

std::string ResizedJpeg(std::string file, uint32_t width, uint32_t height) {
    const size_t frame = file.find("\xFF\xC0");
    Put(&file, frame + 5, height, 2);
    Put(&file, frame + 7, width, 2);
    return file;
}

std::string ResizedGif(std::string file, uint32_t width, uint32_t height) {
    return file.replace(6, 4, test::LittleEndian(width, 2) + test::LittleEndian(height, 2));
}

TEST(PackageBounds, LargePicturesAreRefused) {
    const test::Image image =
        test::Paint(8, 8, [](int x, int y) { return static_cast<uint32_t>(x + 8 * y); });
    const std::string png = EncodePng(image, test::PngKind::kRgb), jpeg = test::EncodeJpeg(image),
                      gif = test::EncodeGif(image);
    ASSERT_TRUE(IsPictureTaken(ResizedPng(png, 8, 8)));
    ASSERT_TRUE(IsPictureTaken(ResizedJpeg(jpeg, 8, 8)));
    ASSERT_TRUE(IsPictureTaken(ResizedGif(gif, 9, 8)));
    const uint32_t sizes[][2] = {{60'000, 60'000}, {4097, 1}, {1, 4097}, {65'535, 65'535}};
    for (const auto& [width, height] : sizes) {
        EXPECT_FALSE(IsPictureTaken(ResizedPng(png, width, height))) << width;
        EXPECT_FALSE(IsPictureTaken(ResizedJpeg(jpeg, width, height))) << width;
        EXPECT_FALSE(IsPictureTaken(ResizedGif(gif, width, height))) << width;
    }
    EXPECT_FALSE(IsPictureTaken(ResizedPng(png, 0x7FFFFFFF, 0x7FFFFFFF)));
}

TEST(PackageBounds, TheLargestPictureIsTaken) {
    const test::Image image = test::Paint(kMaxPictureSide, kMaxPictureSide,
                                          [](int x, int) { return static_cast<uint32_t>(x & 1); });
    EXPECT_TRUE(IsPictureTaken(EncodePng(image, test::PngKind::kPalette)));
}

// A progressive picture of one block in that many scans: those after the first refine one coefficient each.
std::string JpegInScans(int scans) {
    std::string file = test::EncodeJpeg(test::Paint(8, 8, [](int, int) { return 0u; }));
    file[file.find("\xFF\xC0") + 1] = '\xC2';
    file.resize(file.find("\xFF\xDA"));
    for (int i = 0; i < scans; ++i) {
        const int coefficient = (i + 9) / 10, bit = i > 0 ? 9 - (i - 1) % 10 : 0;
        file += std::string("\xFF\xDA\0\x08\x01\x01\0", 7) + std::string(2, static_cast<char>(coefficient));
        file += static_cast<char>(i > 0 && bit < 9 ? (bit + 1) << 4 | bit : bit);
        file += i > 0 ? '\xAF' : '\x3F';  // nothing there
    }
    return file + "\xFF\xD9";
}

TEST(PackageBounds, PicturesOfManyScansAreRefused) {
    EXPECT_TRUE(IsPictureTaken(JpegInScans(400)));
    EXPECT_FALSE(IsPictureTaken(JpegInScans(600)));
}

// Half an hour of silence in few bytes.
TEST(PackageBounds, EndlessSilenceIsCut) {
    test::Sound silence = {48000, 2, std::vector<int16_t>(size_t{48000} * 2 * 60 * 26)};
    const std::string file = Encode(silence, test::SoundFile::kFlac);
    silence.samples = {};
    EXPECT_LT(file.size(), 1'000'000u);
    ByteBlock wav;
    size_t held = 0;
    ASSERT_TRUE(SoundToWav(
        Bytes(file), file.size(), [&](size_t bytes) { return held = bytes, true; }, &wav));
    EXPECT_EQ(wav.Size(), 44 + kMaxSoundPcm / 4 * 4);
    EXPECT_LE(held, file.size() + wav.Size());
    size_t asked = 0;
    EXPECT_FALSE(SoundToWav(
        Bytes(file), file.size(), [&](size_t) { return ++asked < 5; }, &wav));
    EXPECT_EQ(asked, 5u);
}

TEST(PackageBounds, SoundsOfTooManyChannelsAreRefused) {
    const std::string eight = Encode(test::Tone(1000, 8), test::SoundFile::kFlac);
    ByteBlock wav;
    EXPECT_TRUE(SoundToWav(Bytes(eight), eight.size(), nullptr, &wav));
    const std::string nine = Encode(test::Tone(1000, 9), test::SoundFile::kOgg);
    EXPECT_FALSE(SoundToWav(Bytes(nine), nine.size(), nullptr, &wav));
}

}  // namespace
