#include "playback/player.h"

namespace {

class Frame : public Player {};

// At 3750 BPM a pixel is a millisecond, and a measure is 64 of both: measure 0 is on line L at 735 + L.
const std::string kPixel = "#BPM 3750\n";

TEST_F(Frame, PaintsFromTheSkinUp) {
    Start("#PLAYER 1\n#BPM 130\n#00101:01\n#00111:01\n#00103:82\n#00104:01\n");
    EXPECT_EQ(FrameAt(0),
              "skin 0,0\n"
              "bar 20,231 key\n0 13,225 key\n"
              "bar 20,167 key\n1 13,161 key\n"
              "bar 20,103 key\n2 13,97 key\n"
              "yellow 180,167\nwhite 85,167\nwhite 28,167\nred 97,167\n"
              "layer4 195,1\nlayer7 195,1 key\n"
              "0 224,258\ncolon 230,258\n0 236,258\n0 242,258\n"
              "0 218,269\nslash 224,269\n3 230,269\n"
              "1 285,259\n3 291,259\n0 297,259\npoint 303,259\n0 309,259\n0 315,259\n");
}

TEST_F(Frame, EveryLaneHasItsPlace) {
    std::string text = kPixel + "#PLAYER 3\n", wanted;
    const struct {
        int channel, x;
        const char* sprite;
    } lanes[] = {{11, 28, "white"}, {12, 36, "blue"},   {13, 43, "white"}, {14, 51, "blue"},
                 {15, 58, "white"}, {16, 20, "red"},    {17, 20, "red"},   {18, 66, "blue"},
                 {19, 73, "white"}, {21, 114, "white"}, {22, 122, "blue"}, {23, 129, "white"},
                 {24, 137, "blue"}, {25, 144, "white"}, {26, 167, "red"},  {27, 167, "red"},
                 {28, 152, "blue"}, {29, 159, "white"}, {31, 0, ""},       {49, 0, ""}};
    for (const auto& lane : lanes) {
        text += "#001" + std::to_string(lane.channel) + ":01\n";
        if (lane.x) wanted += std::string(lane.sprite) + " " + std::to_string(lane.x) + ",100\n";
    }
    Start(text);
    const std::string frame = FrameAt(735 + 164);
    EXPECT_NE(frame.find("key\n" + wanted + "layer4"), std::string::npos) << frame;
    EXPECT_NE(frame.find("bar 20,164 key\nbar 114,164 key\n0 13,158 key\n"), std::string::npos) << frame;
}

TEST_F(Frame, NotesAreSeenFromLine1To269) {
    Start(kPixel + "#00011:01\n#00111:00\n#00102:1\n");
    EXPECT_EQ(FrameAt(735, "white"), "");
    EXPECT_EQ(FrameAt(736, "white"), "white 28,1\n");
    EXPECT_EQ(FrameAt(999, "white"), "white 28,264\n");
    // Not done before: drawn in the frame in which it fires.
    EXPECT_EQ(FrameAt(1004, "white"), "white 28,269\n");
    EXPECT_TRUE(g_pNoteList[0].bDone);
    EXPECT_EQ(FrameAt(1004, "white"), "");
    Start(kPixel + "#00011:01\n#00102:1\n");
    EXPECT_EQ(FrameAt(1005, "white"), "");
    EXPECT_TRUE(g_pNoteList[0].bDone);
}

TEST_F(Frame, BarsAreSeenFromLine1To269AndTheirNumbersFrom7) {
    for (int line : {0, 1, 6, 7, 265, 269, 270}) {
        Start(kPixel + "#00102:1\n");
        const std::string frame = FrameAt(735 + line);
        const bool bar = line >= 1 && line <= 269, number = line >= 7 && line <= 269;
        // Measure 0 is the lowest bar, so what it draws comes first.
        std::string wanted = "skin 0,0\n";
        if (bar) wanted += "bar 20," + std::to_string(line) + " key\n";
        if (number) wanted += "0 13," + std::to_string(line - 6) + " key\n";
        EXPECT_EQ(frame.substr(0, wanted.size()), wanted) << line;
        EXPECT_EQ(frame.find("bar 20," + std::to_string(line) + " ") != std::string::npos, bar) << frame;
        EXPECT_EQ(frame.find("0 13,") != std::string::npos, number) << frame;
    }
}

TEST_F(Frame, ARecordFiresAtItsTimeABarOneLater) {
    Start(kPixel + "#WAV01 a.wav\n#00011:01\n#00001:01\n#00102:1\n");
    EXPECT_EQ(FrameAt(999, "play"), "");
    EXPECT_EQ(FrameAt(1000, "play"), "play 1\nplay 1\n");
    EXPECT_FALSE(g_pBarList[0].bDone);
    EXPECT_EQ(FrameAt(1000, "play"), "");
    EXPECT_NE(FrameAt(1001).find("bar 20,266"), std::string::npos);  // seen once more while it becomes done
    EXPECT_TRUE(g_pBarList[0].bDone);
    EXPECT_EQ(FrameAt(1001).find("bar 20,266"), std::string::npos);
}

TEST_F(Frame, WhatHasNoSoundFiresSilentlyAndInvisibleNotesNever) {
    Start(kPixel + "#WAV02 a.wav\n#00011:01\n#00031:02\n#00041:02\n#00029:02\n#00102:1\n");
    EXPECT_EQ(FrameAt(1000, "play"), "play 2\n");
    EXPECT_TRUE(g_pNoteList[0].bDone);
    EXPECT_TRUE(g_pNoteList[1].bDone);
    EXPECT_FALSE(g_pNoteList[2].bDone);
    EXPECT_FALSE(g_pNoteList[3].bDone);
    EXPECT_EQ(g_nNoteCursor, 1);  // on the record that fired last
}

TEST_F(Frame, AGapFiresAllThatIsDueInOrder) {
    std::string text = kPixel;
    for (int i = 1; i <= 9; ++i) text += "#WAV0" + std::to_string(i) + " a.wav\n";
    text += "#00011:01\n#00311:0203\n#00211:0405\n#04011:06\n#05011:07\n#06011:08\n";
    Start(text);
    FrameAt(900);
    EXPECT_EQ(FrameAt(1000 + 50 * 64 + 5, "play"),
              "play 1\nplay 4\nplay 5\nplay 2\nplay 3\nplay 6\nplay 7\n");
    EXPECT_EQ(g_nNoteCursor, 6);
    EXPECT_EQ(g_pAnchor, g_pBarList + 50);
    EXPECT_EQ(FrameAt(1000 + 50 * 64 + 5, "play"), "");
}

TEST_F(Frame, ATempoShowsAtOnceAndScrollsFromTheNextFrame) {
    Start("#BPM 120\n#00003:00F0\n#00102:1\n");
    FrameAt(1999);
    EXPECT_EQ(g_dBPM, 120.0);
    EXPECT_EQ(g_dPixelsPerSec, 32.0);
    const std::string frame = FrameAt(2000);
    EXPECT_NE(frame.find("yellow 180,265"), std::string::npos);
    EXPECT_NE(frame.find("2 285,259\n4 291,259\n0 297,259\n"), std::string::npos);
    EXPECT_EQ(g_dPixelsPerSec, 32.0);
    EXPECT_EQ(g_pAnchor, g_pTempoList);
    EXPECT_EQ(g_pBarList[1].nChannel, 297 - 64);
    FrameAt(2010);
    EXPECT_EQ(g_dPixelsPerSec, 64.0);
    EXPECT_EQ(g_pTempoList[0].nChannel, 265);  // 265 + trunc(0.64)
    EXPECT_EQ(g_pBarList[0].nChannel, 265 + 32);
    EXPECT_EQ(g_nBarCursor, 0);
}

TEST_F(Frame, OfTwoTemposOnOnePlaceTheLaterStays) {
    Start("#BPM 120\n#00003:F0\n#00003:64\n#00102:1\n");
    FrameAt(1000);
    EXPECT_EQ(g_dBPM, 100.0);
    EXPECT_EQ(g_pAnchor, g_pTempoList + 1);  // tempos are walked behind the bars
    Start("#BPM 120\n#00003:F0\n#00003:0G\n#00102:1\n");
    FrameAt(1001);
    EXPECT_EQ(g_dBPM, 240.0);
    EXPECT_EQ(g_pAnchor, g_pTempoList + 1);
}

TEST_F(Frame, PicturesDrawIntoTheirLayersAndClearAtTheEnd) {
    recorder::SetPictures({"a.bmp"});
    Start(kPixel +
          "#BMP01 a.bmp\n#BGA02 01 0 0 50 40 -10 0\n#00004:01\n#00007:02\n#00006:03\n#00105:01\n#00102:1\n");
    const std::string frame = FrameAt(1000);
    EXPECT_NE(frame.find("clear 4 0\ndraw 4 78,0,178,80 0,0,100,80\n"), std::string::npos) << frame;
    EXPECT_NE(frame.find("clear 7 0\ndraw 7 0,0,40,40 10,40,50,80\n"), std::string::npos) << frame;
    EXPECT_NE(frame.find("clear 6 0\n"), std::string::npos) << frame;
    EXPECT_EQ(g_nBgaCursor, 2);
    for (int i = 0; i < 3; ++i) EXPECT_TRUE(g_pBgaList[i].bDone);
    EXPECT_EQ(FrameAt(1128, "clear"), "");  // the end itself is still inside
    const std::string last = FrameAt(1129);
    const size_t copied = last.find("layer7 195,1 key\n");
    const size_t cleared = last.find("clear 4 0\nclear 6 0\nclear 7 0\n");
    ASSERT_NE(copied, std::string::npos);
    ASSERT_NE(cleared, std::string::npos);
    EXPECT_LT(copied, cleared);
}

TEST_F(Frame, TheChartEndsStandingAtItsStart) {
    Start(kPixel + "#WAV01 a.wav\n#00011:01\n#00111:01\n", 1);
    EXPECT_EQ(g_dwSeekTime, 1063);
    EXPECT_EQ(FrameAt(1064, "play"), "play 1\n");
    FrameAt(1129);
    EXPECT_EQ(g_bPaused, 1);
    EXPECT_EQ(g_dwSeekTime, 1063);
    EXPECT_EQ(g_dwStartTime, g_dwNowTime);
    headless::AdvanceClock(5'000'000'000);
    PlayFrame();
    EXPECT_EQ(recorder::TakeOnly("play"), "");
    EXPECT_FALSE(g_pNoteList[1].bDone);
    EXPECT_EQ(g_pBarList[1].nChannel, 264);
    g_bPaused = 0;
    g_dwStartTime = timeGetTime();
    EXPECT_EQ(FrameAt(1064, "play"), "play 1\n");
}

TEST_F(Frame, APausedClockStandsStill) {
    Start(kPixel + "#WAV01 a.wav\n#00011:01\n#00102:1\n");
    FrameAt(990);
    g_bPaused = 1;
    EXPECT_EQ(FrameAt(1010, "play"), "");
    EXPECT_EQ(g_pBarList[0].nChannel, 255);
    g_bPaused = 0;
    EXPECT_EQ(FrameAt(1010, "play"), "play 1\n");
}

TEST_F(Frame, TheClockMayWrap) {
    Start(kPixel + "#WAV01 a.wav\n#00011:01\n#00102:1\n");
    g_dwStartTime = 0xFFFFFF00u;
    headless::SetClock(uint64_t{1000 - 0x100} * 1'000'000);
    PlayFrame();
    EXPECT_EQ(recorder::TakeOnly("play"), "play 1\n");
}

TEST_F(Frame, ABarAboveTheScreenKeepsItsOldLine) {
    Start(kPixel + "#01011:01\n");
    FrameAt(1000);
    EXPECT_EQ(g_pBarList[4].nChannel, 9);
    EXPECT_EQ(g_pBarList[5].nChannel, -55);
    EXPECT_EQ(g_pBarList[6].nChannel, 0);  // from the seek
    FrameAt(1010);
    EXPECT_EQ(g_pBarList[5].nChannel, -45);
    EXPECT_EQ(g_pBarList[6].nChannel, 0);
}

TEST_F(Frame, AfterASeekTheCounterStandsOnTheLastTempo) {
    Start("#BPM 120\n#00203:78\n#01111:01\n", 9);
    EXPECT_EQ(g_pAnchor, g_pTempoList);
    g_bPaused = 1;
    const std::string frame = FrameAt(g_dwSeekTime);
    EXPECT_NE(frame.find("\n2 224,269\nslash 230,269\n1 236,269\n3 242,269\n"), std::string::npos) << frame;
    g_bPaused = 0;
    EXPECT_NE(FrameAt(g_dwSeekTime + 2).find("\n9 224,269\nslash"), std::string::npos);
}

TEST_F(Frame, SpeedActsOnTheNextFrame) {
    Start(kPixel + "#00102:1\n");
    FrameAt(965);
    EXPECT_EQ(g_pBarList[1].nChannel, 230 - 64);
    g_fSpeed = 2.0f;
    FrameAt(965);
    EXPECT_EQ(g_pBarList[0].nChannel, 265 - 70);
    EXPECT_EQ(g_pBarList[1].nChannel, 265 - 70 - 128);
}

// What no chart means, but a file can hold: all of it is defined, and nothing comes due.
TEST_F(Frame, NumbersBeyondAllRangesAreHeld) {
    for (const char* text :
         {"#BPM 1e308\n#00011:01\n#00111:01\n", "#BPM 1e-308\n#00011:01\n#00111:01\n",
          "#00002:1e308\n#00011:00010101\n#00111:01\n#00103:01\n", "#BPM 1e-300\n#00002:1e308\n#00111:01\n",
          "#BPM01 1e308\n#BPM02 1e-308\n#00008:01020102\n#00111:0101\n#00211:01\n",
          "#00002:99999999999\n#00111:01\n#00103:0001\n"}) {
        for (float speed : {0.01f, 1.0f, 1e30f}) {
            g_fSpeed = speed;
            Start(text);
            for (int32_t time : {0, 1000, 1001, 500000, INT32_MAX}) FrameAt(time);
            for (int32_t i = 0; i < g_nBarCount; ++i) EXPECT_GE(g_pBarList[i].nTime, 1000) << text;
        }
    }
    g_fSpeed = 1.0f;
    Start("#00002:1e300\n#00111:01\n");
    EXPECT_EQ(g_pBarList[1].nTime, INT32_MAX);
    EXPECT_EQ(FrameAt(INT32_MAX - 1, "play"), "");
    EXPECT_FALSE(g_pNoteList[0].bDone);
}

TEST_F(Frame, WorksWithoutDevices) {
    g_pDDraw = nullptr;
    g_pDSound = nullptr;
    Start(kPixel + "#WAV01 a.wav\n#BMP01 a.bmp\n#00011:01\n#00004:01\n#00107:01\n");
    FrameAt(1000);
    EXPECT_TRUE(g_pNoteList[0].bDone);
    EXPECT_TRUE(g_pBgaList[0].bDone);
    FrameAt(1129);
    EXPECT_EQ(g_bPaused, 1);
    EXPECT_EQ(recorder::Take(), "");
}

}  // namespace
