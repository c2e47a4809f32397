// The demo as it stands in the tree: what its generator makes, and a chart that uses what it promises.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <set>
#include <string>

#include "support/tempfolder.h"

namespace {

namespace fs = std::filesystem;

const fs::path kDemo = LUMETRA_DEMO_FOLDER;

TEST(Demo, TheGeneratorMakesWhatStandsInTheTree) {
    const test::TempFolder made;
    ASSERT_EQ(std::system(("'" LUMETRA_DEMO_GENERATOR "' '" + made.Path() + "'").c_str()), 0);
    const std::set<std::string> kinds = {".bms", ".wav", ".xa", ".bmp"};
    std::set<std::string> expected, found;
    uintmax_t total = 0;
    for (const auto& entry : fs::directory_iterator(kDemo))
        if (kinds.count(entry.path().extension())) expected.insert(entry.path().filename());
    for (const auto& entry : fs::directory_iterator(made.Path())) {
        const std::string name = entry.path().filename();
        found.insert(name);
        total += fs::file_size(entry.path());
        EXPECT_TRUE(test::ReadFile(entry.path()) == test::ReadFile(kDemo / name)) << name << " differs";
    }
    EXPECT_EQ(found, expected);
    EXPECT_LT(total, 3'000'000u);
}

// By a reading of its own: all channels, keywords, and kinds of sound, told by their heads.
TEST(Demo, TheChartUsesAllThatAPlayerCanShow) {
    const std::string text = test::ReadFile(kDemo / "demo.bms");
    std::set<std::string> found;
    for (size_t at = 0, end; at < text.size(); at = end + 2) {
        end = text.find("\r\n", at);
        ASSERT_NE(end, std::string::npos);
        const std::string line = text.substr(at, end - at);
        ASSERT_EQ(line.find_first_of("\r\n"), std::string::npos) << line;
        if (line.size() > 7 && line[6] == ':') {
            found.insert(line.substr(4, 2));
        } else if (line.rfind("#WAV", 0) != 0 && line.rfind("#BMP", 0) != 0) {
            found.insert(line.substr(0, line.find(' ')));
        } else {
            ASSERT_TRUE(fs::exists(kDemo / line.substr(7))) << line;
            const std::string head = test::ReadFile(kDemo / line.substr(7)).substr(0, 36);
            if (head.rfind("KWD1", 0) == 0) found.insert(head[13] == 4 ? "fast XA" : "fine XA");
            if (head.rfind("RIFF", 0) != 0) continue;
            EXPECT_EQ(head[20], 1) << line << ": another codec needs a library that takes time to load";
            const int rate = (head[24] & 0xFF) | (head[25] & 0xFF) << 8;
            found.insert(std::to_string(head[22]) + "/" + std::to_string(head[34]) + "/" +
                         std::to_string(rate));
        }
    }
    for (const char* promised :
         {"01",     "02",      "03",      "04",        "06",         "07",         "08",
          "11",     "12",      "13",      "14",        "15",         "16",         "17",
          "18",     "19",      "21",      "22",        "23",         "24",         "25",
          "26",     "27",      "28",      "29",        "31",         "41",         "#PLAYER",
          "#TITLE", "#ARTIST", "#GENRE",  "#BPM",      "#PLAYLEVEL", "#RANK",      "#TOTAL",
          "#BGA10", "fast XA", "fine XA", "1/8/22050", "1/16/44100", "1/16/22050", "2/16/22050"})
        EXPECT_TRUE(found.count(promised)) << promised;
}

}  // namespace
