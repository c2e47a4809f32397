// Another chart by double click, menu, drop and command.
#include "chart/bms.h"
#include "display/ddraw.h"
#include "shell_test.h"
#include "sound/dsbuffer.h"
#include "sound/dsound.h"

namespace {

using namespace headless;

class Reload : public test::ShellTest {
protected:
    Reload() : next_(folder_.Path("other/next.bme")) {
        folder_.Write("other/one.wav", test::SquareWav(4000));
        folder_.Write("other/one.bmp", test::Bmp(4, 4, 0x123456));
        WriteChart("other/next.bme", test::Chart({"#TITLE next", "#BPM 60", "#WAV05 one.wav",
                                                  "#BMP02 one.bmp", "#00105:01", "#00111:05", "#00411:05"}));
    }
    const std::string next_;
};

TEST_F(Reload, EveryRoadReplacesTheChart) {
    const std::pair<const char*, Action> roads[] = {{"double click", DoubleClick(10, 10)},
                                                    {"command", Remote(WM_REMOTE_LOAD)},
                                                    {"menu", WantMenu(10, 10)},
                                                    {"drop", Drop(next_)}};
    for (const auto& [name, action] : roads) {
        SCOPED_TRACE(name);
        const bool dialog = std::string(name) != "drop";
        Fresh();
        CDSound* pSound = nullptr;
        At(1000, Remote(WM_REMOTE_SPEED, 250));
        At(2500, Call([&pSound] {
               pSound = g_pDSound;
               g_pDDraw->ClearParts(LAYER_BGA, 0xFFFFFF);
           }));
        At(2500, action);
        if (std::string(name) == "menu") At(2600, ChooseMenu(IDM_LOAD));
        if (dialog) At(3000, ChooseFile(next_));
        At(3100, Call([&pSound] {
               EXPECT_EQ(test::StateName(), "Running");
               EXPECT_EQ(g_dwPauseTime, 0u);
               EXPECT_EQ(Titles().back(), "-(no genre)- next  [(no artist)] ");
               EXPECT_EQ(g_pDSound->m_pSlot[1], nullptr);
               EXPECT_NE(g_pDSound->m_pSlot[5], nullptr);
               EXPECT_NE(g_pDDraw->m_apDib[2], nullptr);
               EXPECT_EQ(g_nBarCount, 6);
               EXPECT_EQ(g_dBPM, 60.0);
               // Settings stay and layers are cleared.
               EXPECT_EQ(g_pDSound, pSound);
               EXPECT_EQ(g_fSpeed, 250 * 0.01f);
               EXPECT_EQ(g_dwSeekTime, 4999);  // 1000 ms, one measure of four seconds, less one
               EXPECT_EQ(ShownPicture().pixels[50 * SCREEN_WIDTH + LAYER_X + 200], 0u);
           }));
        At(3200, Key(test::kEscape));
        EXPECT_EQ(Run(dialog ? "-P -N1 " : "-N1 "), 0);
        EXPECT_EQ(Titles().at(Titles().size() - 2), "Now Initializing & Loading...");
        ASSERT_EQ(FileDialogs().size(), dialog ? 1u : 0u);
        for (const FileDialog& shown : FileDialogs()) EXPECT_EQ(shown.folder, folder_.Path());
    }
}

TEST_F(Reload, AStartMeasureBeyondTheNewChartKeepsTheOldSeekTime) {
    WriteChart("short.bms", test::Chart({"#BPM 240", "#00111:05"}));
    At(100, DoubleClick());
    At(200, ChooseFile(folder_.Path("short.bms")));
    At(300, Call([] {
           EXPECT_EQ(g_nBarCount, 3);
           EXPECT_EQ(g_dwSeekTime, 6999);
       }));
    At(350, Key(test::kEscape));
    EXPECT_EQ(Run("-N3 "), 0);
}

TEST_F(Reload, FailuresSayTheirOwnWordsAndEndWithZero) {
    WriteChart("zero.bms", test::Chart({"#00011:01"}));
    const char* rows[][2] = {{"gone.bms", "FileLoadError!"}, {"zero.bms", "FileCompileError!"}};
    for (const auto& [name, caption] : rows) {
        SCOPED_TRACE(name);
        Fresh();
        uint64_t frames = 0;
        At(1000, DoubleClick());
        At(1100, Call([&frames] { frames = FrameCount(); }));
        At(1100, ChooseFile(folder_.Path(name)));
        // No command finds a chart to act on inside the box.
        for (const uint32_t message : {1126, 1127, 1128, 1129, 1130, 1134}) At(1200, Remote(message, 1));
        At(1300, AnswerBox());
        EXPECT_EQ(Run("-P "), 0);
        ExpectOneBox(test::TempFolder::Backslashes(folder_.Path(name)), caption);
        EXPECT_EQ(FrameCount(), frames);
        EXPECT_EQ(FileDialogs().size(), 1u);
    }
}

}  // namespace
