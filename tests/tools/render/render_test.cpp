// lumetra-render run as a user runs it.
#include <gtest/gtest.h>
#include <png.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <thread>

#include "host/headless/sound.h"
#include "platform/window/commandline.h"
#include "support/media.h"
#include "support/program.h"
#include "tools/run_tool.h"

namespace {

namespace fs = std::filesystem;

std::string ReadAll(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

std::vector<std::string> Lines(const std::string& text, const std::string& head) {
    std::vector<std::string> lines;
    for (size_t at = 0; at < text.size();) {
        const size_t end = std::min(text.find('\n', at), text.size());
        if (text.compare(at, head.size(), head) == 0) lines.push_back(text.substr(at, end - at));
        at = end + 1;
    }
    return lines;
}

class Render : public test::ToolTest {
protected:
    void SetUp() override {
        folder_.Write("song/song.bms",
                      "#PLAYER 1\r\n#TITLE T\r\n#BPM 120\r\n#WAV01 a.wav\r\n#BMP01 p.bmp\r\n"
                      "#00101:01\r\n#00111:0001\r\n#00104:01\r\n#00201:01\r\n#00316:02\r\n");
        folder_.Write("song/a.wav", test::SquareWav(4410, 50));
        folder_.Write("song/p.bmp", test::Bmp(8, 8, [](int, int) { return 0xFF8000u; }));
        fs::create_directory(folder_.Path("out"));
    }

    test::ToolResult Run(const std::string& arguments, const std::string& before = "") {
        return RunTool(LUMETRA_RENDER, folder_.Path("out"), arguments, before);
    }
    std::string Out(const std::string& name) { return ReadAll(folder_.Path("out/" + name)); }
    std::vector<std::string> OutFiles() {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder_.Path("out")))
            names.push_back(entry.path().filename());
        std::sort(names.begin(), names.end());
        return names;
    }
};

std::vector<int16_t> Samples(const std::string& wav) {
    std::vector<int16_t> samples((wav.size() - 44) / 2);
    std::memcpy(samples.data(), wav.data() + 44, samples.size() * 2);
    return samples;
}

TEST_F(Render, SoundIsWhatThePlayerPlaysAndTheSameTwice) {
    ASSERT_EQ(Run("--wav a.wav '" LUMETRA_DEMO "'").text, "");
    ASSERT_EQ(Run("--wav b.wav --trace t.txt '" LUMETRA_DEMO "'").code, 0);
    const std::string wav = Out("a.wav");
    EXPECT_TRUE(wav == Out("b.wav"));
    uint32_t bytes = 0;
    std::memcpy(&bytes, wav.data() + 40, 4);
    ASSERT_EQ(bytes + 44, wav.size());

    const char* argv[] = {"lumetra", "-P", LUMETRA_DEMO};
    test::RunOptions options;
    options.end_ms = 45'000;
    test::RunProgram(BuildCommandLine(3, argv), {}, options);
    const std::vector<int16_t> samples = Samples(wav);
    ASSERT_GT(samples.size(), 38u * 88200);
    const headless::SoundCapture& played = headless::Sound();
    size_t differ = 0;
    for (size_t i = 0; i < samples.size(); ++i) {
        const float value =
            std::clamp(played.At(static_cast<int64_t>(i / 2), i % 2) * 32768, -32768.0f, 32767.0f);
        differ += samples[i] != std::lrintf(value);
    }
    EXPECT_EQ(differ, 0u);
    // It ends with the last sound: nothing but silence would follow.
    for (int64_t frame = static_cast<int64_t>(samples.size() / 2); frame < played.End(); ++frame)
        ASSERT_EQ(played.At(frame, 0), 0) << frame;
}

TEST_F(Render, TraceTellsWhatFiresSoundsAndIsDrawn) {
    ASSERT_EQ(Run("--trace t.txt ../song/song.bms").text, "");
    const std::string trace = Out("t.txt");
    // Measure 0 begins at 1000, and each lasts 2000.
    EXPECT_EQ(Lines(trace, "fire bgm"),
              (std::vector<std::string>{"fire bgm 1 0 1 3000", "fire bgm 2 0 1 5000"}));
    EXPECT_EQ(Lines(trace, "fire note"),
              (std::vector<std::string>{"fire note 1 0.5 17 4000", "fire note 3 0 22 7000"}));
    EXPECT_EQ(Lines(trace, "fire bga"), (std::vector<std::string>{"fire bga 1 0 4 3000"}));
    EXPECT_EQ(Lines(trace, "fire bar").size(), 4u);
    EXPECT_EQ(Lines(trace, "sound 1 ").size(), 3u);  // one note has no sound
    EXPECT_EQ(Lines(trace, "frame ").size(), Lines(trace, "draw 0 0 1 0 0 452 280").size());
    ASSERT_EQ(Run("--trace - ../song/song.bms").text, trace);
    ASSERT_EQ(Run("--trace - --from 2 --to 2 ../song/song.bms").code, 0);
    const std::string part = Run("--trace - --from 2 --to 2 ../song/song.bms").text;
    EXPECT_EQ(Lines(part, "fire bgm"), (std::vector<std::string>{"fire bgm 2 0 1 5000"}));
    EXPECT_EQ(Lines(part, "fire note").size(), 0u);
}

struct Image {
    int width, height;
    std::vector<uint8_t> rgb;
};

Image ReadPng(const std::string& bytes) {
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_memory(&image, bytes.data(), bytes.size())) return {};
    image.format = PNG_FORMAT_RGB;
    std::vector<uint8_t> rgb(PNG_IMAGE_SIZE(image));
    png_image_finish_read(&image, nullptr, rgb.data(), 0, nullptr);
    return {static_cast<int>(image.width), static_cast<int>(image.height), rgb};
}

uint32_t PixelOf(const Image& image, int x, int y) {
    const uint8_t* p = &image.rgb[static_cast<size_t>((y * image.width + x) * 3)];
    return static_cast<uint32_t>(p[0]) << 16 | static_cast<uint32_t>(p[1]) << 8 | p[2];
}

TEST_F(Render, PicturesStandAtTheirVeryTime) {
    // Measure 1 begins at 3000: the picture and the bar's note are there in that very frame, not one before.
    ASSERT_EQ(Run("--png p --at m1,2999,m1.5,3999 ../song/song.bms").text, "");
    const auto at = [this](const char* name) { return ReadPng(Out(std::string("p/") + name)); };
    const Image before = at("0002_2999.png"), now = at("0001_m1.png");
    ASSERT_EQ(before.width, 452);
    ASSERT_EQ(before.height, 280);
    EXPECT_EQ(PixelOf(before, 195 + 128, 4), 0x000000u);
    EXPECT_EQ(PixelOf(now, 195 + 128, 4), 0xFF8000u);
    // The note at the measure's middle covers the band one millisecond before and in its frame.
    EXPECT_EQ(PixelOf(at("0004_3999.png"), 32, 266), 0xFFFFFFu);
    EXPECT_EQ(PixelOf(at("0003_m1.5.png"), 32, 266), 0xFFFFFFu);

    ASSERT_EQ(Run("--size=2 --png q --at m1 ../song/song.bms").code, 0);
    // All but the frame rate, which tells how many frames were drawn on the way.
    const Image twice = ReadPng(Out("q/0001_m1.png"));
    ASSERT_EQ(twice.width, 904);
    for (int y = 0; y < 560; y += 3) {
        for (int x = 0; x < 860; x += 3)
            ASSERT_EQ(PixelOf(twice, x, y), PixelOf(now, x / 2, y / 2)) << x << " " << y;
    }
}

// Stands for the encoder: writes its arguments and the count of the bytes it was fed to its last argument.
constexpr char kEncoder[] =
    "#!/bin/sh\nout=\"${*}\"; for last; do :; done\n"
    "bytes=$(wc -c); { echo \"$out\"; echo \"bytes $bytes\"; } > \"${last#file:}\"\n";

TEST_F(Render, VideoFeedsTheEncoderEachPicture) {
    chmod(folder_.Write("bin/ffmpeg", kEncoder).c_str(), 0755);
    const std::string path = "PATH='" + folder_.Path("bin") + "':\"$PATH\"";
    ASSERT_EQ(Run("--video v.mkv --fps 30 --size 2 ../song/song.bms", path).text, "");
    EXPECT_EQ(OutFiles(), std::vector<std::string>{"v.mkv"});
    const std::string said = Out("v.mkv");
    EXPECT_NE(said.find("-framerate 30"), std::string::npos) << said;
    EXPECT_NE(said.find("-video_size 904x560"), std::string::npos) << said;
    const double bytes = std::stod(said.substr(said.find("bytes ") + 6));
    // The chart ends at 9 s, and the last sound before it.
    EXPECT_NEAR(bytes / (904 * 560 * 4), 9 * 30, 2);

    chmod(folder_.Write("bin/ffmpeg", "#!/bin/sh\nexit 1\n").c_str(), 0755);
    EXPECT_EQ(Run("--video w.mkv ../song/song.bms", path).code, 3);
    ExpectSays(Run("--video w.mkv ../song/song.bms", "PATH=/nowhere"), 3, "needs the ffmpeg program", "");
    EXPECT_EQ(OutFiles(), std::vector<std::string>{"v.mkv"});
}

TEST_F(Render, SaysWhatIsWrongAndLeavesNothing) {
    folder_.Write("song/short.bms", "#00011:01\r\n");
    folder_.Write("song/long.bms", "#BPM 1\r\n#99911:01\r\n");
    const struct {
        const char* arguments;
        int code;
        const char* text;
    } rows[] = {
        {"", 1, "which chart?"},
        {"../song/song.bms", 1, "nothing to render"},
        {"--wav", 1, "--wav needs a value"},
        {"--nonsense ../song/song.bms", 1, "unknown option: --nonsense"},
        {"--wav a.wav --speed 9 ../song/song.bms", 1, "--speed does not take: 9"},
        {"--wav a.wav --fps 0 ../song/song.bms", 1, "--fps does not take: 0"},
        {"--wav a.wav --size 1.5 ../song/song.bms", 1, "--size does not take: 1.5"},
        {"--wav a.wav --from 3 --to 2 ../song/song.bms", 1, "--from lies behind --to"},
        {"--wav a.wav --from 9 ../song/song.bms", 1, "the last measure is 3"},
        {"--wav a.wav one.bms two.bms", 1, "one chart at a time: two.bms"},
        {"--wav - --trace - ../song/song.bms", 1, "only one output"},
        {"--png p ../song/song.bms", 1, "--png and --at go together"},
        {"--png p --at 1,,2 ../song/song.bms", 1, "--at does not take"},
        {"--png p --at -5 ../song/song.bms", 1, "--at does not take"},
        {"--png p --at m77 ../song/song.bms", 1, "m77: the chart has no such measure"},
        {"--png p --at 99999999 ../song/song.bms", 1, "behind what is played"},
        {"--wav a.wav none.bms", 2, "none.bms: cannot be read"},
        {"--wav a.wav ../song", 2, "cannot be read"},
        {"--wav a.wav ../song/short.bms", 2, "no object behind measure 0"},
        {"--wav a.wav ../song/long.bms", 3, "lasts 66 h 40 min"},
        {"--wav none/a.wav ../song/song.bms", 3, "none/a.wav: cannot write"},
        {"--wav /dev/full ../song/song.bms", 3, "not a regular file"},
        {"--trace - ../song/song.bms >/dev/full", 3, ""},
    };
    for (const auto& row : rows) {
        ExpectSays(Run(row.arguments), row.code, row.text, row.arguments);
        fs::remove(folder_.Path("out/p"));  // fails, as it should, when a picture is in it
        EXPECT_EQ(OutFiles(), std::vector<std::string>{}) << row.arguments;
    }
    EXPECT_EQ(Run("--help").code, 0);
    EXPECT_EQ(Run("--version").text.rfind("lumetra-render ", 0), 0u);
    EXPECT_EQ(Run("--help >/dev/full").code, 3);
}

TEST_F(Render, AChartThatEndsAtOnceAndStandardOutput) {
    folder_.Write("song/quick.bms", "#BPM 60000\r\n#00111:01\r\n");
    ASSERT_EQ(Run("--wav q.wav ../song/quick.bms").text, "");
    EXPECT_GT(Out("q.wav").size(), 44u + 4 * 44100);  // the lead-in
    EXPECT_LT(Out("q.wav").size(), 44u + 5 * 44100);
    ASSERT_EQ(Run("--wav - ../song/song.bms > s.wav").code, 0);
    ASSERT_EQ(Run("--wav t.wav ../song/song.bms").code, 0);
    EXPECT_TRUE(Samples(Out("s.wav")) == Samples(Out("t.wav")));
}

TEST_F(Render, StoppedHalfWayLeavesNothing) {
    folder_.Write("song/long.bms", "#BPM 20\r\n#99911:01\r\n");
    const std::string chart = folder_.Path("song/long.bms"), out = folder_.Path("out/a.txt");
    const pid_t pid = fork();
    if (pid == 0) {
        if (!freopen("/dev/null", "w", stderr) || !freopen("/dev/null", "w", stdout)) _exit(9);
        execl(LUMETRA_RENDER, "lumetra-render", "--trace", out.c_str(), chart.c_str(), nullptr);
        _exit(9);
    }
    for (int i = 0; i < 2000 && OutFiles().empty(); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    const size_t begun = OutFiles().size();
    kill(pid, SIGTERM);
    int status = 0;
    waitpid(pid, &status, 0);
    ASSERT_EQ(begun, 1u);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 3);
    EXPECT_EQ(OutFiles(), std::vector<std::string>{});
}

}  // namespace
