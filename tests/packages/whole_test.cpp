// The demo as a package of today, in sounds and pictures of other kinds: the whole program plays both and
// what is seen and heard is compared.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <string>
#include <vector>

#include "host/headless/sound.h"
#include "packages/encode.h"
#include "support/program.h"
#include "support/tempfolder.h"

namespace {

namespace fs = std::filesystem;

struct Played {
    std::string log;
    std::vector<uint64_t> pictures;  // of the whole window, at steps of half a second
    headless::SoundCapture sound;
};

Played Play(const std::string& chart) {
    Played played;
    headless::Script script;
    for (uint64_t ms = 1500; ms <= 38000; ms += 500) {
        script.push_back({ms, headless::Call([&played] {
                              uint64_t hash = 14695981039346656037u;
                              for (const uint32_t pixel : headless::ShownPicture().pixels)
                                  hash = (hash ^ pixel) * 1099511628211u;
                              played.pictures.push_back(hash);
                          })});
    }
    script.push_back({43000, headless::Key(27)});
    test::RunOptions options;
    options.end_ms = 60000;
    const test::RunResult run =
        test::RunProgram("-P -D " + test::TempFolder::Backslashes(chart), script, options);
    EXPECT_EQ(run.exit_code, 0);
    EXPECT_TRUE(run.faults.empty() && run.boxes.empty());
    played.log = run.log;
    played.sound = headless::Sound();
    return played;
}

struct Counts {
    int sounds = 0, pictures = 0;
};

// XA sounds stay as they are: nothing else decodes them.
Counts MakePackage(const test::TempFolder& folder, test::SoundFile kind, const std::string& ending) {
    Counts counts;
    for (const auto& entry : fs::directory_iterator(LUMETRA_DEMO_FOLDER)) {
        const std::string stem = entry.path().stem(), own = entry.path().extension(),
                          bytes = test::ReadFile(entry.path());
        if (own == ".wav") {
            folder.Write(stem + ending, Encode(test::Decode(bytes), kind));
            ++counts.sounds;
        } else if (own == ".bmp") {
            folder.Write(stem + ".png", EncodePng(test::ReadBmp(bytes), test::PngKind::kRgb));
            ++counts.pictures;
        } else if (own == ".xa" || own == ".bms") {
            folder.Write(stem + own, bytes);
        }
    }
    return counts;
}

// Of the difference, against full scale.
double Decibels(const headless::SoundCapture& a, const headless::SoundCapture& b) {
    double sum = 0;
    const int64_t end = std::max(a.End(), b.End());
    for (int64_t i = 0; i < end; ++i) {
        for (int c = 0; c < 2; ++c) sum += std::pow(double{a.At(i, c)} - double{b.At(i, c)}, 2);
    }
    return 10 * std::log10(sum / static_cast<double>(2 * end) + 1e-30);
}

int Lines(const std::string& log, const std::string& part) {
    int count = 0;
    for (size_t at = log.find(part); at != std::string::npos; at = log.find(part, at + 1)) ++count;
    return count;
}

TEST(PackageWhole, LooksAndSoundsLikeItsOriginal) {
    const Played original = Play(LUMETRA_DEMO_FOLDER "/demo.bms");
    ASSERT_EQ(original.pictures.size(), 74u);
    EXPECT_EQ(original.log, "-P Option ON\n");
    struct {
        test::SoundFile kind;
        const char* ending;
        double worst;
    } const rows[] = {{test::SoundFile::kFlac, ".flac", -290}, {test::SoundFile::kOgg, ".ogg", -54.5}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.ending);
        test::TempFolder folder;
        const Counts counts = MakePackage(folder, row.kind, row.ending);
        const Played package = Play(folder.Path("demo.bms"));
        EXPECT_TRUE(package.pictures == original.pictures);
        EXPECT_EQ(Lines(package.log, std::string(row.ending) + " stands for it\n"), counts.sounds);
        EXPECT_EQ(Lines(package.log, ".png stands for it\n"), counts.pictures);
        EXPECT_EQ(Lines(package.log, "\n"), counts.sounds + counts.pictures + 1);
        const double difference = Decibels(original.sound, package.sound);
        EXPECT_LE(difference, row.worst);
        RecordProperty(std::string("difference_db") + row.ending, std::to_string(difference));
    }
}

}  // namespace
