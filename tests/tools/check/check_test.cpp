// lumetra-check run as a user runs it: small charts, and exactly what it says about them.
#include <gtest/gtest.h>

#include <sstream>

#include "packages/encode.h"
#include "support/media.h"
#include "tools/run_tool.h"
#include "xa/encoder.h"

namespace {

using test::Chart;

class CheckTool : public test::ToolTest {
protected:
    test::ToolResult Run(const std::string& arguments) {
        return RunTool(LUMETRA_CHECK_TOOL, folder_.Path(), arguments);
    }

    // The findings as `line:column severity code`, of a chart with some files beside it.
    std::string Findings(const std::string& chart) {
        folder_.Write("c.bms", chart);
        std::istringstream lines(Run("--strict c.bms").text);
        std::string all;
        for (std::string line; std::getline(lines, line);) {
            int row, column, used = 0;
            char severity[16];
            if (std::sscanf(line.c_str(), "c.bms:%d:%d: %15[a-z]:%n", &row, &column, severity, &used) != 3)
                continue;
            EXPECT_GT(used, 0);
            const size_t open = line.rfind('[');
            if (open == line.npos || line.back() != ']') return "a finding without a code: " + line;
            all += std::to_string(row) + ":" + std::to_string(column) + " " + severity + " " +
                   line.substr(open + 1, line.size() - open - 2) + "\n";
        }
        return all;
    }

    void WriteFiles() {
        folder_.Write("a.wav", test::SquareWav(4410));
        folder_.Write("B.WAV", test::SquareWav(4410));
        folder_.Write("a.bmp", test::Bmp(8, 8, 0x123456));
    }
};

// A chart with nothing to say about, and lines between that are to be looked at, from line 6 on.
std::string With(const std::vector<std::string>& lines) {
    std::vector<std::string> all = {"#PLAYER 1", "#TITLE t", "#BPM 120", "#WAV01 a.wav", "#BMP01 a.bmp"};
    all.insert(all.end(), lines.begin(), lines.end());
    for (const char* last : {"#00111:01", "#00104:01"}) all.push_back(last);
    return Chart(all);
}

struct Case {
    std::vector<std::string> lines;
    const char* findings;
};

TEST_F(CheckTool, SaysWhatIsSkipped) {
    WriteFiles();
    const std::string long_line = "#00111:" + std::string(1100, '0');
    const Case cases[] = {
        {{}, ""},
        {{"", "*---- a comment", "; another", "#", "#----", "# text"}, ""},
        // shape of lines
        {{" #00211:01"}, "6:1 warning leading-blank\n"},
        {{"00211:01", "WAV02 a.wav", "once 00211:01"},
         "6:1 warning missing-hash\n7:1 warning missing-hash\n"},
        {{"\x81\x94WAV02 a.wav"}, "6:1 warning wide-hash\n"},
        {{"#IF"}, "6:1 note short-line\n"},
        {{"#00211:01\t01"}, "6:10 warning tab\n"},
        {{"#00211:01\t "}, ""},
        {{long_line}, "6:1024 error line-too-long\n"},
        {{"#00211:01\n#00311:01"}, "6:10 error lone-lf\n"},
        {{"#00211:01\nwords"}, "6:10 warning lone-lf\n"},
        {{"#GENRE a\r#00311:01"}, "6:9 error lone-cr\n"},
        {{"#GENRE a\r"}, "6:9 error lone-cr\n"},
        {{std::string("#GENRE a\0#ARTIST b", 18)}, "6:9 warning nul\n"},
        {{"#00211 01"}, "6:1 warning bad-channel-line\n"},
        {{"#TILTE x"}, "6:1 warning unknown-command\n"},
        {{"#TITLEX x"}, "6:1 warning unknown-command\n"},
        {{"#GENRE:x"}, "6:1 warning no-blank\n"},
        {{"#GENRE", "#ARTIST "}, "6:1 note value-missing\n7:1 note value-missing\n"},
        {{"#ARTIST\tx"}, "6:8 warning tab\n"},
        {{"#GENRE a", "#GENRE b"}, "7:1 warning defined-twice\n"},
        {{"#ARTIST a", "#PATH_WAV x"}, "7:1 warning value-missing\n"},
        // numbers of files
        {{"#WAV00 a.wav"}, "6:5 warning zero-number\n"},
        {{"#WAVG0 a.wav"}, "6:5 warning zero-number\n"},
        {{"#WAV02a.wav"}, "6:7 warning no-blank\n"},
        {{"#WAV2 a.wav"}, "6:5 warning bad-id\n"},
        {{"#WAV02 "}, "6:1 note value-missing\n"},
        {{"#WAV02 a.wav"}, "6:1 note unused-sound\n"},
        {{"#WAVZZ a.wav", "#00211:0Z"}, "6:5 warning folded-id\n"},
        {{"#00211:G1", "#00311:G1G0"}, "6:8 warning folded-id\n7:10 warning folded-id\n"},
        {{"#WAV01 B.WAV"}, "6:1 warning defined-twice\n"},
        {{"#WAV01 a.wav"}, "6:1 note defined-twice\n"},
        {{"#00211:02"}, "6:8 warning undefined-sound\n"},
        {{"#00211:_0_2"}, "6:9 warning undefined-sound\n"},
        {{"#00131:02", "#00201:0102"}, "6:1 note invisible-notes\n7:10 warning undefined-sound\n"},
        {{"#00231:01"}, "6:1 note invisible-notes\n6:1 note idle-end\n"},
        {{"#BMP00 a.bmp"}, "6:1 note unused-picture\n"},
        {{"#00204:02"}, "6:8 warning undefined-picture\n"},
        {{"#00204:ZZ"}, "6:8 note undefined-picture\n"},
        {{"#BMPZZ a.bmp", "#00204:ZZ"},
         "6:1 note unused-picture\n6:5 warning folded-id\n7:8 warning undefined-picture\n"},
        {{"#00206:01"}, "6:1 note poor-layer\n"},
        // tempos
        {{"#BPM120"}, "6:1 warning bpm-columns\n6:1 warning defined-twice\n"},
        {{"#BPM120.5"}, "6:1 warning bpm-columns\n6:1 note unused-tempo\n"},
        {{"#BPM01 0", "#00208:01"}, "6:8 error tempo-not-positive\n"},
        {{"#BPM01 12O", "#00208:01"}, "6:8 warning bad-number\n"},
        {{"#BPM01 1e2 ", "#00208:01"}, ""},
        {{"#BPM00 120"}, "6:5 warning zero-number\n"},
        {{"#00208:01", "#BPM01 180"}, "6:8 error bpm-below-use\n"},
        {{"#00208:01"}, "6:8 error undefined-tempo\n"},
        {{"#00203:0G"}, "6:8 error tempo-not-positive\n"},
        {{"#00203:1G"}, "6:8 warning bad-digit\n"},
        {{"#00203:FF"}, ""},
        // channels
        {{"#00102:0"}, "6:8 warning zero-length\n"},
        {{"#00102:x"}, "6:8 warning zero-length\n"},
        {{"#00102:0,5"}, "6:8 warning zero-length\n"},
        {{"#00102:1,5"}, "6:8 warning bad-number\n"},
        {{"#00102:0.5", "#00102:0.75"}, "7:1 warning length-twice\n"},
        {{"#00302:0.5"}, "6:1 note idle-end\n"},
        {{"#00211:0101010"}, "6:14 note odd-data\n"},
        {{"#00211:00011"}, "6:12 warning odd-data\n"},
        {{"#00211:0 01"}, "6:8 warning bad-digit\n"},
        {{"#00211:"}, "6:1 note empty-data\n"},
        {{"#00121:01", "#00121:0101"}, "6:8 note double-sound\n7:8 warning double-note\n"},
        {{"#0011A:01"}, "6:1 warning channel-letters\n"},
        {{"#0011A:00"}, ""},
        {{"#00110:01"}, "6:1 warning unknown-channel\n"},
        // other dialects
        {{"#RANDOM 2", "#IF 1", "#ENDIF"},
         "6:1 warning random-block\n7:1 warning random-block\n8:1 warning random-block\n"},
        {{"#STOP01 96", "#00109:01"}, "6:1 warning stop\n7:1 warning stop\n"},
        {{"#LNOBJ 01", "#LNTYPE 1", "#00151:01", "#0015A:01"},
         "6:1 warning long-note\n7:1 note long-note\n8:1 warning long-note\n9:1 warning long-note\n"},
        {{"#SCROLL01 2", "#001SC:01"}, "6:1 warning scroll\n7:1 warning scroll\n"},
        {{"#001D1:01"}, "6:1 note landmine\n"},
        {{"#EXBPM01 120", "#WAVCMD 00 01 5"}, "6:1 warning other-dialect\n7:1 warning other-dialect\n"},
        {{"#STAGEFILE a.bmp", "#VOLWAV 80"}, "6:1 note unused-header\n7:1 note unused-header\n"},
        // rectangles
        {{"#BGA02 01 0 0 8 8 0 0", "#00104:02"}, "6:1 warning bga-short\n7:8 warning undefined-picture\n"},
        {{"#BGA02 01 00 0 8 8 0 0", "#00104:02"}, ""},
        {{"#BGA02 01 0  0 8 8 0 0", "#00104:02"}, "6:1 warning bga-empty\n6:13 warning bga-blanks\n"},
        {{"#BGA02 01 000 000 008", "#BGA02 01 000 000 0008"},
         "6:1 warning bga-short\n7:1 warning bga-numbers\n7:1 warning bga-empty\n7:1 note "
         "unused-rectangle\n"},
        {{"#BGA02 01 0 0 300 300 0 0", "#00104:02"}, "6:1 note bga-clipped\n"},
        {{"#BGA02 00 0 0 8 8 0 00", "#00104:02"}, "6:8 warning zero-number\n7:8 warning undefined-picture\n"},
        {{"#BGA00 01 0 0 8 8 0 00"}, "6:5 warning zero-number\n"},
        {{"#BGA02 07 0 0 8 8 0 00", "#00104:02"}, "6:1 warning undefined-picture\n"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(Findings(With(c.lines)), c.findings) << ::testing::PrintToString(c.lines);
}

// A WAV file whose format block has this tag.
std::string WavOfTag(uint64_t tag) {
    std::string wav = test::SquareWav(100);
    return wav.replace(20, 2, test::LittleEndian(tag, 2));
}

TEST_F(CheckTool, LooksForFilesAndIntoThem) {
    WriteFiles();
    folder_.Write("s/\xE3\x83\x9D.wav", test::SquareWav(4410));
    folder_.Write("kick.ogg", "OggS and more of it, but nothing that is read");
    folder_.Write("song.ogg", test::Encode(test::Tone(4410), test::SoundFile::kOgg));
    folder_.Write("pic.png", test::EncodePng(test::Paint(8, 8, [](int, int) { return 0xFF123456; }),
                                             test::PngKind::kRgb));
    folder_.Write("text.wav", "this is no sound at all");
    folder_.Write("flac.wav", "fLaC and more");
    folder_.Write("empty.wav", "");
    folder_.Write("tag.wav", WavOfTag(0x1234));
    const auto coded = xa::Encode(std::vector<int16_t>(4410), 1, 44100, xa::Mode::kFine);
    folder_.Write("a.xa", std::string(coded.begin(), coded.end()));
    folder_.Write("cut.wav", test::SquareWav(4410).substr(0, 4000));
    folder_.Write("none.wav", test::SquareWav(0));
    folder_.Write("a.png", "\x89PNG\r\n\x1A\n and then some bytes, as many as a header of a picture has");
    folder_.Write("short.bmp", "BM");
    folder_.Write("cut.bmp", test::Bmp(8, 8, 0).substr(0, 150));
    std::string shifted = test::Bmp(8, 8, 0), odd = test::Bmp(8, 8, 0);
    shifted[10] = 60;  // where its pixels begin
    odd[28] = 13;      // bits of a pixel
    folder_.Write("shifted.bmp", shifted);
    folder_.Write("odd.bmp", odd);
    folder_.Write("large.bmp", test::Bmp(300, 10, 0));
    const Case cases[] = {
        {{"#WAV02 b.wav"}, "6:8 note name-case\n"},
        {{"#WAV02 S\\\x83\x7C.WAV"}, "6:8 note name-encoding\n"},
        {{"#WAV02 s/\xE3\x83\x9D.wav"}, ""},
        {{"#WAV02 kick.wav"}, "6:8 error sound-missing\n"},
        {{"#WAV02  a.wav"}, "6:8 error sound-missing\n"},
        {{"#WAV02 s"}, "6:8 error sound-missing\n"},
        {{"#WAV02 song.wav"}, "6:8 note stand-in\n"},
        {{"#WAV02 a.xa"}, "6:8 note sound-format\n"},
        {{"#WAV02 cut.wav"}, "6:8 warning sound-cut\n"},
        {{"#WAV02 none.wav"}, "6:8 warning sound-empty\n"},
        {{"#WAV02 " + std::string(300, 'x')}, "6:8 error path-too-long\n6:8 error sound-missing\n"},
        {{"#PATH_WAV nowhere", "#WAV02 a.wav"}, "6:1 warning path-wav\n7:8 error sound-missing\n"},
        {{"#PATH_WAV " + folder_.Path() + "/s", "#WAV02 \x83\x7C.wav"},
         "6:1 warning path-wav\n7:8 note name-encoding\n"},
        {{"#BMP02 A.bmp"}, "6:8 note name-case\n"},
        {{"#BMP02 b.bmp"}, "6:8 error picture-missing\n"},
        {{"#BMP02 a.png"}, "6:8 error picture-unreadable\n"},
        {{"#BMP02 pic.bmp"}, "6:8 note stand-in\n"},
        {{"#BMP02 short.bmp"}, "6:8 error picture-unreadable\n"},
        {{"#BMP02 cut.bmp"}, "6:8 warning picture-cut\n"},
        {{"#BMP02 shifted.bmp"}, "6:8 warning picture-shifted\n"},
        {{"#BMP02 odd.bmp"}, "6:8 error picture-format\n"},
        {{"#BMP02 large.bmp"}, "6:8 note picture-large\n"},
    };
    const auto findings = [this](std::vector<std::string> lines) {
        lines.push_back(lines[0][1] == 'B' ? "#00204:02" : "#00211:02");  // uses it
        return Findings(With(lines));
    };
    for (const Case& c : cases) EXPECT_EQ(findings(c.lines), c.findings) << c.lines[0];
    for (const char* name : {"kick.ogg", "text.wav", "flac.wav", "empty.wav", "tag.wav"})
        EXPECT_EQ(findings({std::string("#WAV02 ") + name}), "6:8 error sound-unreadable\n") << name;
    EXPECT_EQ(
        Findings(With({"#WAV02 kick.wav", "#BMP02 b.bmp"})),
        "6:1 note unused-sound\n6:8 note sound-missing\n7:1 note unused-picture\n7:8 note picture-missing\n");
}

TEST_F(CheckTool, SentencesSayWhatAndWhy) {
    WriteFiles();
    folder_.Write("kick.ogg", "OggS and more of it, but nothing that is read");
    folder_.Write("c.bms", With({"#WAV02 kick.wav", "#WAV03 kick.ogg", "#WAV04 b.wav", "#00201:02",
                                 "#00201:03", "#00201:04", "#WAV05 \x83\x7C\x83N\x01\x82", "#00201:05"}));
    const test::ToolResult result = Run("--strict ./c.bms");
    EXPECT_EQ(result.code, 1);
    for (const char* text :
         {"./c.bms:6:8: error: `kick.wav` is not there; `kick.ogg` is there, but cannot be read; its object "
          "makes no sound "
          "[sound-missing]",
          "./c.bms:7:8: error: `kick.ogg` cannot be played: it is an Ogg file; name `kick.wav` in the chart, "
          "for which it stands where that is not there, or save it as a PCM WAV file; "
          "its object "
          "makes no sound [sound-unreadable]",
          "./c.bms:8:8: note: `b.wav` is found as `B.WAV`, in other letter case",
          "`\xE3\x83\x9D\xE3\x82\xAF ` is not there", "./c.bms: 3 errors, 0 warnings, 1 note\n",
          "length    3 measures, 0:07.000, sounds until 0:05.100\n", "tempo     120\n",
          "notes     1: 11 1\n"})
        EXPECT_NE(result.text.find(text), std::string::npos) << text << "\nin\n" << result.text;
}

TEST_F(CheckTool, WholeFilesThatCannotBeRead) {
    WriteFiles();
    const std::string good = With({});
    std::string lf, cr, wide = "\xFF\xFE";
    for (const char c : good) {
        if (c != '\r') lf += c;
        if (c != '\n') cr += c;
        wide += {c, '\0'};
    }
    EXPECT_EQ(Findings(lf), "1:1 error refused\n1:10 error lone-lf\n");
    EXPECT_EQ(Findings(cr), "1:1 error refused\n1:10 error lone-cr\n");
    EXPECT_EQ(Findings(wide), "1:1 error utf-16\n1:1 error refused\n");
    EXPECT_EQ(Findings("\xEF\xBB\xBF" + good), "1:1 error byte-order-mark\n");
    EXPECT_EQ(Findings("\xEF\xBB\xBF\r\n" + good), "1:1 note byte-order-mark\n");
    EXPECT_EQ(Findings("\n" + good), "1:1 error lone-lf\n");
    EXPECT_EQ(Findings(Chart({"#WAV01 a.wav", "#00111:01"})), "1:1 note no-tempo\n");
    EXPECT_EQ(Findings(""), "1:1 error refused\n");
    EXPECT_EQ(Findings(Chart({"#WAV01 a.wav", "#00011:01"})), "2:1 error refused\n");
    EXPECT_EQ(Findings(Chart({"#WAV01 a.wav", "#BPM 1e-9", "#99911:0001"})), "3:10 error too-late\n");
}

TEST_F(CheckTool, ExitCodesAndUse) {
    WriteFiles();
    folder_.Write("clean.bms", With({}));
    folder_.Write("note.bms", With({"#WAV02 a.wav"}));
    folder_.Write("bad.bms", With({"#00211:02"}));
    struct Use {
        const char* arguments;
        int code;
        const char* text;
    };
    const Use uses[] = {
        {"clean.bms", 0, "clean.bms: 0 errors, 0 warnings, 0 notes\n"},
        {"--strict clean.bms", 0, "0 notes\n"},
        {"note.bms", 0, "1 note (seen with --strict)\n"},
        {"--strict note.bms", 1, "[unused-sound]"},
        {"bad.bms", 1, "[undefined-sound]"},
        {"clean.bms bad.bms note.bms", 1, "note.bms: 0 errors"},
        {"bad.bms gone.bms clean.bms", 2, "gone.bms: No such file"},
        {"-- -x.bms", 2, "-x.bms: No such file"},
        {".", 2, ".: is a folder"},
        {"", 2, "no chart given"},
        {"--jsno clean.bms", 2, "'--jsno'"},
        {"--help", 0, "Usage: lumetra-check"},
        {"--version", 0, "lumetra-check " LUMETRA_VERSION "\n"},
        {"clean.bms >/dev/full", 3, ""},
    };
    for (const Use& use : uses) ExpectSays(Run(use.arguments), use.code, use.text, use.arguments);
    EXPECT_EQ(Run("'" LUMETRA_SOURCE "/demo/demo.bms'").code, 0);
}

TEST_F(CheckTool, ManyFindingsAreCounted) {
    WriteFiles();
    folder_.Write("c.bms", With(std::vector<std::string>(1500, "#UNKNOWN x")));
    const test::ToolResult result = Run("c.bms");
    EXPECT_NE(result.text.find("500 more of [unknown-command]"), std::string::npos);
    EXPECT_NE(result.text.find("0 errors, 1500 warnings"), std::string::npos);
}

}  // namespace
