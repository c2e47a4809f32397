#include "platform/window/dialog.h"

#include <gtest/gtest.h>

#include <cstring>

#include "platform/files/files.h"
#include "platform/window/window.h"
#include "support/program.h"
#include "support/tempfolder.h"

using namespace headless;
using test::TempFolder;

namespace {

constexpr char kFilter[] = "BMS(BME)File(*.bms|*.bme)\0*.bms;*.bme\0";

class Dialog : public testing::Test {
protected:
    void SetUp() override {
        test::ResetProgram();
        before = std::filesystem::current_path();
        open.lStructSize = 76;
        open.lpstrFilter = kFilter;
        open.nFilterIndex = 1;
        open.lpstrFile = szFile;
        open.nMaxFile = sizeof(szFile);
        open.lpstrTitle = "Open BMS(BME) file";
        open.lpstrDefExt = "BMS";
    }
    void TearDown() override { std::filesystem::current_path(before); }
    // Where a dialog begins, which is then cancelled.
    std::string Beginning() {
        At(0, CancelFile());
        EXPECT_FALSE(GetOpenFileNameA(&open));
        return FileDialogs().empty() ? "no dialog" : FileDialogs().back().folder;
    }
    OPENFILENAME open{};
    char szFile[260] = "";
    TempFolder folder;
    std::filesystem::path before;
};

TEST_F(Dialog, ShowsTextsAsUtf8) {
    At(0, AnswerBox());
    At(0, Key(13));
    At(0, Key(27));
    EXPECT_EQ(MessageBoxA(nullptr, "\x95\x5C.bms", "FileLoadError!", MB_ICONEXCLAMATION), IDOK);
    EXPECT_EQ(MessageBoxA(nullptr, "Lumetra 0.04", "VersionInfo", MB_ICONINFORMATION), IDOK);
    EXPECT_EQ(MessageBoxA(nullptr, nullptr, nullptr, MB_OK), IDOK);
    ASSERT_EQ(Boxes().size(), 3u);
    EXPECT_EQ(Boxes()[0].text, "表.bms");
    EXPECT_EQ(Boxes()[0].icon, host::BoxIcon::kWarning);
    EXPECT_EQ(Boxes()[1].caption, "VersionInfo");
    EXPECT_EQ(Boxes()[1].icon, host::BoxIcon::kInformation);
    EXPECT_EQ(Boxes()[2].icon, host::BoxIcon::kNone);
    EXPECT_TRUE(Faults().empty());
    MessageBoxA(nullptr, "text", "nobody answers", MB_OK);
    EXPECT_EQ(Faults().size(), 1u);
}

TEST_F(Dialog, GivesTheChosenFile) {
    const std::string path = folder.Write("song.bme", "chart");
    At(10, ChooseFile(path));
    ASSERT_TRUE(GetOpenFileNameA(&open));
    EXPECT_EQ(szFile, TempFolder::Backslashes(path));
    EXPECT_STREQ(szFile + open.nFileOffset, "song.bme");
    EXPECT_STREQ(szFile + open.nFileExtension, "bme");
    const FileDialog& dialog = FileDialogs()[0];
    EXPECT_EQ(dialog.title, "Open BMS(BME) file");
    EXPECT_EQ(dialog.filter.name, "BMS(BME)File(*.bms|*.bme)");
    EXPECT_EQ(dialog.filter.patterns, "*.bms;*.bme");
    EXPECT_EQ(dialog.folder, "");
    EXPECT_EQ(Beginning(), folder.Path());
    AnswerNextOpenDialog(folder.Write("next/drop.bms", "chart").c_str());
    ASSERT_TRUE(GetOpenFileNameA(&open));
    EXPECT_STREQ(szFile + open.nFileOffset, "drop.bms");
    EXPECT_EQ(Beginning(), folder.Path("next"));  // a dropped file answers once
    // A dropped folder: its only chart, or where the dialog opens, once.
    AnswerNextOpenDialog(folder.Path("next").c_str());
    ASSERT_TRUE(GetOpenFileNameA(&open));
    EXPECT_STREQ(szFile + open.nFileOffset, "drop.bms");
    folder.Write("next/SECOND.PMS", "chart");
    AnswerNextOpenDialog(folder.Path("next").c_str());
    At(0, ChooseFile(path));
    ASSERT_TRUE(GetOpenFileNameA(&open));
    EXPECT_EQ(FileDialogs().back().folder + FileDialogs().back().name, folder.Path("next"));
    EXPECT_EQ(Beginning(), folder.Path());
    open.nMaxFile = 3;
    At(0, ChooseFile("/abc"));
    EXPECT_FALSE(GetOpenFileNameA(&open));
}

TEST_F(Dialog, ADefaultExtensionForATypedName) {
    folder.Write("plain", "x");
    const std::pair<const char*, const char*> kRows[] = {
        {"song", "song.BMS"}, {"song.", "song."}, {"plain", "plain"}, {"s.bme", "s.bme"}};
    for (const auto& [chosen, taken] : kRows) {
        At(0, ChooseFile(folder.Path(chosen)));
        ASSERT_TRUE(GetOpenFileNameA(&open));
        EXPECT_EQ(szFile, TempFolder::Backslashes(folder.Path(taken)));
    }
}

TEST_F(Dialog, WrongRequests) {
    At(0, ChooseFile("/a"));
    open.lStructSize = 88;
    EXPECT_FALSE(GetOpenFileNameA(&open));
    open.lStructSize = 76;
    open.Flags = 1;
    EXPECT_FALSE(GetOpenFileNameA(&open));
    open.Flags = 0;
    open.lpstrDefExt = nullptr;
    open.nMaxFile = 3;  // no room even for "\a" and its end
    At(0, ChooseFile("/abc"));
    EXPECT_TRUE(GetOpenFileNameA(&open));
    EXPECT_FALSE(GetOpenFileNameA(&open));
    EXPECT_FALSE(GetOpenFileNameA(nullptr));
}

TEST_F(Dialog, LongPathsAreHandedOverShort) {
    std::string deep = folder.Path();
    for (int i = 0; i < 9; ++i) deep += "/" + std::string(100, static_cast<char>('a' + i));
    std::filesystem::create_directories(deep);
    for (const std::string& file : {std::string("x.bms"), std::string(251, 'n') + ".bms"}) {
        std::ofstream(deep + "/" + file) << "chart";
        At(0, ChooseFile(deep + "/" + file));
        ASSERT_TRUE(GetOpenFileNameA(&open));
        EXPECT_LT(std::strlen(szFile), 60u);
        FileStream* pFile = FileOpen(szFile, "rb");
        EXPECT_NE(pFile, nullptr);
        FileClose(pFile);
    }
    EXPECT_EQ(Beginning(), deep);
    RememberOpenedFile(szFile);
    EXPECT_EQ(Beginning(), deep);
}

TEST_F(Dialog, RemembersTheFolderOfAName) {
    folder.Write("Songs/\xE8\xA1\xA8.bms", "chart");
    RememberOpenedFile(TempFolder::Backslashes(folder.Path("songs/\x95\x5C.BMS")).c_str());
    EXPECT_EQ(Beginning(), folder.Path("Songs"));
}

TEST_F(Dialog, AQuitClosesWhatIsOpenAndWhatComes) {
    At(5, Call([] { PostQuitMessage(0); }));
    At(9, AnswerBox());
    EXPECT_EQ(MessageBoxA(nullptr, "a", "b", MB_OK), IDOK);
    EXPECT_EQ(Now(), 5u);
    EXPECT_FALSE(Boxes()[0].answered);
    EXPECT_EQ(MessageBoxA(nullptr, "a", "b", MB_OK), IDOK);
    EXPECT_EQ(Boxes().size(), 1u);
    EXPECT_FALSE(GetOpenFileNameA(&open));
    EXPECT_TRUE(FileDialogs().empty());
    MSG msg;
    EXPECT_TRUE(PeekMessageA(&msg, nullptr, 0, 0, PM_NOREMOVE));
    EXPECT_EQ(msg.message, WM_QUIT);
}

}  // namespace
