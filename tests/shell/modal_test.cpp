// Commands that arrive while a box, a dialog or the menu has the thread.
#include "shell_test.h"
#include "sound/dsbuffer.h"
#include "sound/dsound.h"

namespace {

using namespace headless;

enum class Modal { kAbout, kDialog, kMenu };
constexpr Modal kModals[] = {Modal::kAbout, Modal::kDialog, Modal::kMenu};
constexpr const char* kNames[] = {"about box", "dialog", "menu"};

class ModalTest : public test::ShellTest {
protected:
    // A fresh run in which it opens at 2000 ms.
    static void Open(Modal modal) {
        Fresh();
        At(2000, modal == Modal::kDialog ? DoubleClick() : WantMenu(5, 5));
        if (modal == Modal::kAbout) At(2100, ChooseMenu(IDM_ABOUT));
    }
    // The same, and it is closed, as if cancelled, at 4000.
    static void OpenAndClose(Modal modal) {
        Open(modal);
        const Action close[] = {AnswerBox(), CancelFile(), DismissMenu()};
        At(4000, close[static_cast<int>(modal)]);
    }
    static void Expect(uint64_t ms, const std::string& state) {
        At(ms, Call([=] {
               EXPECT_EQ(test::StateName(), state) << "at " << ms;
               CDSBuffer* const sound = g_pDSound->m_pSlot[1];
               const bool silent = !sound || !sound->IsPlaying();
               EXPECT_TRUE(silent || state == "Running") << "at " << ms;
           }));
    }
    void RunToEnd(const std::string& options = "-P ") {
        At(5000, Key(test::kEscape));
        EXPECT_EQ(Run(options), 0);
        EXPECT_EQ(Faults(), std::vector<std::string>{});
        EXPECT_EQ(ActionsLeft(), 0u);
    }
};

TEST_F(ModalTest, EachCommandInsideEach) {
    const struct {
        uint32_t message;
        int64_t wparam;
        const char* inside;
    } rows[] = {{1225, 0, "Held"},    {1126, 0, "Held"},   {1127, 0, "Held"}, {1128, 0, "Running"},
                {1129, 1, "Running"}, {1130, 200, "Held"}, {1224, 0, "Held"}};  // 1225 is no command
    for (const Modal modal : kModals) {
        for (const auto& row : rows) {
            SCOPED_TRACE(std::to_string(row.message) + " in the " + kNames[static_cast<int>(modal)]);
            OpenAndClose(modal);
            Expect(2500, "Held");
            At(3000, Remote(row.message, row.wparam));
            Expect(3500, row.inside);
            Expect(4500, "Running");
            RunToEnd();
            EXPECT_EQ(g_nStartMeasure, row.message == 1129 ? 1 : -1);
            EXPECT_EQ(g_fSpeed, row.message == 1130 ? 200 * 0.01f : 1.0f);
            EXPECT_EQ(g_bHost, row.message == 1224 ? 1 : 0);
            EXPECT_EQ(Titles().size(), 3u);
        }
    }
}

TEST_F(ModalTest, ResumedAndStoppedInsideEach) {
    for (const Modal modal : kModals) {
        SCOPED_TRACE(kNames[static_cast<int>(modal)]);
        OpenAndClose(modal);
        At(1500, Key(test::kSpace));
        Expect(2400, "Paused");
        At(2500, Remote(WM_REMOTE_PLAY));
        Expect(2600, "Running");
        At(3000, Remote(WM_REMOTE_STOP));
        Expect(3100, "Paused");
        Expect(4500, "Paused");
        RunToEnd();
    }
}

TEST_F(ModalTest, AQuitOrADestroyedWindowInsideEachIsTheEnd) {
    for (const Modal modal : kModals) {
        for (const bool quit : {true, false}) {
            SCOPED_TRACE(kNames[static_cast<int>(modal)] + std::string(quit ? " quit" : " destroyed"));
            Open(modal);
            uint64_t frames = 0;
            At(3000, Call([&] {
                   frames = FrameCount();
                   if (!quit) PostMessageA(g_hWnd, WM_CLOSE, 0, 0);
               }));
            At(3000, Remote(quit ? WM_REMOTE_QUIT : WM_REMOTE_RESTART));
            EXPECT_EQ(Run("-P "), 0);
            EXPECT_EQ(FrameCount(), frames);
            EXPECT_EQ(Now(), 3000u);
            EXPECT_EQ(g_pDSound, nullptr);
            EXPECT_EQ(g_pBMS, nullptr);
            EXPECT_EQ(TheWindow().open, quit);
        }
    }
    Reset();
}

TEST_F(ModalTest, LoadInsideEach) {
    WriteChart("next.bms", test::Chart({"#TITLE next", "#00111:05"}));
    for (const Modal modal : kModals) {
        SCOPED_TRACE(kNames[static_cast<int>(modal)]);
        OpenAndClose(modal);
        At(2500, Remote(WM_REMOTE_LOAD));
        At(3000, ChooseFile(folder_.Path("next.bms")));
        At(3100, Call([] { EXPECT_EQ(Titles().back(), "-(no genre)- next  [(no artist)] "); }));
        Expect(3100, "Running");
        Expect(4500, "Running");
        RunToEnd();
        EXPECT_EQ(FileDialogs().size(), modal == Modal::kDialog ? 2u : 1u);
    }
}

TEST_F(ModalTest, ADialogWithinADialogReplacesTheChartTwice) {
    WriteChart("inner.bms", test::Chart({"#TITLE inner", "#00111:05"}));
    WriteChart("outer.bms", test::Chart({"#TITLE outer", "#00211:05"}));
    Open(Modal::kDialog);
    At(2100, Remote(WM_REMOTE_LOAD));
    At(2200, ChooseFile(folder_.Path("inner.bms")));
    At(2300, Remote(WM_REMOTE_RESTART));
    At(2400, ChooseFile(folder_.Path("outer.bms")));
    Expect(2500, "Running");
    RunToEnd("");
    EXPECT_EQ(Titles().back(), "-(no genre)- outer  [(no artist)] ");
}

TEST_F(ModalTest, AFailureWithinADialogEndsBoth) {
    Open(Modal::kDialog);
    At(2100, Remote(WM_REMOTE_LOAD));
    At(2200, ChooseFile(folder_.Path("gone.bms")));
    At(2300, Remote(WM_REMOTE_RESTART));
    At(2400, AnswerBox());
    EXPECT_EQ(Run("-P "), 0);
    EXPECT_EQ(Now(), 2400u);
    EXPECT_EQ(Boxes().size(), 1u);
    EXPECT_EQ(FileDialogs().size(), 2u);
    Reset();
}

TEST_F(ModalTest, AFloodOfLoadsOpensFewDialogs) {
    for (int i = 0; i < 500; ++i) At(2000, Remote(WM_REMOTE_LOAD));
    At(2100, Call([] { EXPECT_EQ(FileDialogs().size(), 4u); }));
    for (int i = 0; i < 4; ++i) At(2200, CancelFile());
    Expect(2300, "Running");
    RunToEnd();
    EXPECT_EQ(FileDialogs().size(), 4u);
}

TEST_F(ModalTest, CommandsKeepTheirOrderInsideEach) {
    for (const Modal modal : kModals) {
        SCOPED_TRACE(kNames[static_cast<int>(modal)]);
        OpenAndClose(modal);
        for (int i = 0; i < 500; ++i) {
            At(3000, Remote(WM_REMOTE_SEEK, i % 3));
            At(3000, Remote(WM_REMOTE_SPEED, 10 + i));
        }
        At(3000, Remote(WM_REMOTE_HOST));
        At(3000, Remote(WM_REMOTE_SEEK, 0));  // deaf by now, for good
        At(4500, Remote(WM_REMOTE_QUIT));
        RunToEnd();
        EXPECT_EQ(g_nStartMeasure, 499 % 3);
        EXPECT_EQ(g_fSpeed, 509 * 0.01f);
        EXPECT_GE(Now(), 5000u);
    }
}

TEST_F(ModalTest, TheMenuAndTheAboutBox) {
    OpenAndClose(Modal::kAbout);
    RunToEnd();
    ASSERT_EQ(Menus().size(), 1u);
    std::string items;
    for (const host::MenuItem& item : Menus()[0].items) items += std::to_string(item.id) + item.text + " ";
    const std::string own = "0 257&Load 0 256&About... ";
    EXPECT_EQ(items.substr(items.size() - own.size()), own);
    ASSERT_EQ(Boxes().size(), 1u);
    EXPECT_EQ(Boxes()[0].text, "Lumetra 0.04");
    EXPECT_EQ(Boxes()[0].caption, "VersionInfo");
    EXPECT_EQ(Boxes()[0].icon, host::BoxIcon::kInformation);
}

}  // namespace
