// What publishers render: sound files, previews, strips.
#include <ebur128.h>
#include <gtest/gtest.h>
#include <sndfile.h>

#include <cmath>
#include <fstream>

#include "tools/render/render_support.h"

namespace {

struct Sound {
    int frames = 0, format = 0;
    std::string title;
    std::vector<float> samples;
};

Sound ReadSound(const std::string& path) {
    SF_INFO info = {};
    SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
    if (!file) return {};
    const char* title = sf_get_string(file, SF_STR_TITLE);
    Sound sound = {static_cast<int>(info.frames), info.format, title ? title : "", {}};
    sound.samples.resize(static_cast<size_t>(info.frames * info.channels));
    sf_readf_float(file, sound.samples.data(), info.frames);
    sf_close(file);
    return sound;
}

float Difference(const Sound& a, const std::vector<int16_t>& b) {
    float most = a.samples.size() == b.size() ? 0 : 9;
    for (size_t i = 0; i < std::min(a.samples.size(), b.size()); ++i)
        most = std::max(most, std::fabs(a.samples[i] - static_cast<float>(b[i]) / 32768));
    return most;
}

TEST_F(Render, WritesAudioOfEveryFormat) {
    folder_.Write("song/song.bms", "#TITLE \x8B\xC8\r\n#BPM 120\r\n#WAV01 a.wav\r\n#00111:01010101\r\n");
    ASSERT_EQ(Run("--wav plain.wav ../song/song.bms").code, 0);
    const std::vector<int16_t> plain = Samples(Out("plain.wav"));
    const struct {
        const char *arguments, *file;
        int format;
        float difference;
    } rows[] = {
        {"", "a.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 0},
        {"--bits 24", "b.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_24, 0.5f / 32768},
        {"--float", "c.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, 0.5f / 32768},
        {"", "d.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16, 0},
        {"--bits=24", "e.FLAC", SF_FORMAT_FLAC | SF_FORMAT_PCM_24, 0.5f / 32768},
        {"", "f.ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS, 0.3f},
    };
    for (const auto& row : rows) {
        ASSERT_EQ(Run(std::string("--audio ") + row.file + " " + row.arguments + " ../song/song.bms").text,
                  "");
        const Sound sound = ReadSound(folder_.Path(std::string("out/") + row.file));
        EXPECT_EQ(sound.format, row.format) << row.file;
        EXPECT_LE(Difference(sound, plain), row.difference) << row.file;
        EXPECT_EQ(sound.title, "曲") << row.file;
        const std::string bytes = Out(row.file);
        EXPECT_EQ(bytes.find("PEAK"), bytes.npos) << "the time of day is in it";
        Run(std::string("--audio ") + row.file + " " + row.arguments + " ../song/song.bms");
        EXPECT_TRUE(Out(row.file) == bytes) << row.file;
    }
}

TEST_F(Render, NormalizesToALoudnessBelowThePeak) {
    for (const double wanted : {-30.0, 0.0}) {
        const test::ToolResult result =
            Run("--force --audio n.wav --float --normalize " + std::to_string(wanted) + " ../song/song.bms");
        ExpectSays(result, 0, wanted == 0 ? "more would peak above -1 dBTP" : "", "normalize");
        const Sound sound = ReadSound(folder_.Path("out/n.wav"));
        ebur128_state* state = ebur128_init(2, 44100, EBUR128_MODE_I | EBUR128_MODE_TRUE_PEAK);
        ebur128_add_frames_float(state, sound.samples.data(), static_cast<size_t>(sound.frames));
        double loudness = 0, peak = 0;
        ebur128_loudness_global(state, &loudness);
        ebur128_true_peak(state, 0, &peak);
        ebur128_destroy(&state);
        EXPECT_NEAR(wanted == 0 ? 20 * std::log10(peak) : loudness, wanted == 0 ? -1 : -30, 0.05);
    }
}

TEST_F(Render, PreviewIsTheDensestPassageAsItSoundsInTheWhole) {
    // A long sound from measure 0 on; measures 4 and 5, from 9 s on, have most notes.
    folder_.Write("song/long.wav", test::SquareWav(30 * 44100, 37));
    folder_.Write(
        "song/song.bms",
        "#BPM 120\r\n#WAV01 a.wav\r\n#WAV02 long.wav\r\n#00001:02\r\n#00211:0101\r\n#00411:01010101\r\n"
        "#00511:010101\r\n#00711:01\r\n");
    ASSERT_EQ(Run("--wav w.wav ../song/song.bms").code, 0);
    const std::vector<int16_t> whole = Samples(Out("w.wav"));
    const struct {
        const char* start;
        double seconds;
    } rows[] = {{"", 9}, {"--from 2", 5}, {"--from m2.5", 6}, {"--from 8.5s", 8.5}, {"--from 50%", 9}};
    for (const auto& row : rows) {
        ASSERT_EQ(
            Run(std::string("--preview --length 4s --fade 1 --audio p.wav ../song/song.bms ") + row.start)
                .code,
            0);
        const std::vector<int16_t> passage = Samples(Out("p.wav"));
        ASSERT_EQ(passage.size(), 8u * 44100) << row.start;
        const auto* same = &whole[static_cast<size_t>(row.seconds * 88200)];
        EXPECT_TRUE(std::equal(passage.begin() + 882, passage.end() - 88200, same + 882)) << row.start;
        EXPECT_EQ(passage.back(), 0);
        EXPECT_NEAR(passage[7 * 44100], same[7 * 44100] / 2, 2);
    }
    // The fade is no longer than the passage, and every chart has a passage.
    folder_.Write("song/fast.bms", "#BPM 1e9\r\n#WAV01 long.wav\r\n#00111:01\r\n");
    for (const char* chart : {"song.bms", "fast.bms"}) {
        ASSERT_EQ(Run(std::string("--preview --length 1 --audio p.wav ../song/") + chart).text, "");
        const std::vector<int16_t> passage = Samples(Out("p.wav"));
        ASSERT_EQ(passage.size(), 2u * 44100) << chart;
        EXPECT_NEAR(std::abs(passage[66150]), 4096, 2) << chart;
    }
}

TEST_F(Render, PreviewsManyChartsAndOutlivesBrokenOnes) {
    const std::string notes = "#BPM 120\r\n#WAV01 a.wav\r\n#00111:0101\r\n";
    folder_.Write("all/one/x.bms", notes);
    folder_.Write("all/two/x.bme", notes);
    folder_.Write("all/two/deep/y.bms", "not a chart");
    folder_.Write("all/two/long.bms",
                  "#BPM 120\r\n#00102:20000\r\n#WAV01 a.wav\r\n#00211:0101\r\n");  // 11 hours
    folder_.Write("all/one/a.wav", test::SquareWav(88200));
    const std::string arguments = "--preview --output-dir p --trim ../all";
    ExpectSays(Run(arguments), 2, "3 written, 0 skipped because they exist, 1 failed", "first");
    EXPECT_EQ(ReadSound(folder_.Path("out/p/long.ogg")).frames, 0);  // nothing but silence, trimmed
    // Two sounds half a second... apart, the second one rings out; the silence before and after is trimmed.
    EXPECT_NEAR(ReadSound(folder_.Path("out/p/one-x.ogg")).frames, 3 * 44100, 441);
    EXPECT_TRUE(fs::exists(folder_.Path("out/p/two-x.ogg")));
    ExpectSays(Run(arguments), 2, "0 written, 3 skipped because they exist, 1 failed", "again");
    ExpectSays(Run("--force " + arguments), 2, "3 written, 0 skipped", "force");
}

TEST_F(Render, PreviewsOfOneFolderDoNotShareAName) {
    for (const char* name : {"a/s.bms", "a/s.bme", "a/s.bms.bml", "b/s.bms"})
        folder_.Write(std::string("all/") + name, "#WAV01 a.wav\r\n#00111:0101\r\n");
    for (const std::string force : {"", "--force "}) {
        ExpectSays(Run(force + "--preview --output-dir p ../all"), 1,
                   force.empty() ? "3 written, 0 skipped because they exist, 1 failed" : "3 written", force);
    }
    for (const char* name : {"s.bms.ogg", "s.bme.ogg", "s.ogg"})
        EXPECT_TRUE(fs::exists(folder_.Path(std::string("out/p/") + name))) << name;
}

TEST_F(Render, PreviewsSpareSubstitutesAndReadNoneForNothing) {
    const auto bytes_read = [] {  // by this process and those that it has waited for
        std::ifstream counts("/proc/self/io");
        int64_t count = 0;
        counts.ignore(7) >> count;
        return count;
    };
    folder_.Write("all/x.bms", "#WAV01 y\r\n#WAV02 y.wav\r\n#00111:01\r\n");
    folder_.Write("all/y.bms", "#00111:01\r\n");
    folder_.Write("all/y.ogg", "OggS" + std::string(8 << 20, '\0'));
    ExpectSays(Run("--force --preview --output-dir ../all ../all"), 1, "y.ogg: is an input", "force");
    const int64_t before = bytes_read();
    ExpectSays(Run("--preview --output-dir ../all ../all"), 0, "0 written, 2 skipped", "again");
    EXPECT_LT(bytes_read() - before, 8 << 20);
}

TEST_F(Render, StripShowsTheWholeChart) {
    folder_.Write(
        "song/song.bms",
        "#BPM 120\r\n#00016:01\r\n#00102:0.75\r\n#00211:0001\r\n#00208:01\r\n#BPM01 180\r\n#00313:01\r\n");
    ASSERT_EQ(Run("--strip s.png ../song/song.bms").text, "");
    const Image strip = ReadPng(Out("s.png"));
    ASSERT_EQ(strip.height, 88 + 4 * 192 - 48 + 8);  // 3.75 measures of 192 pixels
    const int bottom = 88 + 720, x = 8;
    const struct {
        int x, y;
        uint32_t color;
    } rows[] = {{x + 24, bottom - 2, 0xFF0000},        // measure 0: scratch
                {x + 32, bottom - 432 - 2, 0xFFFFFF},  // measure 2, its middle
                {x + 50, bottom - 192 - 1, 0xFFFFFF},  // the bar of measure 1
                {x + 112, bottom - 336 - 2, 0xFFFF00}};
    for (const auto& row : rows) EXPECT_EQ(strip.At(row.x, row.y), row.color) << row.x << " " << row.y;
    // Measures of any length and number end in pages of bounded size.
    folder_.Write("song/huge.bms", "#00102:1e300\r\n#00202:150000\r\n#99911:01\r\n#99921:01\r\n");
    ASSERT_EQ(Run("--strip h.png --speed 1 ../song/huge.bms").code, 0);
    const Image first = ReadPng(Out("h.png")), last = ReadPng(Out("h-8.png"));
    EXPECT_TRUE(first.width > 4000 && first.width <= 4096 && first.height == 608) << first.width;
    EXPECT_TRUE(last.width > 100 && last.height == first.height);
    EXPECT_FALSE(fs::exists(folder_.Path("out/h-9.png")));
}

}  // namespace
