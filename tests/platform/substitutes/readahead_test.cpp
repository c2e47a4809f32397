// Reading ahead changes nothing that can be seen: order, results and log.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "host/headless/headless.h"
#include "platform/files/files.h"
#include "platform/substitutes/readahead.h"
#include "support/tempfolder.h"

namespace {

std::string Content(const std::string& name) {
    FileStream* file = FileOpen(name.c_str(), "rb");
    if (!file) return "none";
    std::string bytes(size_t{1} << 20, '\0');
    bytes.resize(FileRead(bytes.data(), 1, bytes.size(), file));
    FileClose(file);
    return bytes;
}

class Ahead : public testing::Test {
protected:
    // Sounds of several lengths, some missing, some damaged, some there under their names, some named twice.
    void SetUp() override {
        for (int i = 0; i < 60; ++i) {
            const std::string stem = "s" + std::to_string(i);
            const std::string flac =
                test::ReadFile(PACKAGES_DATA "/tone" + std::string(1, "1268"[i % 4]) + ".flac");
            if (i % 7 == 3) folder.Write(stem + ".wav", "its own");
            if (i % 5 != 2) folder.Write(stem + ".flac", i % 11 == 4 ? flac.substr(0, 30) : flac);
            names.push_back(folder.Path(stem + ".wav"));
            if (i % 13 == 6) names.push_back(names[names.size() / 2]);
        }
    }
    void Expect() {
        std::vector<const char*> list;
        for (const std::string& name : names) list.push_back(name.c_str());
        FilesExpect(FILES_SOUNDS, list.data(), static_cast<int>(list.size()));
    }
    // Each opened twice, as a loader does it.
    std::string LoadAll() {
        std::string all;
        for (const std::string& name : names) all += Content(name).substr(0, 32) + Content(name);
        return all + headless::Log();
    }

    test::TempFolder folder;
    std::vector<std::string> names;
};

TEST_F(Ahead, GivesWhatOneFileAtATimeGives) {
    headless::Reset();
    FileForgetListings();
    const std::string alone = LoadAll();
    for (int round = 0; round < 5; ++round) {
        headless::Reset();
        FileForgetListings();
        Expect();
        EXPECT_TRUE(LoadAll() == alone) << round;
    }
    FilesExpectNoMore();
}

TEST_F(Ahead, ListsMayEndOrBeReplacedAtAnyTime) {
    for (size_t opened = 0; opened < names.size(); opened += 7) {
        FileForgetListings();
        Expect();
        for (size_t i = 0; i < opened; ++i) Content(names[i]);
        if (opened % 2) FilesExpectNoMore();
        Expect();
        Content(names[opened]);
    }
    FilesExpectNoMore();
}

// More than the 64 MiB that may wait: threads wait for the reader, and the reader for none that waits for it.
TEST_F(Ahead, LargeSoundsComeInTurn) {
    const std::string large = test::ReadFile(PACKAGES_DATA "/silence_95s.flac");  // 16 MiB each
    names.clear();
    for (int i = 0; i < 12; ++i) {
        folder.Write("large" + std::to_string(i) + ".flac", large);
        names.push_back(folder.Path("large" + std::to_string(i) + ".wav"));
    }
    std::swap(names[3], names[9]);
    FileForgetListings();
    Expect();
    std::swap(names[5], names[7]);  // not in the order of the list
    for (const std::string& name : names) EXPECT_EQ(Content(name).substr(0, 4), "RIFF");
    FilesExpectNoMore();
}

// Made ones wait in 64 MiB. One whose size is known only afterwards may go beyond, in each of eight threads.
TEST(AheadOfTheReader, MemoryIsBounded) {
    for (const bool asks : {true, false}) {
        std::atomic<int> made = 0;
        const auto make = [&](const MayHold& mayHold) {
            auto bytes = std::make_shared<ByteBlock>();
            auto result = std::make_shared<Substitute>();
            bytes->Resize(size_t{24} << 20);
            if (asks && mayHold && !mayHold(bytes->Size())) return result;
            result->pBytes = bytes;
            ++made;
            return result;
        };
        ReadAhead ahead([&](const auto&, auto) { return make; });
        std::vector<std::string> names;
        for (int i = 0; i < 30; ++i) names.push_back(std::to_string(i));
        ahead.Expect(MediaKind::kSound, names);
        ahead.Take(names[0]);  // made by the reader
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        EXPECT_LE(made, asks ? 1 + 2 : 1 + 3 + 7);
    }
}

// A package whose files are all there has no threads.
TEST_F(Ahead, ThreadsComeOnlyWithTheFirstConversion) {
    ReadAhead ahead([](const std::string& name, MediaKind kind) -> ReadAhead::Make {
        const std::vector<std::string> paths = SubstitutePaths(name, kind);
        if (paths.empty()) return nullptr;
        return [=](const MayHold&) { return std::make_shared<Substitute>(MakeSubstitute(paths, kind, {})); };
    });
    ahead.Expect(MediaKind::kSound, names);
    EXPECT_EQ(ahead.ThreadsStarted(), 0u);
    EXPECT_EQ(ahead.Take(folder.Path("s2.wav")).pMade->path, "");
    EXPECT_EQ(ahead.ThreadsStarted(), 0u) << "nothing stands for this one";
    EXPECT_EQ(ahead.Take(folder.Path("s5.wav")).pMade->path, folder.Path("s5.flac"));
    EXPECT_EQ(ahead.ThreadsStarted() > 0, std::thread::hardware_concurrency() > 1);
}

}  // namespace
