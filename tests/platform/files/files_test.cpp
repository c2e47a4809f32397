#include "platform/files/files.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <vector>

#include "platform/files/listing.h"
#include "platform/files/pathmatch.h"
#include "support/tempfolder.h"

using test::TempFolder;

namespace {

// The file's content, or "<none>".
std::string Content(const std::string& name) {
    FileStream* pFile = FileOpen(name.c_str(), "rb");
    if (!pFile) return "<none>";
    char abBuffer[64];
    const size_t n = FileRead(abBuffer, 1, sizeof(abBuffer), pFile);
    FileClose(pFile);
    return std::string(abBuffer, n);
}

class Files : public testing::Test {
protected:
    void SetUp() override { FileForgetListings(); }
    std::string Named(const std::string& name) const { return folder.Path() + "\\" + name; }
    TempFolder folder;
};

// The name on disk, and the one asked for.
TEST_F(Files, NamesFindTheirFiles) {
    const std::pair<const char*, const char*> rows[] = {
        {"a.wav", "a.wav"},
        {"Kick.WAV", "kick.wav"},
        {"sub/Deep/b.wav", "SUB\\deep\\B.wav"},
        {"sub2/c.wav", "sub2/c.wav"},
        {"sub3/c.wav", "\\sub3\\\\c.wav"},
        {"\xE8\xA1\xA8.wav", "\x95\x5C.wav"},  // CP932 with a backslash as second byte, UTF-8 on disk
        {"\xE3\x82\xBD\xE3\x83\xBC.wav", "\x83\x5C\x81\x5B.wav"},
        {"\x83\x5C\x83\x5C.wav", "\x83\x5C\x83\x5C.WAV"},          // CP932 on both sides
        {"\x95\x5C\x8E\xA6.wav", "\xE8\xA1\xA8\xE7\xA4\xBA.wav"},  // UTF-8 for CP932 on disk
        {"\xE3\x81\x82/d.wav", "\xE3\x81\x82\\d.wav"},             // the byte before the separator could lead
        {"\xE6\x9B\xB2/\xE8\xA1\xA8/e.wav", "\xE6\x9B\xB2\\\x95\x5C\\e.wav"},
        {"\xE3\x81\x8B\xE3\x82\x99.wav", "\xE3\x81\x8C.wav"},  // decomposed on disk
        {"\xE3\x83\x8F\xE3\x82\x9A.wav", "\x83\x70.WAV"},
        {"\xE3\x81\x94.wav", "\xE3\x81\x93\xE3\x82\x99.wav"},  // decomposed in the chart
        {"caf\xC3\xA9.wav", "CAFE\xCC\x81.wav"},
        {"\xEF\xBC\xA1.wav", "\x82\x81.wav"},          // full-width letters in other case
        {"wave\xE3\x80\x9C.wav", "wave\x81\x60.wav"},  // the wave dash of the other custom
        {"\xEA\xB0\x80.wav", "\xE1\x84\x80\xE1\x85\xA1.wav"},
        {"\xB1\xB2\xB3.wav", "\xB1\xB2\xB3.WAV"},
        {" x .wav", " X .wav"},
        {"50%#1.wav", "50%#1.WAV"},
    };
    for (const auto& [disk, name] : rows) folder.Write(disk, disk);
    for (const auto& [disk, name] : rows) EXPECT_EQ(Content(Named(name)), disk) << name;
}

TEST_F(Files, LookAlikes) {
    for (const char* psz : {"X.wav", "x.WAV", "x.wav", "s.waV", "Sound/other.wav", "sound/a.wav", "a/b.wav"})
        folder.Write(psz, psz);
    std::filesystem::create_directories(folder.Path("S.wav"));
    std::filesystem::create_symlink("nowhere", folder.Path("s.Wav"));
    TempFolder other;
    const std::string elsewhere = "a\\" + TempFolder::Backslashes(other.Write("secret.wav", "secret"));
    const std::pair<std::string, const char*> rows[] = {
        {"x.wav", "x.wav"},       {"X.wav", "X.wav"},
        {"X.WAV", "X.wav"},                                         // the first in the order of bytes
        {"s.wav", "s.waV"},       {"Sound\\a.wav", "sound/a.wav"},  // neither folder nor dead link
        {"b.wav", "<none>"},      {"a\\..\\b.wav", "<none>"},       // nothing is found elsewhere
        {"SECRET.WAV", "<none>"}, {elsewhere, "<none>"}};
    for (const auto& [name, content] : rows) EXPECT_EQ(Content(Named(name)), content) << name;
}

// Folders whose names differ from the file's in letter case alone come before it.
TEST_F(Files, TriesSixtyFourNames) {
    for (const int before : {61, 62, 90}) {  // two more go to the name as it stands
        FileForgetListings();
        for (int i = 0; i <= before; ++i) {
            std::string name = "abcdefg" + std::to_string(before);
            for (int bit = 0; bit < 7; ++bit)
                if (~i >> (6 - bit) & 1) name[static_cast<size_t>(bit)] -= 32;
            if (i < before)
                std::filesystem::create_directory(folder.Path(name));
            else
                folder.Write(name, "found");
        }
        const std::string name = Named("ABCdefg" + std::to_string(before));
        EXPECT_EQ(Content(name), before < 62 ? "found" : "<none>");
        EXPECT_EQ(SiblingPaths(name, {""}).size(), static_cast<size_t>(std::min(before + 1, 64)));
    }
}

TEST_F(Files, RefusesWhatIsNoReadableFile) {
    constexpr uid_t kNobody = 65534;
    std::filesystem::create_directories(folder.Path("folder.wav"));
    ASSERT_EQ(mkfifo(folder.Path("fifo.wav").c_str(), 0600), 0);
    std::filesystem::create_symlink("nowhere", folder.Path("link.wav"));
    std::filesystem::create_symlink("loop.wav", folder.Path("loop.wav"));
    for (const char* name : {"file", "secret.wav", "big"}) folder.Write(name, "x");
    chmod(folder.Path().c_str(), 0755);
    chmod(folder.Path("secret.wav").c_str(), 0);
    ASSERT_EQ(truncate(folder.Path("big").c_str(), INT64_C(0x80000000)), 0);  // a hole: it takes no room
    const bool root = geteuid() == 0;                                         // who reads everything
    ASSERT_EQ(root ? seteuid(kNobody) : 0, 0);
    std::string opened;
    for (const char* name : {"folder.wav", "fifo.wav", "FIFO.wav", "link.wav", "loop.wav", "none.wav",
                             "secret.wav", "big", "file\\x", "none\\..\\file", ".", ".."})
        if (Content(Named(name)) != "<none>") opened += name;
    EXPECT_EQ(Content(Named("FILE")), "x");
    ASSERT_EQ(root ? seteuid(0) : 0, 0);
    for (const char* name : {"\\dev\\null", "\\dev\\zero", "", "\\"})
        if (Content(name) != "<none>") opened += name;
    EXPECT_EQ(opened, "");
    EXPECT_EQ(FileOpen(nullptr, "rb"), nullptr);
    EXPECT_EQ(FileOpen((folder.Path() + "/file").c_str(), "wb"), nullptr);
    EXPECT_EQ(FileOpen((folder.Path() + "/file").c_str(), nullptr), nullptr);
    ASSERT_EQ(truncate(folder.Path("big").c_str(), INT64_C(0x7FFFFFFF)), 0);
    FileStream* pFile = FileOpen(Named("big").c_str(), "rb");
    ASSERT_NE(pFile, nullptr);
    EXPECT_EQ(FileSeek(pFile, 0, SEEK_END), 0);
    EXPECT_EQ(FileTell(pFile), INT64_C(0x7FFFFFFF));
    FileClose(pFile);
}

TEST_F(Files, LongNamesEndCleanly) {
    for (const size_t n : {255u, 256u, 4000u, 5000u, 100000u}) {
        std::string deep = folder.Path();
        while (deep.size() < n) deep += "\\d";
        EXPECT_EQ(Content(Named(std::string(n, 'x'))) + Content(deep + "\\a.wav"), "<none><none>");
    }
}

TEST_F(Files, RelativeNames) {
    folder.Write("Rel/a.wav", "rel");
    const auto before = std::filesystem::current_path();
    for (const auto& [inside, name] : {std::pair{".", "rel\\A.wav"},
                                       {".", ".\\rel\\A.wav"},
                                       {"Rel", "A.WAV"},
                                       {"Rel", "..\\REL\\a.wav"}}) {
        std::filesystem::current_path(folder.Path(inside));
        FileForgetListings();
        EXPECT_EQ(Content(name), "rel") << name;
    }
    std::filesystem::current_path(before);
}

TEST_F(Files, EachFolderIsListedOnceUntilForgotten) {
    for (int i = 0; i < 100; ++i) folder.Write("S" + std::to_string(i) + ".WAV", "x");
    for (int i = 0; i < 100; ++i) EXPECT_EQ(Content(Named("s" + std::to_string(i) + ".wav")), "x");
    EXPECT_EQ(FoldersRead(), 1u);
    folder.Write("Late.wav", "late");
    EXPECT_EQ(Content(Named("late.wav")), "<none>");
    FileForgetListings();
    EXPECT_EQ(FoldersRead(), 0u);
    EXPECT_EQ(Content(Named("late.wav")), "late");
}

// Every mix of reads and seeks gives what the standard library gives.
TEST_F(Files, StreamsAsTheStandardLibraryDoes) {
    std::string bytes;
    for (int i = 0; i < 20000; ++i) bytes += static_cast<char>(i * 31 >> 3);
    const std::string path = folder.Write("s.bin", bytes);
    FILE* pReference = std::fopen(path.c_str(), "rb");
    FileStream* pFile = FileOpen(path.c_str(), "rb");
    ASSERT_TRUE(pReference && pFile);
    uint32_t nRandom = 1;
    const auto Next = [&](uint32_t nBelow) {
        nRandom = nRandom * 1664525 + 1013904223;
        return (nRandom >> 8) % nBelow;
    };
    std::vector<char> a(30000), b(30000);
    for (int i = 0; i < 3000; ++i) {
        if (Next(3) == 0) {
            const int nWhence = static_cast<int>(Next(3));
            const long nOffset = static_cast<long>(Next(24000)) - (nWhence ? 12000 : 2000);
            EXPECT_EQ(FileSeek(pFile, nOffset, nWhence) == 0, std::fseek(pReference, nOffset, nWhence) == 0);
        } else {
            const size_t nSize = 1 + Next(4), nCount = Next(2) ? Next(20) : Next(6000);
            ASSERT_EQ(FileRead(a.data(), nSize, nCount, pFile),
                      std::fread(b.data(), nSize, nCount, pReference));
            ASSERT_EQ(a, b) << i;
        }
        ASSERT_EQ(FileTell(pFile), std::ftell(pReference)) << i;
    }
    EXPECT_EQ(FileRead(a.data(), SIZE_MAX / 2, 3, pFile), 0u);
    EXPECT_EQ(FileSeek(pFile, 0, 7), -1);
    EXPECT_EQ(FileClose(pFile), 0);
    std::fclose(pReference);
}

}  // namespace
