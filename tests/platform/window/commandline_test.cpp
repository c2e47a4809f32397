#include "platform/window/commandline.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <vector>

#include "platform/files/files.h"
#include "platform/window/dialog.h"
#include "support/program.h"
#include "support/tempfolder.h"

using test::TempFolder;

namespace {

std::string Line(const std::vector<std::string>& arguments) {
    std::vector<const char*> argv = {"lumetra"};
    for (const std::string& argument : arguments) argv.push_back(argument.c_str());
    return BuildCommandLine(static_cast<int>(argv.size()), argv.data());
}

class CommandLine : public testing::Test {
protected:
    void SetUp() override {
        test::ResetProgram();
        before = std::filesystem::current_path();
        std::filesystem::current_path(folder.Path());
        name = TempFolder::Backslashes(std::filesystem::current_path().string());
    }
    void TearDown() override { std::filesystem::current_path(before); }
    TempFolder folder;
    std::string name;  // of the working directory, as the system writes it
    std::filesystem::path before;
};

TEST_F(CommandLine, Rows) {
    folder.Write("a b.bms", "x");
    folder.Write("back\\slash.bms", "x");
    const std::string native = std::filesystem::current_path().string();
    const std::pair<std::vector<std::string>, std::string> kRows[] = {
        {{}, ""},
        {{"-P", "/M1.5", "-"}, "-P /M1.5 -"},
        {{"/?"}, "/?"},
        {{"-P", "song.bms"}, "-P \"" + name + "\\song.bms\""},
        {{"a b.bms"}, "\"" + name + "\\a b.bms\""},
        {{"./sub/x.bms"}, "\"" + name + "\\sub\\x.bms\""},
        {{"-M", "1.5", "song.bms"}, "-M \"" + name + "\\1.5 song.bms\""},
        {{"song.bms", "-P"}, "\"" + name + "\\song.bms -P\""},
        {{"/etc"}, "\"\\etc\""},  // a slash before what is there is a path
        {{"/no-such-file-here"}, "/no-such-file-here"},
        {{"/no/such/file.bms"}, "\"\\no\\such\\file.bms\""},
        {{"-N3", native + "/a b.bms"}, "-N3 \"" + name + "\\a b.bms\""},
        {{name + "\\a b.bms"}, "\"" + name + "\\a b.bms\""},
        {{"\"a b.bms\""}, "\"" + name + "\\a b.bms\""},
        {{"", "-P", ""}, "-P"},
        {{"\x95\x5C.bms"}, "\"" + name + "\\\xE8\xA1\xA8.bms\""},
        {{"\xE3\x81\x82.bms"}, "\"" + name + "\\\xE3\x81\x82.bms\""},
    };
    for (const auto& [arguments, line] : kRows) EXPECT_EQ(Line(arguments), line);
}

// The system's own treatment of the name: at most 260 bytes, one quote off each end.
std::string TakenBySystem(const std::string& line) {
    std::string text = line.substr(line.find('"') + 1, 259);
    if (!text.empty() && text.back() == '"') text.pop_back();
    return text;
}

bool CanOpen(const std::string& path) {
    FileStream* pFile = FileOpen(path.c_str(), "rb");
    if (pFile) FileClose(pFile);
    return pFile != nullptr;
}

// Makes folders, each inside the other, until a file in the last has a path of that many bytes; gives the
// path, relative to where it began. Goes there step by step, as no single call takes such a path.
std::string DeepChart(const std::string& root, size_t bytes) {
    std::string path;
    while (root.size() + 1 + path.size() + 110 < bytes) {
        const std::string part(100, 'd');
        std::filesystem::create_directory(part);
        if (chdir(part.c_str()) != 0) std::abort();
        path += part + "/";
    }
    std::string file(bytes - root.size() - 1 - path.size() - 4, 'f');
    file += ".bms";
    std::ofstream(file) << "chart";
    std::ofstream("sound.wav") << "sound";
    return path + file;
}

TEST_F(CommandLine, PathsOfAnyLength) {
    for (const size_t bytes : {150u, 180u, 181u, 200u, 259u, 260u, 1000u, 4000u}) {
        TempFolder root;
        std::filesystem::current_path(root.Path());
        const std::string relative = DeepChart(root.Path(), bytes);
        for (const bool bAbsolute : {false, true}) {
            std::filesystem::current_path(root.Path());
            const std::string path = root.Path() + "/" + relative;
            ASSERT_EQ(path.size(), bytes);
            const std::string taken = TakenBySystem(Line({bAbsolute ? path : relative}));
            EXPECT_TRUE(CanOpen(taken)) << bytes << ' ' << taken;
            const std::string base = taken.substr(0, taken.rfind('\\') + 1);
            EXPECT_TRUE(CanOpen(base + "SOUND.wav")) << bytes << ' ' << base;
            EXPECT_LE(base.size(), 180u);
        }
        std::filesystem::current_path(folder.Path());
    }
}

// The system cuts the folder off at the last `\`, which is a byte of a name here.
TEST_F(CommandLine, ABackslashInANameOrItsFolders) {
    folder.Write("odd\\folder/sound.wav", "x");
    const std::string odd = TakenBySystem(Line({folder.Write("odd\\folder/song.bms", "x")}));
    EXPECT_TRUE(CanOpen(odd)) << odd;
    EXPECT_TRUE(CanOpen(odd.substr(0, odd.rfind('\\') + 1) + "sound.wav")) << odd;
    for (const std::string chart : {"odd\\folder/back\\slash.bms", "odd\\folder/~1.bms"}) {
        const std::string taken = TakenBySystem(Line({folder.Write(chart, "x")}));
        EXPECT_TRUE(CanOpen(taken)) << taken;
        EXPECT_TRUE(CanOpen(taken.substr(0, taken.rfind('\\') + 1) + "sound.wav")) << taken;
    }
    EXPECT_TRUE(std::filesystem::equivalent(std::filesystem::current_path(), folder.Path()));
}

TEST_F(CommandLine, DeeperThanAnyPath) {
    TempFolder root;
    std::filesystem::current_path(root.Path());
    const std::string relative = DeepChart(root.Path(), 5000);
    const std::string file = relative.substr(relative.rfind('/') + 1);
    const std::string taken = TakenBySystem(Line({file}));
    EXPECT_TRUE(CanOpen(taken)) << taken;
    EXPECT_TRUE(CanOpen(taken.substr(0, taken.rfind('\\') + 1) + "sound.wav")) << taken;
    std::filesystem::current_path(folder.Path());
}

TEST_F(CommandLine, ALongNameThatIsNotThereMeetsNoOtherFile) {
    folder.Write("x.bms", "x");
    const std::string missing = "/" + std::string(200, 'n') + "/x.bms";
    EXPECT_FALSE(CanOpen(TakenBySystem(Line({missing}))));
    EXPECT_TRUE(std::filesystem::equivalent(std::filesystem::current_path(), folder.Path()));
}

TEST_F(CommandLine, TheDialogBeginsThere) {
    folder.Write("songs/a.bms", "x");
    Line({"songs/a.bms"});
    char szFile[260] = "";
    OPENFILENAME open{};
    open.lStructSize = 76;
    open.lpstrFile = szFile;
    open.nMaxFile = sizeof(szFile);
    headless::At(0, headless::CancelFile());
    EXPECT_FALSE(GetOpenFileNameA(&open));
    ASSERT_EQ(headless::FileDialogs().size(), 1u);
    EXPECT_EQ(headless::FileDialogs()[0].folder, std::filesystem::current_path().string() + "/songs");
}

}  // namespace
