// lumetra-xa run as a user runs it.
#include <sys/stat.h>
#include <sys/wait.h>

#include <cstdio>
#include <filesystem>
#include <fstream>

#include "xa_support.h"

namespace {

using namespace xatest;
namespace fs = std::filesystem;

struct Result {
    int code;
    std::string text;  // both outputs
};

class XaTool : public ::testing::Test {
protected:
    void SetUp() override {
        std::string name = (fs::temp_directory_path() / "lumetra-xa-XXXXXX").string();
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        folder_ = name;
    }
    void TearDown() override { fs::remove_all(folder_); }

    Result Run(const std::string& arguments) {
        std::string line =
            "cd '" + folder_.string() + "' && '" LUMETRA_XA_TOOL "' " + arguments + " 2>&1 </dev/null";
        FILE* pipe = popen(line.c_str(), "r");
        Result result = {-1, ""};
        char chunk[512];
        while (size_t count = fread(chunk, 1, sizeof chunk, pipe)) result.text.append(chunk, count);
        int status = pclose(pipe);
        result.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        return result;
    }
    Bytes Read(const std::string& name) {
        std::ifstream file(folder_ / name, std::ios::binary);
        return Bytes(std::istreambuf_iterator<char>(file), {});
    }
    void Write(const std::string& name, const Bytes& bytes) {
        std::ofstream file(folder_ / name, std::ios::binary);
        file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }
    // The plain 44-byte head and the samples behind it.
    static Bytes Wav(const Samples& samples, int channels, int rate) {
        uint32_t size = static_cast<uint32_t>(samples.size() * 2), fields[11] = {};
        std::memcpy(&fields[0], "RIFF", 4);
        fields[1] = 36 + size;
        std::memcpy(&fields[2], "WAVEfmt ", 8);
        fields[4] = 16;
        fields[5] = 1u | static_cast<uint32_t>(channels) << 16;
        fields[6] = static_cast<uint32_t>(rate);
        fields[7] = static_cast<uint32_t>(rate * channels * 2);
        fields[8] = static_cast<uint32_t>(channels * 2) | 16u << 16;
        std::memcpy(&fields[9], "data", 4);
        fields[10] = size;
        Bytes out(44 + size);
        std::memcpy(out.data(), fields, 44);
        std::memcpy(out.data() + 44, samples.data(), size);
        return out;
    }
    size_t Entries() const { return static_cast<size_t>(std::distance(fs::directory_iterator(folder_), {})); }

    fs::path folder_;
};

TEST_F(XaTool, EncodesAndDecodesBack) {
    Samples music = Music(22050, 2, 44100);
    Write("in file.wav", Wav(music, 2, 44100));
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
        Bytes wav = Read("back.wav");
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
    Write("in.wav", Wav(Music(500, 1, 8000), 1, 8000));
    Write("three.wav", Wav(Music(500, 1, 8000), 3, 8000));
    Write("slow.wav", Wav(Music(500, 1, 8000), 1, 50));
    Bytes xa = xa::Encode(Music(500, 1, 8000), 1, 8000, xa::Mode::kFine);
    Write("good.xa", xa);
    Bytes damaged = xa;
    damaged[XA_HEADER_SIZE + 42] = 200;
    Write("damaged.xa", damaged);
    Write("stub.xa", Bytes(xa.begin(), xa.begin() + 31));
    fs::create_directory(folder_ / "folder");
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
    Bytes xa = xa::Encode(Music(500, 1, 8000), 1, 8000, xa::Mode::kFine), whole = DecodeWhole(xa);
    Write("cut.xa", Bytes(xa.begin(), xa.begin() + 32 + 42 + 12));
    Result result = Run("decode cut.xa out.wav");
    EXPECT_EQ(result.code, 0);
    EXPECT_NE(result.text.find("ends early, after 54 of "), std::string::npos) << result.text;
    Bytes wav = Read("out.wav");
    ASSERT_EQ(wav.size(), 44u + 64 + 16);
    EXPECT_EQ(Bytes(wav.begin() + 44, wav.end()), Bytes(whole.begin(), whole.begin() + 80));
}

TEST_F(XaTool, AFailedRunLeavesTheOldOutputAlone) {
    Bytes xa = xa::Encode(Music(500, 1, 8000), 1, 8000, xa::Mode::kFine);
    xa[XA_HEADER_SIZE] = 99;
    Write("damaged.xa", xa);
    Write("out.wav", {1, 2, 3});
    EXPECT_EQ(Run("decode damaged.xa out.wav").code, 2);
    EXPECT_EQ(Read("out.wav"), (Bytes{1, 2, 3}));
    // Its own input may be the output, a link stays a link, and the mode of a file stays.
    Write("real.wav", Wav(Music(500, 1, 8000), 1, 8000));
    fs::permissions(folder_ / "real.wav", fs::perms::owner_read | fs::perms::owner_write);
    fs::create_symlink("real.wav", folder_ / "link.wav");
    EXPECT_EQ(Run("encode link.wav link.wav").code, 0);
    EXPECT_TRUE(fs::is_symlink(folder_ / "link.wav"));
    EXPECT_EQ(Read("real.wav")[0], 'K');
    struct stat status = {};
    ASSERT_EQ(stat((folder_ / "real.wav").c_str(), &status), 0);
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
    Result dash = Run("info -- --help");
    EXPECT_EQ(dash.code, 2);
}

}  // namespace
