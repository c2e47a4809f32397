#include "platform/files/files.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <vector>

#include "platform/files/listing.h"
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

TEST_F(Files, NamesFindTheirFiles) {
    struct {
        const char *disk, *name, *what;
    } const kRows[] = {
        {"a.wav", "a.wav", "exact"},
        {"Kick.WAV", "kick.wav", "letter case"},
        {"sub/Deep/b.wav", "SUB\\deep\\B.wav", "letter case of folders"},
        {"sub2/c.wav", "sub2/c.wav", "the other separator"},
        {"sub3/c.wav", "\\sub3\\\\c.wav", "doubled separators"},
        {"\xE8\xA1\xA8.wav", "\x95\x5C.wav", "CP932 with a backslash as second byte, UTF-8 on disk"},
        {"\xE3\x82\xBD\xE3\x83\xBC.wav", "\x83\x5C\x81\x5B.wav", "the same, two characters"},
        {"\x83\x5C\x83\x5C.wav", "\x83\x5C\x83\x5C.WAV", "CP932 on both sides"},
        {"\x95\x5C\x8E\xA6.wav", "\xE8\xA1\xA8\xE7\xA4\xBA.wav", "UTF-8 for CP932 on disk"},
        {"\xE3\x81\x82/d.wav", "\xE3\x81\x82\\d.wav", "separator behind a UTF-8 byte that could lead"},
        {"\xE6\x9B\xB2/\xE8\xA1\xA8/e.wav", "\xE6\x9B\xB2\\\x95\x5C\\e.wav", "UTF-8 folder, CP932 folder"},
        {"\xE3\x81\x8B\xE3\x82\x99.wav", "\xE3\x81\x8C.wav", "decomposed on disk"},
        {"\xE3\x83\x8F\xE3\x82\x9A.wav", "\x83\x70.WAV", "decomposed on disk for CP932"},
        {"\xE3\x81\x94.wav", "\xE3\x81\x93\xE3\x82\x99.wav", "decomposed in the chart"},
        {"caf\xC3\xA9.wav", "CAFE\xCC\x81.wav", "an accent"},
        {"\xEF\xBC\xA1.wav", "\x82\x81.wav", "full-width letters in other case"},
        {"wave\xE3\x80\x9C.wav", "wave\x81\x60.wav", "the wave dash of the other custom"},
        {"\xEA\xB0\x80.wav", "\xE1\x84\x80\xE1\x85\xA1.wav", "Hangul"},
        {"\xB1\xB2\xB3.wav", "\xB1\xB2\xB3.WAV", "half-width katakana"},
        {" x .wav", " X .wav", "blanks"},
        {"50%#1.wav", "50%#1.WAV", "signs"},
    };
    for (const auto& row : kRows) folder.Write(row.disk, row.disk);
    for (const auto& row : kRows) EXPECT_EQ(Content(Named(row.name)), row.disk) << row.what;
}

TEST_F(Files, ExactNameWins) {
    for (const char* psz : {"X.wav", "x.WAV", "x.wav"}) folder.Write(psz, psz);
    EXPECT_EQ(Content(Named("x.wav")), "x.wav");
    EXPECT_EQ(Content(Named("X.wav")), "X.wav");
    EXPECT_EQ(Content(Named("X.WAV")), "X.wav");  // the first in the order of bytes
}

TEST_F(Files, LookAlikesThatAreNoFilesAreSteppedOver) {
    std::filesystem::create_directories(folder.Path("S.wav"));
    std::filesystem::create_symlink("nowhere", folder.Path("s.Wav"));
    folder.Write("s.waV", "sound");
    EXPECT_EQ(Content(Named("s.wav")), "sound");
    FileForgetListings();
    folder.Write("Sound/other.wav", "other");
    folder.Write("sound/a.wav", "a");
    EXPECT_EQ(Content(Named("Sound\\a.wav")), "a");
}

TEST_F(Files, RefusesWhatIsNoReadableFile) {
    std::filesystem::create_directories(folder.Path("folder.wav"));
    ASSERT_EQ(mkfifo(folder.Path("fifo.wav").c_str(), 0600), 0);
    std::filesystem::create_symlink("nowhere", folder.Path("link.wav"));
    std::filesystem::create_symlink("loop.wav", folder.Path("loop.wav"));
    folder.Write("file", "x");
    for (const char* name : {"folder.wav", "fifo.wav", "FIFO.wav", "link.wav", "loop.wav", "none.wav",
                             "file\\x", "none\\..\\file", ".", ".."})
        EXPECT_EQ(Content(Named(name)), "<none>") << name;
    for (const char* name : {"\\dev\\null", "\\dev\\zero", "", "\\"})
        EXPECT_EQ(Content(name), "<none>") << name;
    EXPECT_EQ(FileOpen(nullptr, "rb"), nullptr);
    EXPECT_EQ(FileOpen((folder.Path() + "/file").c_str(), "wb"), nullptr);
    EXPECT_EQ(FileOpen((folder.Path() + "/file").c_str(), nullptr), nullptr);
}

TEST_F(Files, UnreadableFile) {
    constexpr uid_t kNobody = 65534;
    folder.Write("secret.wav", "x");
    folder.Write("open.wav", "open");
    chmod(folder.Path().c_str(), 0755);
    chmod(folder.Path("secret.wav").c_str(), 0);
    const uid_t nUser = geteuid();
    if (nUser == 0) {  // who reads everything
        ASSERT_EQ(seteuid(kNobody), 0);
    }
    const std::string secret = Content(Named("secret.wav")), open = Content(Named("OPEN.wav"));
    if (nUser == 0) {
        ASSERT_EQ(seteuid(0), 0);
    }
    EXPECT_EQ(secret, "<none>");
    EXPECT_EQ(open, "open");
}

TEST_F(Files, HugeFileIsRefused) {
    folder.Write("big", "");
    if (truncate(folder.Path("big").c_str(), INT64_C(0x80000000)) != 0)
        GTEST_SKIP() << "no sparse files here";
    EXPECT_EQ(Content(Named("big")), "<none>");
    ASSERT_EQ(truncate(folder.Path("big").c_str(), INT64_C(0x7FFFFFFF)), 0);
    FileStream* pFile = FileOpen(Named("big").c_str(), "rb");
    ASSERT_NE(pFile, nullptr);
    EXPECT_EQ(FileSeek(pFile, 0, SEEK_END), 0);
    EXPECT_EQ(FileTell(pFile), INT64_C(0x7FFFFFFF));
    FileClose(pFile);
}

TEST_F(Files, LongNamesEndCleanly) {
    for (const size_t n : {255u, 256u, 4000u, 5000u, 100000u}) {
        EXPECT_EQ(Content(Named(std::string(n, 'x'))), "<none>");
        std::string deep = folder.Path();
        while (deep.size() < n) deep += "\\d";
        EXPECT_EQ(Content(deep + "\\a.wav"), "<none>");
    }
}

TEST_F(Files, NothingIsFoundElsewhere) {
    TempFolder other;
    other.Write("secret.wav", "secret");
    folder.Write("a/b.wav", "b");
    EXPECT_EQ(Content(Named("b.wav")), "<none>");
    EXPECT_EQ(Content(Named("a\\..\\b.wav")), "<none>");
    EXPECT_EQ(Content(Named("SECRET.WAV")), "<none>");
    EXPECT_EQ(Content(Named("a\\" + TempFolder::Backslashes(other.Path()) + "\\secret.wav")), "<none>");
}

TEST_F(Files, RelativeNames) {
    folder.Write("Rel/a.wav", "rel");
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(folder.Path());
    EXPECT_EQ(Content("rel\\A.wav"), "rel");
    EXPECT_EQ(Content(".\\rel\\A.wav"), "rel");
    std::filesystem::current_path(folder.Path("Rel"));
    FileForgetListings();
    EXPECT_EQ(Content("A.WAV"), "rel");
    EXPECT_EQ(Content("..\\REL\\a.wav"), "rel");
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
