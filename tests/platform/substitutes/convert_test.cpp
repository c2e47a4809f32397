// Sounds and pictures of other kinds become WAV and BMP files: the stored ones, whole and broken off, and the
// inputs of the fuzz targets.
#include <gtest/gtest.h>

#include <cmath>

#include "platform/substitutes/picture.h"
#include "platform/substitutes/sound.h"
#include "support/media.h"
#include "support/stored.h"

// Each truncated Vorbis header leaks 6 kB inside the library.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libvorbis\nleak:libsndfile\n";
}

namespace {

std::string Text(const ByteBlock& block) {
    return std::string(reinterpret_cast<const char*>(block.Data()), block.Size());
}

const BYTE* Bytes(const std::string& text) {
    return reinterpret_cast<const BYTE*>(text.data());
}

std::string ToWav(const std::string& file) {
    ByteBlock wav;
    size_t held = 0;
    if (!SoundToWav(
            Bytes(file), file.size(), [&](size_t bytes) { return held = bytes, true; }, &wav))
        return "";
    EXPECT_EQ(held, file.size() + wav.Size());
    return Text(wav);
}

// Samples of one side.
std::vector<double> Samples(const std::string& wav, size_t side = 0) {
    std::vector<double> samples;
    const size_t align = test::Number(wav, 32, 2);
    for (size_t at = 44 + 2 * side; at + 2 <= wav.size(); at += align)
        samples.push_back(static_cast<int16_t>(test::Number(wav, at, 2)) / 32768.0);
    return samples;
}

std::string Report(const std::string& name, const std::string& file) {
    ByteBlock bmp;
    std::ostringstream text;
    if (PictureToBmp(Bytes(file), file.size(), &bmp)) {
        const std::string bytes = Text(bmp);
        text << test::Number(bytes, 18, 4) << " by " << test::Number(bytes, 22, 4) << ", "
             << test::Number(bytes, 28, 2) << " bits";
        // What a JPEG decoder gives depends on its release, to the bit; so do lossy sounds.
        if (file[0] != '\xFF') text << ' ' << test::Hash(bytes);
    } else if (const std::string wav = ToWav(file); !wav.empty()) {
        const size_t frames = (wav.size() - 44) / test::Number(wav, 32, 2);
        text << test::Number(wav, 22, 2) << " x " << test::Number(wav, 24, 4) << " Hz, ";
        if (file[0] == 'f')
            text << frames << " frames " << test::Hash(wav.size() < 1 << 20 ? wav : wav.substr(0, 44));
        else
            text << frames / 1000 << ",000 frames";
    } else {
        text << "refused";
    }
    return name + text.str();
}

TEST(PackageFiles, BecomeWhatIsStored) {
    std::string text;
    for (const char* folder :
         {PACKAGES_DATA, FUZZ_INPUTS "/fuzz_picture_file", FUZZ_INPUTS "/fuzz_sound_file"}) {
        std::map<std::string, std::string> files;
        for (const auto& entry : std::filesystem::directory_iterator(folder))
            if (entry.path().extension() != ".txt")
                files[entry.path().filename()] = test::ReadFile(entry.path());
        for (const auto& [name, file] : files) {
            text += Report(name + ": ", file) + Report("; half ", file.substr(0, file.size() / 2)) +
                    Report("; beginning ", file.substr(0, 60)) + "\n";
        }
    }
    test::ExpectStored(text, PACKAGES_DATA "/converted.txt");
}

// The tone is 441 Hz at half of full scale, its right side turned over.
TEST(PackageFiles, LossySoundsAreClose) {
    const std::pair<const char*, double> rows[] = {
        {"/tone.ogg", -45}, {"/tone.opus", -42}, {"/tone.mp3", -60}};
    for (const auto& [name, worst] : rows) {
        const std::string wav = ToWav(test::ReadFile(std::string(PACKAGES_DATA) + name));
        for (const size_t side : {0, 1}) {
            const std::vector<double> got = Samples(wav, side);
            ASSERT_EQ(got.size(), 9000u) << name;
            double sum = 0;
            for (size_t i = 2000; i < 7000; ++i) {
                const double t = static_cast<double>(i) / test::Number(wav, 24, 4);
                sum += std::pow(got[i] - (side ? -0.5 : 0.5) * std::sin(2 * 3.14159265358979 * 441 * t), 2);
            }
            EXPECT_LT(10 * std::log10(sum / 5000), worst) << name;
        }
    }
}

// A square wave of full scale, 60 samples up and 60 down, rings beyond it, which must not wrap around.
TEST(PackageFiles, OverloadIsLimited) {
    const std::vector<double> got = Samples(ToWav(test::ReadFile(PACKAGES_DATA "/square.ogg")));
    int limited = 0;
    for (size_t i = 0; i < got.size(); ++i) {
        limited += got[i] > 0.9999 || got[i] == -1;
        if (i % 60 > 15 && i % 60 < 45) {
            EXPECT_EQ(got[i] < 0, i / 60 % 2 == 1) << i;
        }
    }
    EXPECT_GT(limited, 100);
}

TEST(PackageFiles, JpegShowsItsColoursClosely) {
    const std::string file = test::ReadFile(PACKAGES_DATA "/shades.jpg");
    ByteBlock bmp;
    ASSERT_TRUE(PictureToBmp(Bytes(file), file.size(), &bmp));
    for (int y = 0; y < 21; ++y) {
        for (int x = 0; x < 37; ++x) {
            const BYTE* pixel = bmp.Data() + 54 + (20 - y) * 112 + x * 3;
            const int wanted[] = {64, y * 11, x * 6};
            for (int i = 0; i < 3; ++i) ASSERT_NEAR(pixel[i], wanted[i], 4) << x << " " << y;
        }
    }
}

TEST(PackageFiles, WhatMayNotBeHeldIsNotMade) {
    const std::string file = test::ReadFile(PACKAGES_DATA "/silence_26min.flac");
    ByteBlock wav;
    int asked = 0;
    EXPECT_FALSE(SoundToWav(
        Bytes(file), file.size(), [&](size_t) { return ++asked < 5; }, &wav));
    EXPECT_EQ(asked, 5);
}

}  // namespace
