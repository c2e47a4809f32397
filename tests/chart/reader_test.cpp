#include <gtest/gtest.h>

#include <cstring>

#include "host/headless/headless.h"
#include "support/chart_file.h"
#include "support/recorder.h"

namespace {

// What a chart's headers hold beside their defaults.
std::string Headers(const CBMS& chart) {
    std::string what;
    const auto text = [&](const char* name, const char* value) {
        if (value) what += std::string(name) + "=" + value;
    };
    const auto number = [&](const std::string& name, double value, double usual) {
        char digits[32];
        std::snprintf(digits, sizeof digits, "=%g", value);
        if (value != usual) what += name + digits;
    };
    text("title", chart.m_pszTitle);
    text("artist", chart.m_pszArtist);
    text("genre", chart.m_pszGenre);
    number("player", chart.m_nPlayer, 0);
    number("level", chart.m_nPlayLevel, 0);
    number("rank", chart.m_nRank, 0);
    number("volwav", chart.m_nVolWav, 100);
    number("total", chart.m_nTotal, 0);
    number("bpm", chart.m_dBPM, 130.0);
    for (int i = 0; i < BMS_SLOTS; ++i) number("bpm[" + std::to_string(i) + "]", chart.m_adBPM[i], 130.0);
    return what;
}

std::string HeadersOf(const std::string& bytes) {
    const auto chart = LoadChart(bytes);
    return chart ? Headers(*chart) : "refused";
}

TEST(Reader, HeadersByTheirLengthsAndColumns) {
    const char* rows[][2] = {
        {"#TITLE a", "title=a"},      {"#title  a b ", "title= a b "}, {"#TITLE a\tb", "title=a"},
        {"#ARTIST x", "artist=x"},    {"#GENRE x", "genre=x"},         {"#PLAYER 3", "player=3"},
        {"#PLAYER 12", "player=1"},   {"#PLAYER \xFF", "player=-49"},  {"#PLAYLEVEL 12", "level=12"},
        {"#RANK 2", "rank=2"},        {"#VOLWAV 50", "volwav=50"},     {"#TOTAL 300x", "total=300"},
        {"#BPM 147.5", "bpm=147.5"},  {"#BPM120", "bpm=20"},           {"#BPM12", "bpm=2"},
        {"#BPM01 180", "bpm[1]=180"}, {"#BPMG1 99", "bpm[1]=99"},      {"#BPM-1 99", "bpm=1"},
        {"#BPM 0", "bpm=0"},
    };
    for (const auto& [line, headers] : rows) EXPECT_EQ(HeadersOf(line), headers) << line;
    EXPECT_EQ(HeadersOf("#TITLE a\r\n#TITLE b"), "title=b");
    EXPECT_EQ(HeadersOf("#TITLE a\r\n#TITLE "), "title=a");
    EXPECT_EQ(HeadersOf("#BPM120.5"), "bpm[38]=0.5");  // by its columns: number 12, value `.5`
    for (const char* line :
         {"#TITLE ", "#TITLE", "#TITLE\tx", " #TITLE a", "*TITLE ab", "#ARTIST ", "#PLAYER2", "#PLAYER ",
          "#PLAYLEVEL ", "#RANK ", "#BPM\t147.5", "#BPM1", "#BPM00 120", "#STAGEFILE x.bmp", "#12345 x"})
        EXPECT_EQ(HeadersOf(line), "") << line;
}

TEST(Reader, LineEnds) {
    using namespace std::string_literals;
    const std::pair<std::string, const char*> rows[] = {
        {"#TITLE a\r\n#RANK 2", "title=arank=2"},
        {"#TITLE a\n#RANK 2", "title=a"},           // one line, seen up to its LF
        {"#TITLE a\r#RANK 2", "title=a\r#RANK 2"},  // a lone CR ends nothing
        {"#TITLE a\0#RANK 2"s, "title=arank=2"},
        {"#TITLE a\r\n\r\n\n\r\0\0\n#RANK 2"s, "title=arank=2"},
        {"\r\n#TITLE a", "title=a"},
        {"\n#TITLE a\r\n#RANK 2", "rank=2"},  // the LF hides the rest of its line
        {"\0#TITLE a"s, "title=a"},
        {"\r#TITLE a", ""},
        {"#TITLE a\r\r\n#RANK 2", "title=a\rrank=2"},
        {"#TITLE a\r", "title=a\r"},
        {"#TITLE a\r\0#RANK 2"s, "title=a\rrank=2"},
        {"", ""},
        {"\0"s, ""},
        {"\r\n", ""},
    };
    for (const auto& [bytes, what] : rows) {
        auto chart = LoadChart(bytes);
        ASSERT_TRUE(chart);
        EXPECT_EQ(Headers(*chart), what) << testing::PrintToString(bytes);
        EXPECT_EQ(chart->m_nMeasure, 2);
        EXPECT_EQ(chart->Compile(), 1);
        EXPECT_EQ(chart->m_pMeasure, nullptr);
    }
}

TEST(Reader, LongLinesLoseTheirEndBeforeTheyAreCut) {
    const std::string lead = "#TITLE ";
    for (size_t length : {1022u, 1023u, 1024u, 3000u}) {
        const std::string title(length - lead.size(), 'x');
        auto chart = LoadChart(lead + title + "\r\n#RANK 2");
        ASSERT_TRUE(chart);
        EXPECT_EQ(std::strlen(chart->m_pszTitle), std::min<size_t>(length, 1023) - lead.size());
        EXPECT_EQ(chart->m_nRank, 2);
    }
    // 508 pairs stay of 1018, and the places are counted on these.
    std::string data;
    for (int i = 0; i < 1018; ++i) data += i % 127 == 0 ? "01" : "00";
    auto chart = LoadChart("#00111:" + data);
    ASSERT_TRUE(chart);
    ASSERT_EQ(chart->m_nNote, 4);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(chart->m_pNote[i].dPos, i * 127 / 508.0);
}

TEST(Reader, TellsChannelLinesFromOthers) {
    const struct {
        const char* line;
        int measures, notes;
    } rows[] = {
        {"#00711:01", 9, 1},    {"#00711:00", 2, 0},     {"#00701", 2, 0},     {"#00711;01", 2, 0},
        {"#0071A:0101", 2, 0},  {"#007A1:01", 2, 0},     {"#00799:01", 9, 0},  {"#00705:01", 9, 0},
        {"#00710:01", 9, 0},    {"#00711:0_1__0", 9, 1}, {"#00711:_0_", 2, 0}, {"#00702:", 9, 0},
        {"#00711:", 2, 0},      {"#00711:1", 2, 0},      {"#00711:G0", 9, 0},  {"#00711:-0", 2, 0},
        {"#99911:01", 1001, 1}, {"#00711: 1", 9, 1},     {"#0 711:01", 2, 0},  {"#00711:z0", 9, 0},
        {"#00711:0\n1", 2, 0},  {"#0071\n:01", 2, 0},
    };
    for (const auto& row : rows) {
        auto chart = LoadChart(row.line);
        ASSERT_TRUE(chart);
        EXPECT_EQ(chart->m_nMeasure, row.measures) << row.line;
        EXPECT_EQ(chart->m_nNote, row.notes) << row.line;
    }
}

TEST(Reader, NamesOfSoundsAndPictures) {
    const ChartFile file(
        Lines("#WAV01 a.wav\n#wav0z B.WAV\n#WAVZZ last.wav\n#WAV00 none.wav\n#WAV02none.wav\n#WAV03 \n#WAV04 "
              " x y.wav \n"
              "#WAV05 a\tb\n#BMP00 zero.bmp\n#PATH_WAV a\n#WAV06 before.wav\n#PATH_WAV other\n#WAV07 c.wav\n"
              "#BMPFZ D:\\d.bmp\n#PATH_WAV=end\\\n#BMP01 e.bmp\n#WAV01 second.wav\n"));
    CBMS chart(nullptr, nullptr);
    ASSERT_EQ(chart.Load(file.Path().c_str(), 0), 2);
    std::string names;
    for (int i = 0; i < BMS_SLOTS; ++i) {
        if (chart.m_aszWav[i][0]) names += std::to_string(i) + " " + chart.m_aszWav[i] + "\n";
    }
    for (int i = 0; i < BMS_SLOTS; ++i) {
        if (chart.m_aszBmp[i][0]) names += std::to_string(i) + " " + chart.m_aszBmp[i] + "\n";
    }
    const std::string dir = file.Folder();
    EXPECT_EQ(names, "1 end\\second.wav\n4 " + dir + " x y.wav \n5 " + dir + "a\n6 " + dir +
                         "before.wav\n7 other\\c.wav\n35 " + dir + "last.wav\n0 " + dir +
                         "zero.bmp\n1 end\\e.bmp\n575 other\\D:\\d.bmp\n");
}

TEST(Reader, PathsBeyondTheBufferAreCut) {
    const std::string name(1000, 'n'), dir(1000, 'd');
    auto chart = LoadChart(Lines("#WAV01 " + name + "\n#PATH_WAV " + dir + "\n#WAV02 a.wav\n#BMP02 a.bmp\n"));
    ASSERT_TRUE(chart);
    EXPECT_EQ(std::strlen(chart->m_aszWav[1]), 259u);
    EXPECT_EQ(chart->m_aszWav[2], dir.substr(0, 259));
    EXPECT_EQ(chart->m_aszBmp[2], dir.substr(0, 259));
}

TEST(Reader, PictureDefinitions) {
    const int32_t most = INT32_MAX, least = INT32_MIN;
    const struct {
        const char* line;
        int number;
        BgaDef def;
    } rows[] = {
        {"#BGA01 01 0 0 9 9 0 0", 1, {}},  // 21 characters
        {"#BGA01 01 0 0 9 9 0 00", 1, {0, 0, 9, 9, 0, 0, 1}},
        {"#bgazz FZ 0 0 10 20 -30 -40", 1295, {0, 0, 10, 20, -30, -40, 575}},
        {"#BGA01 02 -5 -6 300 300 0 0", 1, {0, 0, 256, 256, 0, 0, 2}},
        {"#BGA01 02 10 20 300 200 0 0", 1, {10, 20, 266, 200, 0, 0, 2}},
        {"#BGA01 02 10 20 5 6 0 0    ", 1, {10, 20, 5, 6, 0, 0, 2}},
        {"#BGA01 02 1  2 3 4 5 6 7", 1, {1, 2, 2, 3, 4, 5, 2}},  // two blanks: a number read twice
        {"#BGA01 02  1 2 3 4 5 6 ", 1, {1, 1, 2, 3, 4, 5, 2}},
        {"#BGA01 02x1 2          ", 1, {1, 2, 0, 0, 0, 0, 2}},
        {"#BGA01 02 9999999999999", 1, {most, 0, 0, 0, 0, 0, 2}},
        {"#BGA01 02 1 2 3 4 xxxxx", 1, {1, 2, 3, 4, 0, 0, 2}},
        {"#BGA01-02 1 2 3 4 5 66", 1, {}},
        {"#BGA00 02 1 2 3 4 5 66", 0, {1, 2, 3, 4, 5, 66, 2}},
        {"#BGA01 Z1 2147483647 -2147483648 -2147483648 2147483647 1 1", 1, {most, 0, least, 256, 1, 1, 1}},
    };
    for (const auto& row : rows) {
        auto chart = LoadChart(row.line);
        ASSERT_TRUE(chart);
        const BgaDef& def = chart->m_aBgaDef[row.number];
        EXPECT_EQ(0, std::memcmp(&def, &row.def, sizeof def))
            << row.line << " gives " << def.nX1 << ' ' << def.nY1 << ' ' << def.nX2 << ' ' << def.nY2 << ' '
            << def.nDX << ' ' << def.nDY << ' ' << def.nBmp;
    }
}

TEST(Reader, LoadsImagesThenSoundsInRisingOrder) {
    recorder::Clear();
    const ChartFile file(
        Lines("#WAV02 b.wav\n#WAV01 a.wav\n#BMP01 b.bmp\n#BMP00 a.bmp\n#WAV02 c.wav\n#00111:0102"));
    recorder::SetPictures({"b.bmp"});
    CBMS chart(recorder::Display(), recorder::Sound());
    const std::string d = file.Folder();
    ASSERT_EQ(chart.Load(file.Path().c_str(), 0), 3);
    std::string opened = "open " + file.Path() + "\n";
    for (const char* name : {"a.bmp", "b.bmp", "a.wav", "a.wav", "c.wav", "c.wav"})
        opened += "open " + d + name + "\n";  // a sound by the loader of each kind
    EXPECT_EQ(recorder::Take(), opened);
    for (const int slot : {1, 2}) EXPECT_EQ(recorder::Sound()->m_pSlot[slot]->m_bStream, 0);
    // A slot that was filled is emptied first.
    CBMS again(recorder::Display(), recorder::Sound());
    ASSERT_EQ(again.Load(file.Path().c_str(), 0), 3);
    EXPECT_EQ(recorder::TakeOnly("end"), "end 1\nend 2\n");
    recorder::Clear();
}

TEST(Reader, SaysWhichFileCannotBeOpenedAndLeavesTheChartAlone) {
    const ChartFile file("#TITLE a");
    CBMS chart(nullptr, nullptr);
    std::snprintf(chart.m_aszWav[1], BMS_PATH, "kept");
    for (const std::string& path : {file.Folder() + "none.bms", file.Folder(), std::string("\\dev\\zero"),
                                    std::string(), file.Folder() + std::string(5000, 'x')}) {
        headless::Reset();
        EXPECT_EQ(chart.Load(path.c_str(), 0), 0);
        EXPECT_EQ(headless::Log(), ("CBMS::Load -> LoadError=" + path + "\n").substr(0, 259));
    }
    EXPECT_STREQ(chart.m_aszWav[1], "kept");
}

TEST(Reader, RefusesAFileBeyondItsBound) {
    const ChartFile file("#00111:01");
    std::string path = file.Path();
    std::replace(path.begin(), path.end(), '\\', '/');
    ASSERT_EQ(truncate(path.c_str(), BMS_FILE_LIMIT + 1), 0);  // a hole: it takes no room
    CBMS chart(nullptr, nullptr);
    EXPECT_EQ(chart.Load(file.Path().c_str(), 0), 0);
    EXPECT_EQ(chart.m_nNote, 0);
}

TEST(Reader, AMeasureBaseNeverLeavesTheTable) {
    const ChartFile file(Lines("#00111:01\n#00511:0101"));
    const struct { int32_t base, notes; } rows[] = {{INT32_MIN, 0}, {-2, 2}, {1, 3}, {3, 1}, {INT32_MAX, 0}};
    for (const auto& row : rows) {
        CBMS chart(nullptr, nullptr);
        ASSERT_EQ(chart.Load(file.Path().c_str(), row.base), 7);
        EXPECT_EQ(chart.m_nNote, row.notes) << row.base;
        EXPECT_EQ(chart.Compile(), 0);
    }
}

}  // namespace
