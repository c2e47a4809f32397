// lumetra-xa run as a user runs it.
#include <filesystem>

#include "support/media.h"
#include "tools/run_tool.h"
#include "xa_support.h"

namespace {

using namespace xatest;
namespace fs = std::filesystem;

class XaTool : public test::ToolTest {
protected:
    void SetUp() override {
        folder_.Write("in.wav", test::Wav(music_, {1, 8000}));
        folder_.Write("good.xa", xa_);
    }
    test::ToolResult Run(const std::string& arguments) {
        return RunTool(LUMETRA_XA_TOOL, folder_.Path(), arguments);
    }
    std::string Read(const std::string& name) { return test::ReadFile(folder_.Path(name)); }
    size_t Entries() const { return std::distance(fs::directory_iterator(folder_.Path()), {}); }

    const Samples music_ = Music(500, 1, 8000);
    const Bytes encoded_ = xa::Encode(music_, 1, 8000, xa::Mode::kFine);
    const std::string xa_{encoded_.begin(), encoded_.end()};
};

TEST_F(XaTool, EncodesAndDecodesBack) {
    const Samples music = Music(22050, 2, 44100);
    folder_.Write("in file.wav", test::Wav(music, {2, 44100}));
    const struct {
        const char* option;
        double decibels, bytes;
    } rows[] = {{"", 60, 57897}, {"--mode=fine", 60, 57897}, {"-m fast", 38, 24815}};
    for (const auto& row : rows) {
        ExpectSays(Run(std::string("encode ") + row.option + " 'in file.wav' out.xa"), 0, "", row.option);
        EXPECT_NEAR(static_cast<double>(Read("out.xa").size()), row.bytes, 100) << row.option;
        ExpectSays(Run("decode out.xa back.wav"), 0, "", row.option);
        const std::string wav = Read("back.wav");
        ASSERT_EQ(wav.size(), 44 + music.size() * 2);
        EXPECT_GE(SignalToNoise(music, ToSamples(Bytes(wav.begin() + 44, wav.end()))), row.decibels);
    }
    ExpectSays(Run("info out.xa out.xa"), 0, "fast (4-bit codes)", "info");
    ExpectSays(Run("info out.xa"), 0, "22050 frames, 0.500 s", "info");
}

TEST_F(XaTool, ReportsWhatIsWrongAndWritesNothing) {
    folder_.Write("three.wav", test::Wav(music_, {3, 8000}));
    folder_.Write("slow.wav", test::Wav(music_, {1, 50}));
    folder_.Write("damaged.xa", std::string(xa_).replace(XA_HEADER_SIZE + 42, 1, "\xC8"));
    folder_.Write("stub.xa", xa_.substr(0, 31));
    fs::create_directory(folder_.Path("folder"));
    fs::create_symlink("good.xa", folder_.Path("link.xa"));
    const struct {
        const char* arguments;
        int code;
        const char* text;
    } rows[] = {
        {"", 1, "no command given"},
        {"pack in.wav out.xa", 1, "unknown command: pack"},
        {"encode in.wav", 1, "two files"},
        {"encode in.wav out.xa more", 1, "two files"},
        {"info", 1, "at least one"},
        {"encode --mode best in.wav out.xa", 1, "'best'"},
        {"encode in.wav out.xa --mode", 1, "needs a mode"},
        {"encode --loud in.wav out.xa", 1, "unknown option: --loud"},
        {"decode -m fast good.xa out.wav", 1, "only 'encode'"},
        {"encode none.wav out.xa", 2, "none.wav: "},
        {"encode good.xa out.xa", 2, "good.xa: "},
        {"encode three.wav out.xa", 2, "1 or 2 channels"},
        {"encode slow.wav out.xa", 2, "rate"},
        {"decode none.xa out.wav", 2, "none.xa: "},
        {"decode in.wav out.wav", 2, "not an XA file"},
        {"decode stub.xa out.wav", 2, "not an XA file"},
        {"decode damaged.xa out.wav", 2, "damaged at byte 74"},
        {"decode folder out.wav", 2, "folder: "},
        {"info good.xa in.wav", 2, "not an XA file"},
        {"info -- --help", 2, "--help: "},
        {"encode in.wav in.wav", 1, "in.wav: is an input"},
        {"decode --force good.xa link.xa", 1, "link.xa: is an input"},
        {"decode good.xa damaged.xa", 1, "is not named .xa"},
        {"encode in.wav slow.wav", 1, "slow.wav: exists and is not an XA file"},
        {"encode in.wav none/out.xa", 3, "none/out.xa: cannot write"},
        {"encode in.wav folder", 3, "folder: cannot write"},
        {"info good.xa >/dev/full", 3, ""},
        {"--help", 0, "Usage: lumetra-xa encode"},
        {"encode -h", 0, "Usage: lumetra-xa encode"},
        {"--version", 0, "lumetra-xa " LUMETRA_VERSION "\n"},
    };
    const size_t before = Entries();
    for (const auto& row : rows) {
        ExpectSays(Run(row.arguments), row.code, row.text, row.arguments);
        EXPECT_EQ(Entries(), before) << row.arguments;
    }
}

TEST_F(XaTool, DecodesACutFileAsFarAsItGoes) {
    const Bytes whole = DecodeWhole(encoded_);
    folder_.Write("cut.xa", xa_.substr(0, 32 + 42 + 12));
    ExpectSays(Run("decode cut.xa out.wav"), 0, "ends early, after 54 of ", "cut");
    EXPECT_EQ(Read("out.wav").substr(44), std::string(whole.begin(), whole.begin() + 64 + 16));
}

}  // namespace
