// The demo played by the whole program: everything is found, nothing clips, no hole in the music, pictures
// that move.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <set>

#include "display/ddraw.h"
#include "host/headless/sound.h"
#include "playback/playback.h"
#include "shell/shell.h"
#include "sound/dsbuffer.h"
#include "sound/dsound.h"
#include "support/program.h"

namespace {

std::string DemoPath() {
    std::string path = LUMETRA_DEMO_FOLDER "/demo.bms";
    std::replace(path.begin(), path.end(), '/', '\\');
    return path;
}

// What the chart names and what of it came, while it plays.
struct Slots {
    int sounds_named = 0, sounds_loaded = 0, pictures_named = 0, pictures_loaded = 0;
    int notes_without_sound = 0;
};

Slots CountSlots() {
    Slots out;
    for (int i = 0; i < 576; ++i) {
        out.sounds_named += g_pBMS->m_aszWav[i][0] != 0;
        out.sounds_loaded += g_pDSound->m_pSlot[i] && g_pDSound->m_pSlot[i]->m_pDSB;
        out.pictures_named += g_pBMS->m_aszBmp[i][0] != 0;
        out.pictures_loaded += g_pDDraw->m_apDib[i] != nullptr;
    }
    for (int i = 0; i < g_nNoteCount; ++i) out.notes_without_sound += g_pNoteList[i].pObject == nullptr;
    for (int i = 0; i < g_nBgmCount; ++i) out.notes_without_sound += g_pBgmList[i].pObject == nullptr;
    return out;
}

// The picture field of the window as it is now, as one number.
uint64_t FieldHash() {
    const headless::Picture& shown = headless::ShownPicture();
    uint64_t hash = 14695981039346656037u;
    for (int y = 1; y < 257; ++y) {
        for (int x = 195; x < 451; ++x)
            hash = (hash ^ shown.pixels[static_cast<size_t>(y) * shown.width + x]) * 1099511628211u;
    }
    return hash;
}

double Loudness(const headless::SoundCapture& sound, int64_t from, int64_t to) {
    double sum = 0;
    for (int64_t i = from; i < to; ++i) sum += std::abs(sound.At(i, 0)) + std::abs(sound.At(i, 1));
    return sum / static_cast<double>(2 * (to - from));
}

TEST(DemoPlay, SoundsAndShowsAllThatItNames) {
    Slots slots;
    std::set<uint64_t> fields;
    headless::Script script = {{1500, headless::Call([&slots] { slots = CountSlots(); })}};
    for (uint64_t ms = 2000; ms <= 38000; ms += 500)
        script.push_back({ms, headless::Call([&fields] { fields.insert(FieldHash()); })});
    script.push_back({43000, headless::Key(27)});
    test::RunOptions options;
    options.end_ms = 60000;
    test::RunResult run = test::RunProgram("-P -D " + DemoPath(), script, options);
    EXPECT_EQ(run.exit_code, 0);
    EXPECT_TRUE(run.faults.empty()) << run.faults.front();
    EXPECT_TRUE(run.boxes.empty());
    EXPECT_EQ(run.log, "-P Option ON\n");
    EXPECT_EQ(slots.sounds_loaded, slots.sounds_named);
    EXPECT_GT(slots.sounds_named, 60);
    EXPECT_EQ(slots.pictures_loaded, slots.pictures_named);
    EXPECT_GT(slots.pictures_named, 15);
    EXPECT_EQ(slots.notes_without_sound, 0);
    EXPECT_GT(fields.size(), 40u) << "of 73 looks at the pictures few differ";

    const headless::SoundCapture& sound = headless::Sound();
    ASSERT_GT(sound.rate, 0);
    float peak = 0;
    for (float x : sound.samples) peak = std::max(peak, std::abs(x));
    EXPECT_LT(peak, 0.97f);
    EXPECT_GT(peak, 0.7f);
    int64_t first = 0;
    while (first < sound.End() && std::abs(sound.At(first, 0)) < 0.002f) ++first;
    EXPECT_NEAR(static_cast<double>(first) / sound.rate, 1.0, 0.06);
    for (int quarter = 5; quarter < 38 * 4; ++quarter) {
        EXPECT_GT(Loudness(sound, int64_t{sound.rate} * quarter / 4, int64_t{sound.rate} * (quarter + 1) / 4),
                  0.003)
            << "silence at " << quarter / 4.0 << " s";
    }
}

}  // namespace
