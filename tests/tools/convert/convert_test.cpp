// lumetra-convert run as a user runs it.
#include <gtest/gtest.h>
#include <unistd.h>

#include <random>

#include "support/media.h"
#include "tools/run_tool.h"

namespace {

namespace fs = std::filesystem;

std::string Number(int number) {
    const std::string digits = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    return {digits[static_cast<size_t>(number / 36)], digits[static_cast<size_t>(number % 36)]};
}

// A long note, so that the chart is not passed through.
const std::string kChart =
    "#TITLE t\n#BPM 120\n#WAV01 kick.wav\n#WAV02 Sub\\snare.wav\n#WAV03 gone.wav\n#BMP01 bg.bmp\n#BMP02 "
    "a.mpg\n"
    "#00111:0102\n#00151:01000100\n#00116:03\n#00104:0102\n";

class Convert : public test::ToolTest {
protected:
    void SetUp() override {
        folder_.Write("song/song.bms", kChart);
        folder_.Write("song/kick.wav", test::SquareWav(441));
        folder_.Write("song/sub/SNARE.wav", test::SquareWav(441));
        folder_.Write("song/bg.bmp", test::Bmp(4, 4, 0xFF0000u));
        folder_.Write("song/a.mpg", "film");
    }
    test::ToolResult Run(const std::string& arguments) {
        return RunTool(LUMETRA_CONVERT, folder_.Path(), arguments);
    }
    // Every file below a folder with where it leads, one a line, in order.
    std::string Tree(const std::string& name) {
        std::vector<std::string> lines;
        for (const auto& entry : fs::recursive_directory_iterator(folder_.Path(name))) {
            if (entry.is_directory() && !entry.is_symlink()) continue;
            const std::string path = entry.path().string().substr(folder_.Path(name).size() + 1);
            lines.push_back(path + (entry.is_symlink() ? " -> " + fs::read_symlink(entry).string() : "") +
                            "\n");
        }
        std::sort(lines.begin(), lines.end());
        std::string text;
        for (const std::string& line : lines) text += line;
        return text;
    }
    // Left channel of a chart, rendered.
    std::vector<int16_t> Render(const std::string& chart) {
        const test::ToolResult result = RunTool(LUMETRA_RENDER, folder_.Path(), "--wav sound.wav " + chart);
        EXPECT_EQ(result.code, 0) << result.text;
        const std::string wav = test::ReadFile(folder_.Path("sound.wav"));
        std::vector<int16_t> left;
        for (size_t i = 44; i + 4 <= wav.size(); i += 4)
            left.push_back(static_cast<int16_t>(static_cast<uint8_t>(wav[i]) | wav[i + 1] << 8));
        return left;
    }
};

const char kGolden[] =
    ".lumetra-convert\na.mpg -> ../song/a.mpg\nbg.bmp -> ../song/bg.bmp\nkick.wav -> ../song/kick.wav\n"
    "song.bms\nsub/SNARE.wav -> ../../song/sub/SNARE.wav\n";

TEST_F(Convert, Package) {
    const test::ToolResult dry = Run("--dry-run song/song.bms out");
    ExpectSays(dry, 0, "link sub/SNARE.wav -> ", "dry run");
    EXPECT_FALSE(fs::exists(folder_.Path("out")));
    const test::ToolResult result = Run("song/song.bms out");
    ExpectSays(result, 0, "song/song.bms:5:8: warning: `gone.wav` is not there [missing-file]", "finding");
    ExpectSays(result, 0, "song/song.bms:7:8: warning: `a.mpg` is a film, its place stays blank: ", "film");
    EXPECT_EQ(Tree("out"), kGolden);
    EXPECT_EQ(test::ReadFile(folder_.Path("out/.lumetra-convert")),
              "lumetra-convert 1\na.mpg\nbg.bmp\nkick.wav\nsong.bms\nsub/SNARE.wav\n");
    EXPECT_EQ(
        test::ReadFile(folder_.Path("out/song.bms")).find("#TITLE t\r\n#BPM 120\r\n#WAV01 kick.wav\r\n"), 0u);
    // Once more, with copies, into a folder behind a link; then a chart that needs nothing.
    fs::create_directory_symlink("out", folder_.Path("link"));
    ExpectSays(Run("--copy song/song.bms link/"), 0, "4 files copied to", "copies");
    EXPECT_EQ(test::ReadFile(folder_.Path("out/sub/SNARE.wav")), test::SquareWav(441));
    EXPECT_FALSE(fs::is_symlink(folder_.Path("out/kick.wav")));
    const std::string plain = "#BPM 120\r\n#WAV01 kick.wav\r\n#00111:01\r\n#00211:01\r\n";
    folder_.Write("song/plain.bms", plain);
    ExpectSays(Run("song/plain.bms out"), 0, "chart as it is", "unchanged");
    EXPECT_EQ(Tree("out"), ".lumetra-convert\nkick.wav -> ../song/kick.wav\nplain.bms\n");
    EXPECT_EQ(test::ReadFile(folder_.Path("out/plain.bms")), plain);
    EXPECT_EQ(Tree("").find(".lumetra-convert-"), std::string::npos) << "leaves nothing beside";
}

TEST_F(Convert, FindingsAreCounted) {
    std::string chart = kChart;
    for (int i = 0; i < 300; ++i) chart += "#00211:010\n";
    folder_.Write("song/many.bms", chart);
    ExpectSays(Run("song/many.bms out"), 0, "song/many.bms: 295 more of [odd-data], --all shows them", "few");
    const std::string all = Run("--all song/many.bms out").text;
    EXPECT_NE(all.find("song/many.bms:311:"), std::string::npos) << all;
    EXPECT_TRUE(all.find("more of") == all.npos && all.find(":0:0:") == all.npos) << all;
}

// The film is red for a second and then blue.
TEST_F(Convert, FilmsBecomeStills) {
    if (std::system("command -v ffmpeg ffprobe >/dev/null") != 0) GTEST_SKIP() << "needs the ffmpeg program";
    folder_.Write("song/film.webm", test::ReadFile(STORED_FILM));  // beside the name that the chart has
    folder_.Write("film.bms",
                  "#BPM 120\n#WAV01 kick.wav\n#BMP01 film.mpg\n#00111:01\n#00104:01\n#00311:01\n");
    fs::rename(folder_.Path("film.bms"), folder_.Path("song/film.bms"));
    ExpectSays(Run("song/film.bms out"), 0, "`film.mpg` is shown as 50 stills, 25.0 a second [film]", "film");
    EXPECT_EQ(Tree("out"),
              ".lumetra-convert\nfilm-001.bmp\nfilm-002.bmp\nfilm-003.bmp\nfilm-004.bmp\nfilm.bms\n"
              "kick.wav -> ../song/kick.wav\n");
    const auto blue_of = [&](const char* sheet, size_t x, size_t y) {  // pixels from the top left
        const std::string bmp = test::ReadFile(folder_.Path(sheet));
        return static_cast<uint8_t>(bmp[54 + ((1023 - y) * 1024 + x) * 3]);
    };
    EXPECT_LT(blue_of("out/film-001.bmp", 128, 128), 40);
    EXPECT_LT(blue_of("out/film-002.bmp", 0, 640), 40);  // still 24
    EXPECT_GT(blue_of("out/film-002.bmp", 384, 640), 200);
    EXPECT_GT(blue_of("out/film-004.bmp", 384, 128), 200);
}

// What is refused changes nothing.
TEST_F(Convert, Refusals) {
    ASSERT_EQ(Run("song/song.bms out").code, 0);
    folder_.Write("full/a.txt", "mine");
    folder_.Write("fake/.lumetra-convert", "other\na.txt\n");
    fs::create_directory_symlink(folder_.Path("full"), folder_.Path("out/folder"));
    folder_.Write("uses.bms", "#WAV01 out2\\kick.wav\n#BPM 120\n#00111:01\n");
    ASSERT_EQ(Run("--copy song/song.bms out2").code, 0);
    folder_.Write("empty.bms", "#TITLE\n");
    folder_.Write("plain", "");
    const struct {
        const char* arguments;
        int code;
        const char* says;
    } rows[] = {
        {"song/song.bms full", 1, "holds no package"},
        {"song/song.bms fake", 1, "holds no package"},
        {"song/song.bms song", 1, "holds no package"},
        {"song/song.bms out", 1, "not of its package: folder"},
        {"song/song.bms plain", 1, "is not a folder"},
        {"song/song.bms no/out", 1, "is not there"},
        {"song/song.bms no/.", 1, "No such file"},
        {"out2/song.bms out2", 1, "the chart is in it"},
        {"uses.bms out2", 1, "uses a file in it"},
        {"gone.bms new", 2, "no such file"},
        {"empty.bms new", 2, "nothing to play"},
        {"song/song.bms", 1, "no folder given"},
        {"--seed x song/song.bms new", 1, "--seed: invalid value"},
        {"--random 1,0 song/song.bms new", 1, "--random: invalid value"},
        {"--seed 1 --random 1 song/song.bms new", 1, "exclude each other"},
    };
    const std::string before = Tree("");
    for (const auto& row : rows) ExpectSays(Run(row.arguments), row.code, row.says, row.arguments);
    EXPECT_EQ(Tree(""), before);
}

// A disk that is full in the middle of it.
TEST_F(Convert, Failure) {
    ASSERT_EQ(Run("song/song.bms out").code, 0);
    const std::string before = Tree("");
    ExpectSays(
        RunTool(LUMETRA_CONVERT, folder_.Path(), "--copy song/song.bms out", "trap '' XFSZ; ulimit -f 1;"), 3,
        "out is unchanged", "no room");
    EXPECT_EQ(Tree(""), before);
}

// Names that lead out of the folder, or mean the chart or the manifest, become names of the package. What is
// no sound or picture stays outside, also behind a link.
TEST_F(Convert, HostileNames) {
    folder_.Write("above.wav", test::SquareWav(441));
    folder_.Write("song/.lumetra-convert", "x");
    folder_.Write("key", "secret");
    folder_.Write("song/own", "secret");
    fs::create_symlink("../key", folder_.Path("song/key.wav"));
    folder_.Write("song/hostile.bms",
                  "#BPM 120\n#WAV01 ..\\above.wav\n#WAV02 " + folder_.Path("above.wav") +
                      "\n#WAV03 .lumetra-convert\n#WAV04 hostile.bms\n#WAV05 sub/../kick.wav\n"
                      "#WAV06 ../../../../../../etc/passwd\n#WAV07 ../key\n#WAV08 key.wav\n"
                      "#WAV09 ..\\above.wav\n#WAV0A own\n#00111:0102030405060708090A\n#00151:0101\n");
    const std::string before = Tree("song");
    ExpectSays(Run("--copy song/hostile.bms out"), 0, "`key.wav` lies outside", "a link");
    for (const auto& entry : fs::recursive_directory_iterator(folder_.Path("out"))) {
        const std::string name = entry.path().filename();
        EXPECT_TRUE(name == "hostile.bms" || name == ".lumetra-convert" || name.find("stem-named-00") == 0)
            << name;
        const std::string content = test::ReadFile(entry.path());
        EXPECT_TRUE(content.find("secret") == content.npos && content.find("root:") == content.npos) << name;
    }
    const std::string text = test::ReadFile(folder_.Path("out/hostile.bms"));
    for (const char* line : {"#WAV01 stem-named-001.wav\r\n", "#WAV09 stem-named-001.wav\r\n"})
        EXPECT_NE(text.find(line), std::string::npos) << text;
    EXPECT_EQ(text.find(".."), std::string::npos) << text;
    EXPECT_EQ(test::ReadFile(folder_.Path("out/stem-named-001.wav")), test::SquareWav(441));
    EXPECT_EQ(Tree("song"), before);
    // A chart that needs nothing else.
    folder_.Write("song/plain.bms", "#BPM 120\r\n#WAV01 ..\\above.wav\r\n#00111:01\r\n#00211:01\r\n");
    ExpectSays(Run("song/plain.bms out"), 0, "chart rewritten, 0 stems, 0 sheets, 1 files", "renamed");
    EXPECT_EQ(Tree("out"), ".lumetra-convert\nplain.bms\nstem-named-001.wav -> ../above.wav\n");
}

// 700 sounds, of which many have to be mixed, are heard each at its time and nothing else is. The short ones,
// of other formats, are mixed for certain; the player alone tells how they sound.
TEST_F(Convert, Sound) {
    constexpr int kSounds = 700, kPerMeasure = 20, kStep = 4410, kStart = 3 * 44100, kOther = 5;
    folder_.Write("many/s1.wav", test::SquareWav(300, 20, {2, 22050, 16}));
    folder_.Write("many/s2.wav",  // with a chunk of odd size before the data, and no pad byte
                  test::SquareWav(300, 30, {1, 48000, 8}).insert(36, std::string("LIST\5\0\0\0INFOx", 13)));
    folder_.Write("many/s3.wav", test::SquareWav(300, 40, {2, 44100, 8}));
    folder_.Write("many/s4.ogg", test::ReadFile(STORED_SOUNDS "/ogg"));
    folder_.Write("many/s5.flac", test::ReadFile(STORED_SOUNDS "/flac"));
    std::vector<int16_t> expected(kStart + kSounds * kStep + 44100);
    std::string chart = "#BPM 120\r\n";
    for (int i = 0; i < kSounds; ++i) {
        const std::string name = "s" + std::to_string(i + 1) + (i == 3 ? ".ogg" : ".wav");
        chart += "#WAV" + Number(i + 1) + " " + name + "\r\n";
        std::vector<int16_t> burst;
        if (i < kOther) {
            folder_.Write("one/one.bms",
                          "#BPM 120\r\n#WAV01 ../many/" + name + "\r\n#00101:01\r\n#00201:00\r\n");
            const std::vector<int16_t> alone = Render("one/one.bms");
            burst.assign(alone.begin() + kStart, alone.end());
            burst.resize(2000);
        } else {
            std::mt19937 random(static_cast<unsigned>(i));
            for (int k = 0; k < 882; ++k) burst.push_back(static_cast<int16_t>(random() % 16000 - 8000));
            folder_.Write("many/" + name, test::Wav(burst));
        }
        std::copy(burst.begin(), burst.end(), expected.begin() + kStart + i * kStep);
    }
    for (int i = 0; i < kSounds; ++i) {
        if (i % kPerMeasure == 0)
            chart += "\r\n#" + std::to_string(1000 + 1 + i / kPerMeasure).substr(1) + "01:";
        chart += Number(i + 1);
    }
    folder_.Write("many/many.bms", chart + "\r\n");
    ExpectSays(Run("many/many.bms out"), 0, "sounds are mixed into", "mixed");
    EXPECT_FALSE(fs::exists(folder_.Path("out/s1.wav"))) << "is to be mixed";
    std::vector<int16_t> heard = Render("out/many.bms");
    EXPECT_EQ(heard, Render("--modern many/many.bms"));
    heard.resize(std::max(heard.size(), expected.size()));
    expected.resize(heard.size());
    int off = 0;
    for (size_t i = 0; i < heard.size(); ++i) {
        if (std::abs(heard[i] - expected[i]) > 2 && off++ < 5)
            ADD_FAILURE() << "at " << i << ": " << heard[i] << " instead of " << expected[i];
    }
    EXPECT_EQ(off, 0);
}

// Of 600 pictures some share sheets: each shows in its cell as in an empty layer, and the chart's rectangles
// lead there.
TEST_F(Convert, Sheets) {
    constexpr int kPictures = 600, kCell = 256, kSide = 1024;
    std::string chart = "#BPM 120\r\n";
    for (int i = 1; i <= kPictures; ++i) {
        const bool large =
            i > 560 && i % 2 == 0;  // 300 by 300, of which the top left is seen; others in the middle
        const auto color = static_cast<uint32_t>(0x400000 + i);
        const auto of_large = [color](int x, int y) { return x < kCell && y < kCell ? color : 0xFFFFFFu; };
        folder_.Write("pictures/" + std::to_string(i) + ".bmp",
                      large ? test::Bmp(300, 300, of_large) : test::Bmp(10, 4, color));
        chart += "#BMP" + Number(i) + " " + std::to_string(i) + ".bmp\r\n";
        chart += "#" + std::to_string(1000 + i).substr(1) + "04:" + Number(i) + "\r\n";
    }
    folder_.Write("pictures/all.bms", chart);
    ExpectSays(Run("pictures/all.bms out"), 0, "0 stems, 2 sheets, 573 files linked", "sheets");
    const std::string text = test::ReadFile(folder_.Path("out/all.bms"));
    int cells = 0;
    for (const char* name : {"sheet-001.bmp", "sheet-002.bmp"}) {
        const std::string sheet = test::ReadFile(folder_.Path("out/" + std::string(name)));
        ASSERT_EQ(sheet.size(), 54u + kSide * kSide * 3);
        const auto at = [&](int x, int y) {
            const size_t place = 54 + static_cast<size_t>(((kSide - 1 - y) * kSide + x) * 3);
            return static_cast<uint8_t>(sheet[place]) | static_cast<uint8_t>(sheet[place + 1]) << 8 |
                   static_cast<uint8_t>(sheet[place + 2]) << 16;
        };
        for (int cell = 0; cell < 16; ++cell) {
            const int x = cell % 4 * kCell, y = cell / 4 * kCell, number = at(x + 128, y) - 0x400000;
            if (at(x + 128, y) == 0) continue;
            ++cells;
            const bool large = number % 2 == 0;
            for (const auto& [dx, dy, inside] : {std::tuple(0, 255, large),
                                                 {255, 0, large},
                                                 {123, 3, true},
                                                 {122, 0, large},
                                                 {132, 0, true},
                                                 {133, 0, large},
                                                 {128, 4, large}})
                EXPECT_EQ(at(x + dx, y + dy), inside ? 0x400000 + number : 0)
                    << number << " " << dx << " " << dy;
            const std::string cut = " " + std::to_string(x) + " " + std::to_string(y) + " " +
                                    std::to_string(x + kCell) + " " + std::to_string(y + kCell) + " 0 0";
            EXPECT_NE(text.find(cut), std::string::npos) << cut;
        }
    }
    EXPECT_EQ(cells, kPictures - 573);
}

}  // namespace
