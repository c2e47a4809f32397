// The demo as it stands in the tree: what its generator makes, and a chart that uses what it promises.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <string>

namespace {

namespace fs = std::filesystem;

const fs::path kDemo = LUMETRA_DEMO_FOLDER;

std::string Read(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

bool IsMade(const fs::path& path) {
    return path.extension() == ".bms" || path.extension() == ".wav" || path.extension() == ".xa" ||
           path.extension() == ".bmp";
}

TEST(Demo, TheGeneratorMakesWhatStandsInTheTree) {
    std::string name = (fs::temp_directory_path() / "lumetra-demo-XXXXXX").string();
    ASSERT_NE(mkdtemp(name.data()), nullptr);
    fs::path made = name;
    ASSERT_EQ(std::system(("'" LUMETRA_DEMO_GENERATOR "' '" + name + "'").c_str()), 0);
    std::set<std::string> expected, found;
    uintmax_t total = 0;
    for (const auto& entry : fs::directory_iterator(kDemo)) {
        if (IsMade(entry.path())) expected.insert(entry.path().filename());
    }
    for (const auto& entry : fs::directory_iterator(made)) {
        found.insert(entry.path().filename());
        total += fs::file_size(entry.path());
        EXPECT_TRUE(Read(entry.path()) == Read(kDemo / entry.path().filename()))
            << entry.path().filename() << " differs";
    }
    EXPECT_EQ(found, expected);
    EXPECT_LT(total, 3'000'000u);
    fs::remove_all(made);
}

// The chart by a reading of its own: lines by channel, and every name that it gives.
struct Lines {
    std::map<std::string, int> channels;
    std::set<std::string> keywords, names;
    bool endings_good = true;
};

Lines ReadLines() {
    Lines out;
    std::string text = Read(kDemo / "demo.bms");
    size_t at = 0;
    while (at < text.size()) {
        size_t end = text.find("\r\n", at);
        if (end == std::string::npos) {
            out.endings_good = false;
            break;
        }
        std::string line = text.substr(at, end - at);
        at = end + 2;
        out.endings_good = out.endings_good && line.find_first_of("\r\n") == std::string::npos;
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
        std::string head = Read(kDemo / name).substr(0, 36);
        if (head.rfind("KWD1", 0) == 0) kinds.insert(head[13] == 4 ? "fast XA" : "fine XA");
        if (head.rfind("RIFF", 0) != 0) continue;
        EXPECT_EQ(head[20], 1)
            << name;  // PCM: what else is in WAV files needs a library that takes time to load
        int tag = static_cast<unsigned char>(head[20]), bits = static_cast<unsigned char>(head[34]);
        int rate = static_cast<unsigned char>(head[24]) | static_cast<unsigned char>(head[25]) << 8;
        kinds.insert(std::to_string(tag) + "/" + std::to_string(static_cast<int>(head[22])) + "/" +
                     std::to_string(bits) + "/" + std::to_string(rate));
    }
    for (const char* kind :
         {"fast XA", "fine XA", "1/1/16/44100", "1/1/16/22050", "1/2/16/22050", "1/1/8/22050"}) {
        EXPECT_TRUE(kinds.count(kind)) << kind;
    }
}

}  // namespace
