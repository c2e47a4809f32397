// The whole program on a chart whose sound and picture have other kinds than it names.
#include <gtest/gtest.h>

#include "host/headless/sound.h"
#include "support/media.h"
#include "support/program.h"
#include "support/tempfolder.h"

namespace {

TEST(PackageWhole, PlaysAndShowsSubstitutes) {
    test::TempFolder folder;
    folder.Write("Kick.flac", test::ReadFile(PACKAGES_DATA "/tone2.flac"));
    folder.Write("back.PNG", test::ReadFile(PACKAGES_DATA "/rgb_31.png"));
    const std::string chart =
        folder.Write("c.bms", test::Chart({"#BPM 240", "#WAV01 kick.wav", "#BMP01 back.bmp", "#00001:01",
                                           "#00004:01", "#00111:00"}) +
                                  "#00101:00000001");
    std::vector<uint32_t> shown;
    const test::RunResult run =
        test::RunProgram("-P " + test::TempFolder::Backslashes(chart),
                         {{1500, headless::Call([&] { shown = headless::ShownPicture().pixels; })},
                          {2500, headless::Key(27)}});
    EXPECT_EQ(run.log,
              "-P Option ON\nFiles: back.bmp not there, back.PNG stands for it\n"
              "Files: kick.wav not there, Kick.flac stands for it\n");
    // The picture's pixel 5, 7 in the middle of the layer, and the tone's level.
    EXPECT_EQ(shown.at((1 + 7) * 452 + 195 + 128 - 15 + 5), 5u * 7 << 16 | 7 * 5 << 8 | (5 ^ 7));
    float loudest = 0;
    for (int64_t i = 44100; i < 48000; ++i) loudest = std::max(loudest, headless::Sound().At(i, 0));
    EXPECT_NEAR(loudest, 0.5, 0.01);
}

}  // namespace
