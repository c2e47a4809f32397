// What is made of files is made once, kept while the files stay the same, and bounded for a chart as a whole.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "host/headless/headless.h"
#include "platform/files/files.h"
#include "platform/open.h"
#include "platform/substitutes/kept.h"
#include "platform/substitutes/picture.h"
#include "platform/substitutes/substitute.h"
#include "support/tempfolder.h"

namespace {

// One of the stored inputs of the fuzz targets.
std::string Stored(const std::string& path) {
    std::ifstream file(FUZZ_INPUTS "/" + path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST(Door, AFileIsConvertedAgainOnlyWhenItChanged) {
    test::TempFolder folder;
    const auto decoded = [&] {
        return MakeSubstitute({folder.Path("a.flac")}, MediaKind::kSound, {}).bDecoded;
    };
    const std::string file = Stored("fuzz_sound_file/flac");
    folder.Write("a.flac", file);
    EXPECT_TRUE(decoded());
    EXPECT_FALSE(decoded());
    folder.Write("a.flac", file);  // the same size
    EXPECT_TRUE(decoded());
    folder.Write("a.flac", "fLaC, damaged");
    const Substitute refused = MakeSubstitute({folder.Path("a.flac")}, MediaKind::kSound, {});
    EXPECT_EQ(refused.refused, std::vector<std::string>{folder.Path("a.flac")});
}

// Names that differ by their letter case alone lead to one file. A thread that waits for memory holds no
// other up.
TEST(Door, ThreadsThatNeedTheSameFileDecodeItOnce) {
    test::TempFolder folder;
    folder.Write("a.flac", Stored("../../platform/substitutes/data/silence_95s.flac"));
    const std::string path = folder.Path("a.flac");
    std::atomic<int> decoded{0}, begun{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (++begun; begun < 4;) std::this_thread::yield();
            decoded += MakeSubstitute({path}, MediaKind::kSound, {}).bDecoded;
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(decoded, 1);

    folder.Write("a.flac", Stored("fuzz_sound_file/flac"));
    const auto other_decodes = [&](size_t) {
        return MakeSubstitute({path}, MediaKind::kSound, {}).pBytes != nullptr;
    };
    EXPECT_NE(MakeSubstitute({path}, MediaKind::kSound, {other_decodes}).pBytes, nullptr);
}

TEST(Door, WhatIsKeptIsBoundedAndTheLastUsedStays) {
    const auto bytes = [](size_t n) {
        auto block = std::make_shared<ByteBlock>();
        block->Resize(n);
        return Conversion{block, n};
    };
    const auto file = [](const std::string& path) { return FileIdentity(path, {}); };
    KeptConversions kept(10'000);
    Conversion found;
    for (const std::string path : {"a", "b", "c"}) kept.Add(file(path), bytes(3000));
    EXPECT_TRUE(kept.Find(file("a"), &found));
    kept.Add(file("d"), bytes(3000));
    EXPECT_TRUE(kept.Find(file("a"), &found) && kept.Find(file("c"), &found));
    EXPECT_FALSE(kept.Find(file("b"), &found));
    kept.Add(file("e"), bytes(20'000));
    EXPECT_FALSE(kept.Find(file("e"), &found));
    EXPECT_LE(kept.Bytes(), 10'000u);
}

// One picture of 48 MiB on hundreds of slots: 1 GiB holds 21 of them, at every load.
TEST(Door, PicturesOfAChartAreBoundedTogether) {
    test::TempFolder folder;
    std::string gif = Stored("fuzz_picture_file/gif");
    folder.Write("bg.gif", gif.replace(6, 4, std::string("\0\x10\0\x10", 4)));  // a screen of 4,096 by 4,096
    const std::string name = folder.Path("bg.bmp");
    const std::vector<const char*> names(100, name.c_str());
    for (int load = 0; load < 2; ++load) {
        headless::Reset();
        FileForgetListings();
        FilesExpect(FILES_PICTURES, names.data(), static_cast<int>(names.size()));
        const auto opens = std::count_if(names.begin(), names.end(), [](const char* each) {
            FileStream* file = FileOpen(each, "rb");
            return file && FileClose(file) == 0;
        });
        FilesExpectNoMore();
        EXPECT_EQ(opens, 21) << load;
        EXPECT_EQ(headless::Log(),
                  "Files: bg.bmp not there, bg.gif stands for it\n"
                  "Files: bg.bmp is beyond what the pictures of one chart may take; it and "
                  "others are left out\n");
    }
}

TEST(Door, WorkOfDecodingIsBounded) {
    std::string jpeg("\xFF\xD8\xFF\xC2\0\x0B\x08\x10\0\x10\0\x01\x01\x11\0", 15);  // 4,096 by 4,096
    for (int i = 0; i < 480; ++i) jpeg += std::string("\xFF\xDA\0\x08\x01\x01\0\0\0\0\x55\xFF\0\x55", 14);
    const uint64_t work = PictureWork(reinterpret_cast<const BYTE*>(jpeg.data()), jpeg.size());
    EXPECT_EQ(work, uint64_t{480} * 3 * 4096 * 4096);
    jpeg += std::string("\xFF\xC0\0\x0B\x08\0\x01\0\x01", 9);  // what looks like another frame
    EXPECT_EQ(PictureWork(reinterpret_cast<const BYTE*>(jpeg.data()), jpeg.size()), work);
    jpeg[3] = '\xCA';  // arithmetic coding
    EXPECT_EQ(PictureWork(reinterpret_cast<const BYTE*>(jpeg.data()), jpeg.size()), work);
    Budget budget;
    EXPECT_TRUE(budget.Spend(MediaKind::kPicture, "a", work, true));
    EXPECT_TRUE(budget.Spend(MediaKind::kPicture, "a", work, false)) << "made once";
    EXPECT_FALSE(budget.Spend(MediaKind::kPicture, "b", work, true));
    // A sound's work is known afterwards: the last one may go beyond.
    EXPECT_TRUE(budget.Spend(MediaKind::kSound, "c", kMostSoundWork - 1, true));
    EXPECT_TRUE(budget.Spend(MediaKind::kSound, "d", kMostSoundWork, true));
    EXPECT_FALSE(budget.Spend(MediaKind::kSound, "e", 1, true));
}

// A progressive picture of one block in that many scans: those after the first refine one coefficient each.
std::string JpegInScans(int scans) {
    std::string file = Stored("fuzz_picture_file/jpeg");
    file[file.find("\xFF\xC0") + 1] = '\xC2';
    file.resize(file.find("\xFF\xDA"));
    for (int i = 0; i < scans; ++i) {
        const int coefficient = (i + 9) / 10, bit = i > 0 ? 9 - (i - 1) % 10 : 0;
        file += std::string("\xFF\xDA\0\x08\x01\x01\0", 7) + std::string(2, static_cast<char>(coefficient));
        file += static_cast<char>(i > 0 && bit < 9 ? (bit + 1) << 4 | bit : bit);
        file += i > 0 ? '\xAF' : '\x3F';  // nothing there
    }
    return file + "\xFF\xD9";
}

TEST(Door, PicturesOfManyScansAreRefused) {
    const auto taken = [](const std::string& file) {
        ByteBlock bmp;
        return PictureToBmp(reinterpret_cast<const BYTE*>(file.data()), file.size(), &bmp);
    };
    EXPECT_TRUE(taken(JpegInScans(400)));
    EXPECT_FALSE(taken(JpegInScans(600)));
}

// Made files are there while a load needs them; films are told of once, where charts are compiled.
TEST(Door, AChartMakerBringsFilesAndTellsOfFilms) {
    test::TempFolder folder;
    folder.Write("a.bms", "chart");
    for (const char* film : {"a.mpg", "b.AVI"}) folder.Write(film, "film, long enough");
    const std::string chart = folder.Path("a.bms"), made = folder.Path("made.wav");
    const std::string names[] = {folder.Path("a.mpg"), folder.Path("b.AVI")};
    const auto opens = [](const std::string& name) {
        FileStream* file = FileOpen(name.c_str(), "rb");
        return file && FileClose(file) == 0;
    };
    const auto open_pictures = [&] {
        const char* list[] = {names[0].c_str(), names[1].c_str()};
        FilesExpect(FILES_PICTURES, list, 2);
        for (const std::string& name : names) EXPECT_TRUE(opens(name));
        FilesExpectNoMore();
    };
    headless::Reset();
    FileForgetListings();
    open_pictures();
    EXPECT_EQ(headless::Log(), "");
    SetChartMaker([&](const std::string&, const ByteBlock&) {
        RegisterFile(made, [](const MayHold&, ByteBlock* bytes) { return bytes->Resize(9); });
        return SharedBytes();
    });
    EXPECT_EQ(FileClose(FileOpenAsNamed(chart.c_str())), 0);
    open_pictures();
    EXPECT_EQ(headless::Log(), "Files: a.mpg is a film; films are not shown\n");
    const char* sound = made.c_str();
    FilesExpect(FILES_SOUNDS, &sound, 1);
    EXPECT_TRUE(opens(made));
    FilesExpectNoMore();
    EXPECT_FALSE(opens(made));
    SetChartMaker(nullptr);
}

}  // namespace
