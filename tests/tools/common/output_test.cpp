// Which files the tools write, and how.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <thread>

#include "common/output.h"
#include "common/output_rules.h"
#include "support/tempfolder.h"

namespace {

namespace fs = std::filesystem;
using tools::FileKind;

class Outputs : public testing::Test {
protected:
    void SetUp() override {
        folder_.Write("input", "RIFF....WAVE");
        fs::create_symlink("input", folder_.Path("link"));
        fs::create_hard_link(folder_.Path("input"), folder_.Path("hard"));
        folder_.Write("empty.wav", "");
        folder_.Write("sound.wav", "RIFF....WAVEfmt ");
        folder_.Write("chart.txt", "#00111:01");
        folder_.Write("trace.txt", "frame 0 0 0 0 120.00\n");
        fs::create_symlink("new.wav", folder_.Path("dangling"));
        mkfifo(folder_.Path("fifo").c_str(), 0600);
    }
    test::TempFolder folder_;
};

// Asking for the mask while other threads make files would give those other modes.
TEST_F(Outputs, HaveTheModeOfTheMaskAtTheStart) {
    const mode_t mask = umask(0777);
    tools::Output out;
    struct stat status = {};
    EXPECT_TRUE(out.Open(folder_.Path("new.wav")) && stat(out.path().c_str(), &status) == 0);
    umask(mask);
    EXPECT_EQ(status.st_mode & 0777, 0666 & ~mask);
}

TEST_F(Outputs, AreRefusedOverInputsAndOtherKinds) {
    const struct {
        const char* name;
        FileKind kind;
        const char *plain, *forced;  // part of the reason; null: allowed
    } rows[] = {
        {"input", FileKind::kWav, "input", "input"},
        {"./link", FileKind::kWav, "input", "input"},
        {"hard", FileKind::kWav, "input", "input"},
        {"new.wav", FileKind::kWav, nullptr, nullptr},
        {"empty.wav", FileKind::kWav, nullptr, nullptr},
        {"sound.wav", FileKind::kWav, nullptr, nullptr},
        {"sound.wav", FileKind::kXa, "exists and is not an XA file", nullptr},
        {"chart.txt", FileKind::kTrace, "exists and is not a trace", nullptr},
        {"trace.txt", FileKind::kTrace, nullptr, nullptr},
        {"x.MP3", FileKind::kWav, "not named .mp3", "not named .mp3"},
        {"x.bms", FileKind::kTrace, "not named .bms", "not named .bms"},
        {"fifo", FileKind::kPng, nullptr, nullptr},
        {"/dev/null", FileKind::kVideo, nullptr, nullptr},
    };
    for (const auto& row : rows) {
        for (const bool force : {false, true}) {
            tools::OutputRules rules(force);
            rules.Protect(folder_.Path("input"));
            std::string why;
            const std::string name = row.name[0] == '/' ? row.name : folder_.Path(row.name);
            const char* expected = force ? row.forced : row.plain;
            EXPECT_EQ(rules.Allow(name, row.kind, &why), expected == nullptr) << row.name << " " << force;
            EXPECT_NE(why.find(expected ? expected : ""), why.npos) << why;
        }
    }
    tools::OutputRules rules(false);
    std::string why;
    EXPECT_TRUE(rules.Allow(folder_.Path("new.wav"), FileKind::kWav, &why));
    EXPECT_FALSE(rules.Allow(folder_.Path("dangling"), FileKind::kTrace, &why)) << "the same file twice";
}

// Long zeros are a hole in a file and bytes in a pipe; at the end of a file, too.
TEST_F(Outputs, ZerosAreZerosEverywhere) {
    std::string got[2];
    for (const int fifo : {0, 1}) {
        const std::string name = folder_.Path(fifo ? "fifo" : "zeros");
        std::thread reader([&] { got[1] = fifo ? test::ReadFile(name) : ""; });
        {
            tools::Output out;
            EXPECT_TRUE(out.Open(name) && out.Write("a", 1) && out.WriteZeros(200'000) && out.Write("b", 1) &&
                        out.WriteZeros(7) && out.WriteZeros(300'000) && out.Commit())
                << out.error();
        }
        reader.join();
        if (!fifo) got[0] = test::ReadFile(name);
    }
    EXPECT_TRUE(got[0] == "a" + std::string(200'000, '\0') + "b" + std::string(300'007, '\0'));
    EXPECT_TRUE(got[1] == got[0]);
}

TEST_F(Outputs, ReplaceWholeFilesThroughLinksAndWritePipesInPlace) {
    fs::permissions(folder_.Path("input"), fs::perms::owner_read | fs::perms::owner_write);
    const struct {
        const char *name, *file;
        bool commit;
    } rows[] = {{"link", "input", false}, {"link", "input", true}, {"dangling", "new.wav", true}};
    for (const auto& row : rows) {
        for (const bool program : {false, true}) {
            const std::string before = test::ReadFile(folder_.Path(row.file));
            const size_t entries = std::distance(fs::directory_iterator(folder_.Path()), {});
            {
                tools::Output out;
                const std::string name = folder_.Path(row.name), text = program ? "by another" : "own";
                ASSERT_TRUE(program ? out.OpenForProgram(name) : out.Open(name)) << out.error();
                if (program) std::ofstream(out.path()) << text;
                ASSERT_TRUE(program || out.Write(text.data(), text.size()));
                EXPECT_EQ(test::ReadFile(folder_.Path(row.file)), before);
                EXPECT_TRUE(!row.commit || out.Commit());
                EXPECT_EQ(test::ReadFile(folder_.Path(row.file)), row.commit ? text : before);
            }
            EXPECT_TRUE(fs::is_symlink(folder_.Path(row.name)));
            EXPECT_LE(std::distance(fs::directory_iterator(folder_.Path()), {}), entries + 1u) << "litter";
        }
    }
    EXPECT_EQ(fs::status(folder_.Path("input")).permissions(),
              fs::perms::owner_read | fs::perms::owner_write);

    for (const bool program : {false, true}) {
        std::string got;
        std::thread reader([&] { got = test::ReadFile(folder_.Path("fifo")); });
        tools::Output out;
        EXPECT_TRUE(program ? out.OpenForProgram(folder_.Path("fifo")) : out.Open(folder_.Path("fifo")));
        if (program) std::ofstream(out.path()) << "piped";
        EXPECT_TRUE((program || out.Write("piped", 5)) && out.Commit()) << out.error();
        if (!program) out.~Output(), new (&out) tools::Output;
        reader.join();
        EXPECT_EQ(got, "piped");
        EXPECT_TRUE(fs::is_fifo(folder_.Path("fifo")));
    }
}

}  // namespace
