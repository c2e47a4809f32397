// The demo as it stands in the tree: what its generator makes, and a chart that uses what it promises.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <set>
#include <string>

#include "support/tempfolder.h"

namespace {

namespace fs = std::filesystem;

const fs::path kDemo = LUMETRA_DEMO_FOLDER;

bool IsMade(const fs::path& path) {
    return path.extension() == ".bms" || path.extension() == ".wav" || path.extension() == ".xa" ||
           path.extension() == ".bmp";
}

TEST(Demo, TheGeneratorMakesWhatStandsInTheTree) {
    const test::TempFolder made;
    ASSERT_EQ(std::system(("'" LUMETRA_DEMO_GENERATOR "' '" + made.Path() + "'").c_str()), 0);
    std::set<std::string> expected, found;
    uintmax_t total = 0;
    for (const auto& entry : fs::directory_iterator(kDemo)) {
        if (IsMade(entry.path())) expected.insert(entry.path().filename());
    }
    for (const auto& entry : fs::directory_iterator(made.Path())) {
        const std::string name = entry.path().filename();
        found.insert(name);
        total += fs::file_size(entry.path());
        EXPECT_TRUE(test::ReadFile(entry.path()) == test::ReadFile(kDemo / name)) << name << " differs";
    }
    EXPECT_EQ(found, expected);
    EXPECT_LT(total, 3'000'000u);
}

// The chart by a reading of its own: lines by channel, and every name that it gives.
struct Lines {
    std::map<std::string, int> channels;
    std::set<std::string> keywords, names;
    bool endings_good = true;
};

Lines ReadLines() {
    Lines out;
    const std::string text = test::ReadFile(kDemo / "demo.bms");
    for (size_t at = 0, end; at < text.size(); at = end + 2) {
        end = text.find("\r\n", at);
        out.endings_good = out.endings_good && end != std::string::npos;
        if (!out.endings_good) break;
        const std::string line = text.substr(at, end - at);
        out.endings_good = line.find_first_of("\r\n") == std::string::npos;
        if (line.size() > 7 && line[6] == ':') {
            ++out.channels[line.substr(4, 2)];
        } else if (line.rfind("#WAV", 0) == 0 || line.rfind("#BMP", 0) == 0) {
            out.names.insert(line.substr(7));
        } else {
            out.keywords.insert(line.substr(0, line.find(' ')));
        }
    }
    return out;
}

TEST(Demo, TheChartUsesAllThatAPlayerCanShow) {
    Lines lines = ReadLines();
    EXPECT_TRUE(lines.endings_good);
    for (const char* channel :
         {"01", "02", "03", "04", "06", "07", "08", "11", "12", "13", "14", "15", "16", "17",
          "18", "19", "21", "22", "23", "24", "25", "26", "27", "28", "29", "31", "41"}) {
        EXPECT_GT(lines.channels[channel], 0) << channel;
    }
    for (const char* keyword :
         {"#PLAYER", "#TITLE", "#ARTIST", "#GENRE", "#BPM", "#PLAYLEVEL", "#RANK", "#TOTAL", "#BGA10"}) {
        EXPECT_TRUE(lines.keywords.count(keyword)) << keyword;
    }
    for (const std::string& name : lines.names) EXPECT_TRUE(fs::exists(kDemo / name)) << name;
}

// The kinds of sound, told by their heads.
TEST(Demo, ItsSoundsAreOfSeveralKinds) {
    std::set<std::string> kinds;
    for (const std::string& name : ReadLines().names) {
        const std::string head = test::ReadFile(kDemo / name).substr(0, 36);
        if (head.rfind("KWD1", 0) == 0) kinds.insert(head[13] == 4 ? "fast XA" : "fine XA");
        if (head.rfind("RIFF", 0) != 0) continue;
        EXPECT_EQ(head[20], 1) << name << ": another codec needs a library that takes time to load";
        const int rate = static_cast<unsigned char>(head[24]) | static_cast<unsigned char>(head[25]) << 8;
        kinds.insert(std::to_string(head[22]) + "/" + std::to_string(head[34]) + "/" + std::to_string(rate));
    }
    for (const char* kind : {"fast XA", "fine XA", "1/16/44100", "1/16/22050", "2/16/22050", "1/8/22050"})
        EXPECT_TRUE(kinds.count(kind)) << kind;
}

}  // namespace
