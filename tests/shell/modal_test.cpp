// Commands that arrive while a box, a dialog or the menu has the thread.
#include <gtest/gtest.h>

#include <string>

#include "fresh.h"
#include "playback/playback.h"
#include "small_chart.h"

namespace {

using headless::At;
using headless::Call;
using headless::Key;
using headless::Remote;

enum class Modal { kAbout, kDialog, kMenu };
constexpr Modal kModals[] = {Modal::kAbout, Modal::kDialog, Modal::kMenu};
constexpr const char* kNames[] = {"about box", "dialog", "menu"};

std::string StateName() {
    if (g_bPlaying) return g_bPaused ? "Ended" : "Running";
    if (g_bPaused) return g_dwPauseTime ? "Paused" : "Idle";
    return "Held";
}

class ModalTest : public testing::Test {
protected:
    ModalTest() : chart_(test::WriteChart(folder_)) {}

    // Opens it at 2000 ms of a run; closes it, as if cancelled, at 4000.
    void Script(Modal modal) {
        test::FreshProgram();
        if (modal == Modal::kDialog) {
            At(2000, headless::DoubleClick());
            At(4000, headless::CancelFile());
            return;
        }
        At(2000, headless::WantMenu(5, 5));
        if (modal == Modal::kMenu) {
            At(4000, headless::DismissMenu());
        } else {
            At(2100, headless::ChooseMenu(IDM_ABOUT));
            At(4000, headless::AnswerBox());
        }
    }
    void Expect(uint64_t ms, const std::string& state, const std::string& where) {
        At(ms, Call([=] { EXPECT_EQ(StateName(), state) << where << " at " << ms; }));
    }
    void Run(const std::string& options, const std::string& where) {
        At(5000, Key(27));
        EXPECT_EQ(test::RunLine(options + chart_), 0) << where;
        EXPECT_EQ(headless::Faults(), std::vector<std::string>{}) << where;
        EXPECT_EQ(headless::ActionsLeft(), 0u) << where;
    }

    test::TempFolder folder_;
    const std::string chart_;
};

TEST_F(ModalTest, EachCommandInsideEach) {
    const struct {
        const char* name;
        uint32_t message;
        int64_t wparam;
        const char *inside, *behind;
    } rows[] = {{"nothing", 1224 + 1, 0, "Held", "Running"}, {"1126", 1126, 0, "Held", "Running"},
                {"1127", 1127, 0, "Held", "Running"},        {"1128", 1128, 0, "Running", "Running"},
                {"1129", 1129, 1, "Running", "Running"},     {"1130", 1130, 200, "Held", "Running"},
                {"1224", 1224, 0, "Held", "Running"}};
    for (const Modal modal : kModals) {
        for (const auto& row : rows) {
            const std::string where = std::string(row.name) + " in the " + kNames[static_cast<int>(modal)];
            Script(modal);
            Expect(2500, "Held", where);
            At(3000, Remote(row.message, row.wparam));
            Expect(3500, row.inside, where);
            Expect(4500, row.behind, where);
            Run("-P ", where);
            EXPECT_EQ(g_nStartMeasure, row.message == 1129 ? 1 : -1) << where;
            EXPECT_EQ(g_fSpeed, row.message == 1130 ? 200 * 0.01f : 1.0f) << where;
            EXPECT_EQ(g_bHost, row.message == 1224 ? 1 : 0) << where;
        }
    }
}

TEST_F(ModalTest, APauseOfTheUserSurvivesEach) {
    for (const Modal modal : kModals) {
        const std::string where = kNames[static_cast<int>(modal)];
        Script(modal);
        At(1500, Key(32));
        Expect(2500, "Paused", where);
        Expect(4500, "Paused", where);
        Run("-P ", where);
    }
}

TEST_F(ModalTest, ResumedAndStoppedInsideEach) {
    for (const Modal modal : kModals) {
        const std::string where = kNames[static_cast<int>(modal)];
        Script(modal);
        At(1500, Key(32));
        At(2500, Remote(WM_REMOTE_PLAY));
        Expect(2600, "Running", where);
        At(3000, Remote(WM_REMOTE_STOP));
        Expect(3100, "Paused", where);
        Expect(4500, "Paused", where);
        Run("-P ", where);
    }
}

TEST_F(ModalTest, AnEndedChartIsPausedByBoxAndMenuButNotByTheDialog) {
    for (const Modal modal : kModals) {
        const std::string where = kNames[static_cast<int>(modal)];
        Script(modal);
        At(1900, Call([] { g_dwStartTime -= 20'000; }));  // the end comes with the next frame
        Expect(1990, "Ended", where);
        const char* state = modal == Modal::kDialog ? "Ended" : "Paused";
        Expect(2500, state, where);
        Expect(4500, state, where);
        Run("-P ", where);
    }
}

TEST_F(ModalTest, IdleStaysIdleInEach) {
    for (const Modal modal : kModals) {
        const std::string where = kNames[static_cast<int>(modal)];
        Script(modal);
        Expect(2500, "Idle", where);
        Expect(4500, "Idle", where);
        Run("", where);
    }
}

TEST_F(ModalTest, AQuitInsideEachEndsTheProgram) {
    for (const Modal modal : kModals) {
        const std::string where = kNames[static_cast<int>(modal)];
        test::FreshProgram();
        if (modal == Modal::kDialog) {
            At(2000, headless::DoubleClick());
        } else {
            At(2000, headless::WantMenu(5, 5));
            if (modal == Modal::kAbout) At(2100, headless::ChooseMenu(IDM_ABOUT));
        }
        uint64_t frames = 0;
        At(3000, Call([&frames] { frames = headless::FrameCount(); }));
        At(3000, Remote(WM_REMOTE_QUIT));
        EXPECT_EQ(test::RunLine("-P " + chart_), 0) << where;
        EXPECT_EQ(headless::FrameCount(), frames) << where;
        EXPECT_EQ(headless::Now(), 3000u) << where;
        EXPECT_EQ(g_pDSound, nullptr);
    }
}

TEST_F(ModalTest, AWindowDestroyedInsideEachIsTheEnd) {
    for (const Modal modal : kModals) {
        const std::string where = kNames[static_cast<int>(modal)];
        test::FreshProgram();
        if (modal == Modal::kDialog) {
            At(2000, headless::DoubleClick());
        } else {
            At(2000, headless::WantMenu(5, 5));
            if (modal == Modal::kAbout) At(2100, headless::ChooseMenu(IDM_ABOUT));
        }
        At(3000, Call([] { PostMessageA(g_hWnd, WM_CLOSE, 0, 0); }));
        At(3000, Remote(WM_REMOTE_RESTART));
        EXPECT_EQ(test::RunLine("-P " + chart_), 0) << where;
        EXPECT_EQ(headless::Now(), 3000u) << where;
        EXPECT_EQ(g_pBMS, nullptr);
        EXPECT_FALSE(headless::TheWindow().open);
    }
}

TEST_F(ModalTest, LoadInsideEach) {
    folder_.Write("next.bms", test::Chart({"#TITLE next", "#00111:05"}));
    for (const Modal modal : kModals) {
        const std::string where = kNames[static_cast<int>(modal)];
        Script(modal);
        At(2500, Remote(WM_REMOTE_LOAD));
        At(3000, headless::ChooseFile(folder_.Path("next.bms")));
        At(3100,
           Call([&] { EXPECT_EQ(headless::Titles().back(), "-(no genre)- next  [(no artist)] ") << where; }));
        Expect(3100, "Running", where);
        Expect(4500, "Running", where);
        Run("-P ", where);
        EXPECT_EQ(headless::FileDialogs().size(), modal == Modal::kDialog ? 2u : 1u) << where;
    }
}

TEST_F(ModalTest, ADialogWithinADialogReplacesTheChartTwice) {
    folder_.Write("inner.bms", test::Chart({"#TITLE inner", "#00111:05"}));
    folder_.Write("outer.bms", test::Chart({"#TITLE outer", "#00211:05"}));
    test::FreshProgram();
    At(2000, headless::DoubleClick());
    At(2100, Remote(WM_REMOTE_LOAD));
    At(2200, headless::ChooseFile(folder_.Path("inner.bms")));
    At(2300, Remote(WM_REMOTE_RESTART));
    At(2400, headless::ChooseFile(folder_.Path("outer.bms")));
    Expect(2500, "Running", "");
    Run("", "");
    EXPECT_EQ(headless::Titles().back(), "-(no genre)- outer  [(no artist)] ");
}

TEST_F(ModalTest, AFailureWithinADialogEndsBoth) {
    test::FreshProgram();
    At(2000, headless::DoubleClick());
    At(2100, Remote(WM_REMOTE_LOAD));
    At(2200, headless::ChooseFile(folder_.Path("gone.bms")));
    At(2300, Remote(WM_REMOTE_RESTART));
    At(2400, headless::AnswerBox());
    EXPECT_EQ(test::RunLine("-P " + chart_), 0);
    EXPECT_EQ(headless::Now(), 2400u);
    EXPECT_EQ(headless::Boxes().size(), 1u);
    EXPECT_EQ(headless::FileDialogs().size(), 2u);
}

TEST_F(ModalTest, AFloodOfLoadsOpensFewDialogs) {
    test::FreshProgram();
    for (int i = 0; i < 500; ++i) At(2000, Remote(WM_REMOTE_LOAD));
    At(2100, Call([] { EXPECT_EQ(headless::FileDialogs().size(), 4u); }));
    for (int i = 0; i < 4; ++i) At(2200, headless::CancelFile());
    Expect(2300, "Running", "");
    Run("-P ", "");
    EXPECT_EQ(headless::FileDialogs().size(), 4u);
}

TEST_F(ModalTest, CommandsKeepTheirOrderInsideEach) {
    for (const Modal modal : kModals) {
        const std::string where = kNames[static_cast<int>(modal)];
        Script(modal);
        for (int i = 0; i < 500; ++i) {
            At(3000, Remote(WM_REMOTE_SEEK, i % 3));
            At(3000, Remote(WM_REMOTE_SPEED, 10 + i));
        }
        At(3000, Remote(WM_REMOTE_HOST));
        At(3000, Remote(WM_REMOTE_SEEK, 0));  // deaf by now, for good
        At(4500, Remote(WM_REMOTE_QUIT));
        Run("-P ", where);
        EXPECT_EQ(g_nStartMeasure, 499 % 3) << where;
        EXPECT_EQ(g_fSpeed, 509 * 0.01f) << where;
        EXPECT_GE(headless::Now(), 5000u) << where;
    }
}

TEST_F(ModalTest, TheMenuAndTheAboutBox) {
    Script(Modal::kAbout);
    Run("-P ", "");
    ASSERT_EQ(headless::Menus().size(), 1u);
    const auto& items = headless::Menus()[0].items;
    ASSERT_GE(items.size(), 4u);
    const auto* own = &items[items.size() - 4];
    EXPECT_EQ(own[0].id, 0);
    EXPECT_EQ(own[1].id, 257);
    EXPECT_EQ(own[1].text, "&Load");
    EXPECT_EQ(own[2].id, 0);
    EXPECT_EQ(own[3].id, 256);
    EXPECT_EQ(own[3].text, "&About...");
    ASSERT_EQ(headless::Boxes().size(), 1u);
    EXPECT_EQ(headless::Boxes()[0].text, "Lumetra 0.04");
    EXPECT_EQ(headless::Boxes()[0].caption, "VersionInfo");
    EXPECT_EQ(headless::Boxes()[0].icon, host::BoxIcon::kInformation);
}

}  // namespace
