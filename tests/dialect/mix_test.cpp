#include "dialect/mix.h"

#include <gtest/gtest.h>

#include "support/chart_file.h"

namespace {

using dialect::Stem;
using dialect::StemItem;

constexpr double kRate = 1000;  // a frame is a millisecond

// Sound n is constantly n / 10, 100 frames of stereo.
dialect::Pcm Constant(int32_t sound, size_t) {
    static std::vector<std::vector<float>> sounds(11);
    auto& samples = sounds[static_cast<size_t>(sound)];
    samples.assign(200, static_cast<float>(sound) / 10);
    return {samples.data(), 100};
}

Stem StemOf(std::vector<StemItem> items) {
    Stem stem{};
    stem.parts = 1;
    stem.items = std::move(items);
    return stem;
}

TEST(Mix, EachSoundLiesAtItsTimeUntilItIsCut) {
    const Stem stem = StemOf({{1, 0, 10, dialect::kWhole, {}}, {2, 0, 50, 30, {}}});
    const std::vector<float> mix = dialect::MixPart(stem, 0, Constant, kRate);
    ASSERT_EQ(mix.size(), 2u * 110);
    const std::pair<int, float> rows[] = {{9, 0},     {10, 0.1f}, {49, 0.1f}, {50, 0.3f},
                                          {79, 0.3f}, {80, 0.1f}, {109, 0.1f}};
    for (const auto& [frame, value] : rows) {
        EXPECT_FLOAT_EQ(mix[2 * frame], value) << frame;
        EXPECT_FLOAT_EQ(mix[2 * frame + 1], value) << frame;
    }
}

TEST(Mix, LoudStemsAreSplitUntilThePartsRunOut) {
    const std::vector<StemItem> items = {{6, 0, 0, dialect::kWhole, {}},
                                         {6, 0, 50, dialect::kWhole, {}},
                                         {3, 0, 50, dialect::kWhole, {}},
                                         {6, 0, 150, dialect::kWhole, {}},
                                         {10, 0, 140, dialect::kWhole, {}}};
    Stem stem = StemOf(items);
    dialect::SplitStem(Constant, kRate, 9, &stem);
    EXPECT_EQ(stem.parts, 3);
    EXPECT_FALSE(stem.limited);
    const int32_t parts[] = {0, 1, 0, 0, 2};
    for (size_t i = 0; i < 5; ++i) EXPECT_EQ(stem.items[i].part, parts[i]) << i;
    stem = StemOf(items);
    dialect::SplitStem(Constant, kRate, 2, &stem);
    EXPECT_EQ(stem.parts, 2);
    EXPECT_TRUE(stem.limited);
}

// What is too loud for all parts costs no more than a few tries.
TEST(Mix, ManyPartsAreNotAllTried) {
    Stem stem = StemOf({20, {10, 0, 0, dialect::kWhole, {}}});
    stem.items.push_back({10, 0, 100, dialect::kWhole, {}});
    dialect::SplitStem(Constant, kRate, 99, &stem);
    EXPECT_EQ(stem.parts, 20);
    EXPECT_EQ(stem.items[20].part, 20 - 16);
}

TEST(Mix, AMissingFileIsSilence) {
    const Stem stem = StemOf({{1, 0, 10, dialect::kWhole, {}}});
    EXPECT_TRUE(dialect::MixPart(
                    stem, 0, [](int32_t, size_t) { return dialect::Pcm{}; }, kRate)
                    .empty());
}

// The second part gets a number and a name of its own, and both start with the measure.
TEST(Mix, SplitStemsAreNumberedAnew) {
    std::string text = "#BPM 240\n";
    const char* digits = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    for (int n = 1; n <= 600; ++n) {
        const std::string id{digits[n / 36], digits[n % 36]};
        text += "#WAV" + id + " " + id + ".wav\n#00101:" + id + "\n";
    }
    dialect::Plan plan = dialect::MakePlan(Lines(text), {});
    ASSERT_EQ(plan.stems.size(), 1u);
    const size_t own = plan.sounds.size();
    EXPECT_EQ(own + plan.mixed.size(), 600u);
    EXPECT_EQ(dialect::SplitStems([](int32_t, size_t) { return Constant(6, 0); }, kRate, &plan), 1);
    EXPECT_EQ(plan.stems[0].parts, static_cast<int32_t>(575 - own - 1));
    EXPECT_EQ(dialect::SpareParts(plan), 0);
    const std::string out = dialect::WriteText(plan);
    EXPECT_NE(out.find("#WAVFZ stem-001-2.wav\r\n"), out.npos) << out.substr(out.size() - 400);
    EXPECT_NE(out.find("#00101:FY\r\n#00101:FZ\r\n"), out.npos);
}

}  // namespace
