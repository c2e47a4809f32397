// lumetra-render run as a user runs it.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <map>
#include <thread>

#include "host/headless/sound.h"
#include "platform/window/commandline.h"
#include "support/program.h"
#include "tools/render/render_support.h"

namespace {

TEST_F(Render, SoundIsWhatThePlayerPlays) {
    ASSERT_EQ(Run("--pacing player --wav a.wav '" LUMETRA_DEMO "'").text, "");
    const std::string wav = Out("a.wav");
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
    // The file ends with the last sound: the player plays only silence after it.
    for (size_t i = 0; i < 2 * static_cast<size_t>(played.End()); ++i) {
        const float value = played.At(static_cast<int64_t>(i / 2), i % 2) * 32768;
        const int16_t sample = i < samples.size() ? samples[i] : int16_t{0};
        differ += sample != std::lrintf(std::clamp(value, -32768.0f, 32767.0f));
    }
    EXPECT_EQ(differ, 0u);
}

TEST_F(Render, TraceListsWhatFiresSoundsAndIsDrawn) {
    ASSERT_EQ(Run("--trace t.txt ../song/song.bms").text, "");
    const std::string trace = Out("t.txt");
    // Measure 0 begins at 1000, and each lasts 2000.
    EXPECT_EQ(Lines(trace, "fire bgm"), (Names{"fire bgm 1 0 1 3000", "fire bgm 2 0 1 5000"}));
    EXPECT_EQ(Lines(trace, "fire note"), (Names{"fire note 1 0.5 17 4000", "fire note 3 0 22 7000"}));
    EXPECT_EQ(Lines(trace, "fire bga"), (Names{"fire bga 1 0 4 3000"}));
    EXPECT_EQ(Lines(trace, "fire bar").size(), 4u);
    EXPECT_EQ(Lines(trace, "sound 1 ").size(), 3u);  // one note has no sound
    EXPECT_EQ(Lines(trace, "frame ").size(), Lines(trace, "draw 0 0 1 0 0 452 280").size());
    ASSERT_EQ(Run("--trace - ../song/song.bms").text, trace);
    const std::string part = Run("--trace - --from 2 --to 2 ../song/song.bms").text;
    EXPECT_EQ(Lines(part, "fire bgm"), (Names{"fire bgm 2 0 1 5000"}));
    EXPECT_EQ(Lines(part, "fire note"), Names{});
    // Names are a stranger's.
    folder_.Write("song/odd.bms", "#WAV01 \x1B]0;x\a\nfire.wav\r\n#00111:01\r\n");
    fs::copy(folder_.Path("song/a.wav"), folder_.Path("song/\x1B]0;x\a\nfire.wav"));
    EXPECT_EQ(Run("--trace - ../song/odd.bms").text.find('\x1B'), std::string::npos);
}

// Chart times of a trace's frames, sorted.
std::vector<int> FrameTimes(const std::string& trace) {
    std::vector<int> times;
    int now = 0;
    for (const std::string& line : Lines(trace, "frame ")) {
        sscanf(line.c_str(), "frame %*d %*d %d", &now);
        times.push_back(now);
    }
    std::sort(times.begin(), times.end());
    return times;
}

TEST_F(Render, ExactPacingAddsAFrameAtEachRecordOnly) {
    // Times that lie everywhere between two of the player's frames, also less than 3 ms before one.
    folder_.Write("song/odd.bms",
                  "#BPM 137\r\n#WAV01 a.wav\r\n#00111:01010001010001000101010101\r\n#00108:0102\r\n"
                  "#BPM01 91\r\n#BPM02 203\r\n#00201:0101010101010101010101\r\n#01611:01\r\n");
    const std::string exact = Run("--wav a.wav --trace - ../song/odd.bms").text;
    std::vector<int> due, added;
    int when = 0;
    for (const char* list : {"tempo", "bgm", "note", "bar"}) {
        for (const std::string& line : Lines(exact, std::string("fire ") + list)) {
            sscanf(line.c_str(), "fire %*s %*d %*s %*d %d", &when);
            due.push_back(when + (list == std::string("bar")));
        }
    }
    const std::vector<int> frames = FrameTimes(exact),
                           players =
                               FrameTimes(Run("--pacing player --wav b.wav --trace - ../song/odd.bms").text);
    ASSERT_TRUE(std::includes(frames.begin(), frames.end(), players.begin(), players.end()));
    std::set_difference(frames.begin(), frames.end(), players.begin(), players.end(),
                        std::back_inserter(added));
    EXPECT_GT(added.size(), 20u);
    for (const int time : added) EXPECT_TRUE(std::count(due.begin(), due.end(), time)) << time;
    for (const int time : due) EXPECT_TRUE(std::count(frames.begin(), frames.end(), time)) << time;
    // Without a trace nobody sees the frames of silence, and they are left out: that changes no sample.
    ASSERT_EQ(Run("--wav c.wav ../song/odd.bms").code, 0);
    EXPECT_TRUE(Out("a.wav") == Out("c.wav"));
    // The first note, at 1000 + 240000 / 137 ms, is heard from its very sample.
    const std::vector<int16_t> samples = Samples(Out("a.wav"));
    const auto heard = std::find_if(samples.begin(), samples.end(), [](int16_t s) { return s != 0; });
    EXPECT_EQ((heard - samples.begin()) / 2, 2752 * 441 / 10);
}

TEST_F(Render, PicturesShowTheirVeryMoment) {
    // Measure 1 begins at 3000: its picture and its bar's note appear in that frame, not one before.
    ASSERT_EQ(Run("--png p --at m1,2999,m1.5,3999,2985 ../song/song.bms").text, "");
    const struct {
        const char* name;
        int x, y;
        uint32_t color;
    } rows[] = {{"0002_2999", 195 + 128, 4, 0x000000},
                {"0001_m1", 195 + 128, 4, 0xFF8000},
                {"0004_3999", 32, 266, 0xFFFFFF},
                {"0003_m1.5", 32, 266, 0xFFFFFF}};
    for (const auto& row : rows) {
        const Image image = ReadPng(Out(std::string("p/") + row.name + ".png"));
        ASSERT_TRUE(image.width == 452 && image.height == 280) << row.name;
        EXPECT_EQ(image.At(row.x, row.y), row.color) << row.name;
    }
    // A moment looks the same in every call, but for the frame rate, which counts the frames before it.
    const Image once = ReadPng(Out("p/0005_2985.png"));
    for (const char* other : {"--size 2", "--pacing player"}) {
        ASSERT_EQ(Run(std::string("--png q --at 2985 ") + other + " ../song/song.bms").code, 0);
        const Image same = ReadPng(Out("q/0001_2985.png"));
        const int scale = same.width / 452;
        ASSERT_EQ(scale, other[2] == 's' ? 2 : 1);
        for (int y = 0; y < 280; ++y) {
            for (int x = 0; x < 430; ++x)
                ASSERT_EQ(same.At(x * scale, y * scale), once.At(x, y)) << x << " " << y;
        }
    }
}

// Takes the encoder's place: writes its arguments and the number of bytes it was fed to its last argument.
constexpr char kEncoder[] =
    "#!/bin/sh\nout=\"${*}\"; for last; do :; done\n"
    "bytes=$(wc -c); { echo \"$out\"; echo \"bytes $bytes\"; } > \"${last#file:}\"\n";

TEST_F(Render, VideoFeedsTheEncoderEachPicture) {
    chmod(folder_.Write("bin/ffmpeg", kEncoder).c_str(), 0755);
    const std::string path = "PATH='" + folder_.Path("bin") + "':\"$PATH\"";
    ASSERT_EQ(Run("--video v.mkv --fps 30 --size 2 ../song/song.bms", path).text, "");
    EXPECT_EQ(OutFiles(), Names{"v.mkv"});
    const std::string said = Out("v.mkv");
    EXPECT_NE(said.find("-framerate 30"), said.npos) << said;
    EXPECT_NE(said.find("-video_size 904x560"), said.npos) << said;
    // The chart ends at 9 s, after the last sound.
    EXPECT_NEAR(std::stod(said.substr(said.find("bytes ") + 6)) / (904 * 560 * 4), 9 * 30, 2);

    chmod(folder_.Write("bin/ffmpeg", "#!/bin/sh\nfor out; do :; done; echo no codec for $out; exit 1\n")
              .c_str(),
          0755);
    ExpectSays(Run("--video w.mkv ../song/song.bms", path), 3, "no codec for w.mkv", "");
    ExpectSays(Run("--video w.mkv ../song/song.bms", "PATH=/nowhere"), 3, "needs the ffmpeg program", "");
    EXPECT_EQ(OutFiles(), Names{"v.mkv"});
}

TEST_F(Render, ReportsWhatIsWrongAndLeavesNothing) {
    folder_.Write("song/short.bms", "#00011:01\r\n");
    folder_.Write("song/unix.bms", "#BPM 9\n#00111:01\n");
    folder_.Write("song/text.bms", "Dear reader,\r\n");
    folder_.Write("song/long.bms", "#BPM 1\r\n#99911:01\r\n");
    fs::create_symlink("song.bms", folder_.Path("song/link.txt"));
    std::map<std::string, std::string> before;
    for (const auto& entry : fs::directory_iterator(folder_.Path("song")))
        before[entry.path()] = test::ReadFile(entry.path());
    const struct {
        const char* arguments;  // SONG: the chart
        int code;
        const char* text;
    } rows[] = {
        {"", 1, "no chart given"},
        {"SONG", 1, "nothing to render"},
        {"--wav", 1, "--wav needs a value"},
        {"--nonsense SONG", 1, "unknown option: --nonsense"},
        {"--wav a.wav --speed 9 SONG", 1, "--speed: invalid value: 9"},
        {"--wav a.wav --fps 0 SONG", 1, "--fps: invalid value: 0"},
        {"--wav a.wav --size 1.5 SONG", 1, "--size: invalid value: 1.5"},
        {"--wav a.wav --from 3 --to 2 SONG", 1, "--from is after --to"},
        {"--wav a.wav --from 9 SONG", 1, "the chart has 5 measures, 0 to 4"},
        {"--wav a.wav one.bms two.bms", 1, "one chart at a time: two.bms"},
        {"--wav - --trace - SONG", 1, "only one output"},
        {"--png p SONG", 1, "--png and --at go together"},
        {"--png p --at 1,,2 SONG", 1, "--at: invalid value"},
        {"--png p --at -5 SONG", 1, "--at: invalid value"},
        {"--png p --at m77 --wav a.wav SONG", 1, "m77: the chart has no such measure"},
        {"--png p --at 900 --from 2 SONG", 1, "before the start of what is played"},
        {"--wav a.wav --from 1s SONG", 1, "--from takes a measure"},
        {"--audio a.mp3 SONG", 1, "--audio writes .wav, .flac and .ogg"},
        {"--preview SONG", 1, "--preview needs either"},
        {"--preview --from 99% --audio a.ogg --length 0 SONG", 1, "--length: invalid value"},
        {"--preview --from m900 --audio a.ogg SONG", 1, "not in the chart"},
        {"--pacing fast --wav a.wav SONG", 1, "--pacing: invalid value: fast"},
        {"--wav SONG SONG", 1, "is an input"},
        {"--force --wav ../song/a.wav SONG", 1, "is an input"},
        {"--force --trace ../song/link.txt SONG", 1, "is an input"},
        {"--trace ../song/p.bmp SONG", 1, "is an input"},
        {"--trace ../song/short.bms SONG", 1, "a trace is not named .bms"},
        {"--wav a.mp3 SONG", 1, "a WAV file is not named .mp3"},
        {"--video p%03d.png SONG", 1, "use one of .mp4"},
        {"--video x.m3u8 SONG", 1, "use one of .mp4"},
        {"--png p --at 99999999 SONG", 1, "after the end of what is played"},
        {"--wav a.wav none.bms", 2, "none.bms: cannot be read"},
        {"--wav a.wav ../song", 2, "cannot be read"},
        {"--wav a.wav ../song/short.bms", 2, "no object after measure 0"},
        {"--wav a.wav ../song/unix.bms", 2, "do not end in CR LF"},
        {"--wav a.wav ../song/text.bms", 2, "not a BMS chart"},
        {"--wav a.wav ../song/long.bms", 3, "lasts 66 h 40 min"},
        {"--wav none/a.wav SONG", 3, "none/a.wav: cannot write"},
        {"--trace - SONG >/dev/full", 3, ""},
        {"--help >/dev/full", 3, ""},
        {"--help", 0, "Usage: lumetra-render"},
        {"--version", 0, "lumetra-render "},
    };
    for (const auto& row : rows) {
        std::string arguments = row.arguments;
        for (size_t at = 0; (at = arguments.find("SONG", at)) != arguments.npos;)
            arguments.replace(at, 4, "../song/song.bms");
        ExpectSays(Run(arguments), row.code, row.text, row.arguments);
        fs::remove(folder_.Path("out/p"));  // fails, as it should, when a picture is in it
        EXPECT_EQ(OutFiles(), Names{}) << row.arguments;
    }
    for (const auto& [path, bytes] : before) EXPECT_EQ(test::ReadFile(path), bytes) << path;
}

TEST_F(Render, WritesShortChartsAndToStandardOutput) {
    folder_.Write("song/quick.bms", "#BPM 60000\r\n#00111:01\r\n");
    ASSERT_EQ(Run("--wav q.wav ../song/quick.bms").text, "");
    EXPECT_NEAR(static_cast<double>(Out("q.wav").size()), 4.5 * 44100, 2 * 44100);  // the lead-in
    // What sounds at the end of --to is cut, to the sample; also after the last measure.
    folder_.Write("song/a.wav", test::SquareWav(3 * 44100));
    folder_.Write("song/song.bms", "#BPM 120\r\n#WAV01 a.wav\r\n#00211:01\r\n");
    ASSERT_EQ(Run("--wav - --to 2 ../song/song.bms > s.wav").code, 0);
    ASSERT_EQ(Run("--wav t.wav --to 2 ../song/song.bms").code, 0);
    EXPECT_TRUE(Samples(Out("s.wav")) == Samples(Out("t.wav")));
    EXPECT_EQ(Out("t.wav").size(), 44u + 4 * 7 * 44100);
    folder_.Write("song/song.bms", "#WAV01 a.wav\r\n#WAV02 b\r\n#BMP01 c\r\n#00211:01\r\n");
    ExpectSays(Run("--wav t.wav ../song/song.bms"), 0,
               "1 of 2 sounds and 1 of 1 picture missing, lumetra-check tells more", "losses");
}

// A sound that declares minutes more than its file holds.
TEST_F(Render, SilenceIsNotWaitedFor) {
    for (const int bits : {8, 16}) {
        std::string wav = test::SquareWav(16, 4, {1, 8000, bits});
        folder_.Write("song/a.wav", wav.replace(40, 4, test::LittleEndian(2'000'000, 4)));
        ASSERT_EQ(Run("--force --wav s.wav ../song/song.bms").text, "");
        EXPECT_NEAR(static_cast<double>(Samples(Out("s.wav")).size()), 9 * 88200, 8820) << bits;
    }
}

TEST_F(Render, LeavesNothingWhenStopped) {
    folder_.Write("song/long.bms", "#BPM 20\r\n#99911:01\r\n");
    chmod(folder_.Write("bin/ffmpeg", kEncoder).c_str(), 0755);
    const std::string chart = folder_.Path("song/long.bms"), out = folder_.Path("out/a.txt"),
                      video = folder_.Path("out/v.mkv"), bin = folder_.Path("bin");
    for (const int signal : {SIGTERM, SIGKILL}) {
        const pid_t pid = fork();
        if (pid == 0) {
            setenv("PATH", bin.c_str(), 1);
            if (!freopen("/dev/null", "w", stderr) || !freopen("/dev/null", "w", stdout)) _exit(9);
            // The video's pass for the sound, with the trace, runs in a child.
            const char* with = signal == SIGKILL ? video.c_str() : nullptr;
            execl(LUMETRA_RENDER, "lumetra-render", "--trace", out.c_str(), chart.c_str(),
                  with ? "--video" : with, with, nullptr);
            _exit(9);
        }
        const auto wait = [&](size_t files) {
            for (int i = 0; i < 1000 && OutFiles().size() != files; ++i)
                std::this_thread::sleep_for(std::chrono::milliseconds(10));
            return OutFiles().size() == files;
        };
        EXPECT_TRUE(wait(1));
        kill(pid, signal);
        int status = 0;
        waitpid(pid, &status, 0);
        EXPECT_TRUE(signal == SIGKILL || (WIFEXITED(status) && WEXITSTATUS(status) == 3));
        EXPECT_TRUE(wait(0)) << signal;
    }
}

}  // namespace
