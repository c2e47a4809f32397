// lumetra-xa run as a user runs it.
#include <sys/stat.h>
#include <sys/wait.h>

#include <cstdio>
#include <filesystem>

#include "support/media.h"
#include "support/tempfolder.h"
#include "xa_support.h"

namespace {

using namespace xatest;
namespace fs = std::filesystem;

struct Result {
    int code;
    std::string text;  // both outputs
};

std::string Text(const Bytes& bytes) {
    return {bytes.begin(), bytes.end()};
}

class XaTool : public ::testing::Test {
protected:
    Result Run(const std::string& arguments) {
        const std::string line =
            "cd '" + folder_.Path() + "' && '" LUMETRA_XA_TOOL "' " + arguments + " 2>&1 </dev/null";
        FILE* pipe = popen(line.c_str(), "r");
        Result result = {-1, ""};
        char chunk[512];
        while (size_t count = fread(chunk, 1, sizeof chunk, pipe)) result.text.append(chunk, count);
        int status = pclose(pipe);
        result.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        return result;
    }
    std::string Read(const std::string& name) { return test::ReadFile(folder_.Path(name)); }
    size_t Entries() const { return std::distance(fs::directory_iterator(folder_.Path()), {}); }

    test::TempFolder folder_;
    const Samples music_ = Music(500, 1, 8000);
    const std::string wav_ = test::Wav(music_, {1, 8000});
    const std::string xa_ = Text(xa::Encode(music_, 1, 8000, xa::Mode::kFine));
};

TEST_F(XaTool, EncodesAndDecodesBack) {
    Samples music = Music(22050, 2, 44100);
    folder_.Write("in file.wav", test::Wav(music, {2, 44100}));
    struct Case {
        const char* option;
        double decibels;
        size_t bytes;
    };
    for (Case c : {Case{"", 60, 57897}, Case{"--mode=fine", 60, 57897}, Case{"-m fast", 38, 24815}}) {
        Result encoded = Run(std::string("encode ") + c.option + " 'in file.wav' out.xa");
        ASSERT_EQ(encoded.code, 0) << encoded.text;
        EXPECT_EQ(encoded.text, "");
        EXPECT_NEAR(static_cast<double>(Read("out.xa").size()), static_cast<double>(c.bytes), 100)
            << c.option;
        Result decoded = Run("decode out.xa back.wav");
        ASSERT_EQ(decoded.code, 0) << decoded.text;
        const std::string wav = Read("back.wav");
        ASSERT_EQ(wav.size(), 44 + music.size() * 2);
        EXPECT_GE(SignalToNoise(music, ToSamples(Bytes(wav.begin() + 44, wav.end()))), c.decibels)
            << c.option;
    }
    Result info = Run("info out.xa out.xa");
    EXPECT_EQ(info.code, 0);
    EXPECT_NE(info.text.find("fast (4-bit codes)"), std::string::npos) << info.text;
    EXPECT_NE(info.text.find("22050 frames, 0.500 s"), std::string::npos) << info.text;
    EXPECT_EQ(Entries(), 3u) << "temporary files are left";
}

TEST_F(XaTool, WrongUseIsOneUnreadableInputTwoAndFailedOutputThree) {
    folder_.Write("in.wav", wav_);
    folder_.Write("three.wav", test::Wav(music_, {3, 8000}));
    folder_.Write("slow.wav", test::Wav(music_, {1, 50}));
    folder_.Write("good.xa", xa_);
    std::string damaged = xa_;
    damaged[XA_HEADER_SIZE + 42] = '\xC8';
    folder_.Write("damaged.xa", damaged);
    folder_.Write("stub.xa", xa_.substr(0, 31));
    fs::create_directory(folder_.Path("folder"));
    struct Case {
        const char* arguments;
        int code;
        const char* text;
    };
    const Case kCases[] = {
        {"", 1, "no command given"},
        {"pack in.wav out.xa", 1, "'pack'"},
        {"encode in.wav", 1, "two files"},
        {"encode in.wav out.xa more", 1, "two files"},
        {"info", 1, "at least one"},
        {"encode --mode best in.wav out.xa", 1, "'best'"},
        {"encode in.wav out.xa --mode", 1, "needs a mode"},
        {"encode --loud in.wav out.xa", 1, "'--loud'"},
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
        {"encode in.wav none/out.xa", 3, "none/out.xa: cannot write"},
        {"encode in.wav folder", 3, "not a regular file"},
        {"decode good.xa /dev/null", 3, "not a regular file"},
        {"info good.xa >/dev/full", 3, ""},
    };
    size_t before = Entries();
    for (const Case& c : kCases) {
        Result result = Run(c.arguments);
        EXPECT_EQ(result.code, c.code) << c.arguments << "\n" << result.text;
        EXPECT_NE(result.text.find(c.text), std::string::npos) << c.arguments << "\n" << result.text;
        EXPECT_EQ(Entries(), before) << c.arguments;
    }
}

TEST_F(XaTool, AFileThatEndsEarlyGivesWhatItHas) {
    const Bytes whole = DecodeWhole(Bytes(xa_.begin(), xa_.end()));
    folder_.Write("cut.xa", xa_.substr(0, 32 + 42 + 12));
    Result result = Run("decode cut.xa out.wav");
    EXPECT_EQ(result.code, 0);
    EXPECT_NE(result.text.find("ends early, after 54 of "), std::string::npos) << result.text;
    EXPECT_EQ(Read("out.wav").substr(44), Text(whole).substr(0, 64 + 16));
}

TEST_F(XaTool, AFailedRunLeavesTheOldOutputAlone) {
    std::string damaged = xa_;
    damaged[XA_HEADER_SIZE] = 99;
    folder_.Write("damaged.xa", damaged);
    folder_.Write("out.wav", "old");
    EXPECT_EQ(Run("decode damaged.xa out.wav").code, 2);
    EXPECT_EQ(Read("out.wav"), "old");
}

// Its own input may be the output, a link stays a link, and the mode of a file stays.
TEST_F(XaTool, OutputOverALink) {
    const std::string real = folder_.Write("real.wav", wav_);
    fs::permissions(real, fs::perms::owner_read | fs::perms::owner_write);
    fs::create_symlink("real.wav", folder_.Path("link.wav"));
    EXPECT_EQ(Run("encode link.wav link.wav").code, 0);
    EXPECT_TRUE(fs::is_symlink(folder_.Path("link.wav")));
    EXPECT_EQ(Read("real.wav"), xa_);
    struct stat status = {};
    ASSERT_EQ(stat(real.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600u);
}

TEST_F(XaTool, HelpAndVersionGoToTheOutput) {
    Result help = Run("--help");
    EXPECT_EQ(help.code, 0);
    EXPECT_EQ(help.text.rfind("Usage: lumetra-xa encode", 0), 0u);
    EXPECT_EQ(Run("encode -h").text, help.text);
    Result version = Run("--version");
    EXPECT_EQ(version.code, 0);
    EXPECT_EQ(version.text, "lumetra-xa " LUMETRA_VERSION "\n");
    EXPECT_EQ(Run("info -- --help").code, 2);
}

}  // namespace
