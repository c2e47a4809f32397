// What a chart names, what the disk has, what is found, and what the log says.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <vector>

#include "host/headless/headless.h"
#include "platform/files/files.h"
#include "platform/files/listing.h"
#include "support/media.h"
#include "support/tempfolder.h"

namespace {

namespace fs = std::filesystem;
using test::TempFolder;

// A file that can be read, whatever its ending says: a sound of that many hundred frames, or a picture so
// wide.
std::string Good(const std::string& name, int size) {
    for (const char* ending : {".png", ".jpg", ".jpeg", ".gif", ".bmp"}) {
        if (fs::path(name).extension() == ending) return test::Bmp(size, 3, 0x406080);
    }
    return test::SquareWav(size * 100);
}

struct Entry {
    std::string name;
    int size = 0;  // 0: of no kind; -1: a folder; -2: a link to nowhere; -3: damaged; -4: empty
};

void Make(const TempFolder& folder, const Entry& entry) {
    if (entry.size == -1) {
        fs::create_directories(folder.Path(entry.name));
    } else if (entry.size == -2) {
        fs::create_symlink("nowhere", folder.Path(entry.name));
    } else if (entry.size == -3) {
        folder.Write(entry.name, "OggS, and no more");
    } else {
        folder.Write(entry.name, entry.size > 0    ? Good(entry.name, entry.size)
                                 : entry.size == 0 ? "some other bytes, enough of them to be looked at"
                                                   : "");
    }
}

// "sound 5", "picture 5", the first bytes of anything else, or "none".
std::string Find(const std::string& name) {
    FileStream* file = FileOpen(name.c_str(), "rb");
    if (!file) return "none";
    std::string bytes(100'000, '\0');
    bytes.resize(FileRead(bytes.data(), 1, bytes.size(), file));
    FileClose(file);
    if (bytes.rfind("RIFF", 0) == 0) return "sound " + std::to_string(test::Number(bytes, 40, 4) / 200);
    if (bytes.rfind("BM", 0) == 0) return "picture " + std::to_string(test::Number(bytes, 18, 4));
    return bytes.substr(0, 10);
}

struct Row {
    const char* what;
    std::string asked;
    std::vector<Entry> disk;
    std::string found, log;
};

std::string Stands(const std::string& asked, const std::string& name) {
    return "Files: " + asked + " not there, " + name + " stands for it\n";
}

// A row in which the one that has the size 5 is found; `shown`: the asked name in the log, if not its end.
Row Instead(const char* what, const std::string& asked, const std::vector<Entry>& disk, const char* stand,
            std::string shown = "") {
    if (shown.empty()) shown = asked.substr(asked.rfind('\\') + 1);
    const bool picture = fs::path(stand).extension() == ".png";
    return {what, asked, disk, picture ? "picture 5" : "sound 5", Stands(shown, stand)};
}

// Opened twice, as a loader does it.
void Check(const Row& row) {
    SCOPED_TRACE(row.what);
    TempFolder folder;
    for (const Entry& entry : row.disk) Make(folder, entry);
    headless::Reset();
    FileForgetListings();
    const std::string name = TempFolder::Backslashes(folder.Path()) + "\\" + row.asked;
    EXPECT_EQ(Find(name), row.found);
    EXPECT_EQ(Find(name), row.found);
    EXPECT_EQ(headless::Log(), row.log);
}

TEST(PackageNames, FilesThatAreThereAreNeverReplaced) {
    const Row rows[] = {
        {"exact", "k.wav", {{"k.wav", 5}, {"k.ogg", 6}}, "sound 5", ""},
        {"in other case", "k.wav", {{"K.WAV", 5}, {"k.ogg", 6}}, "sound 5", ""},
        {"whatever it holds", "k.wav", {{"k.wav", 0}, {"k.ogg", 6}}, "some other", ""},
        {"even nothing", "k.wav", {{"k.wav", -4}, {"k.ogg", 6}}, "", ""},
        {"a sound of another kind", "k.ogg", {{"k.ogg", 5}, {"k.wav", 6}}, "sound 5", ""},
        {"MP3 that says so", "k.Mp3", {{"k.mp3", 5}, {"k.wav", 6}}, "sound 5", ""},
        {"a picture of another kind", "b.png", {{"b.png", 5}, {"b.bmp", 6}}, "picture 5", ""},
        {"one that cannot be converted", "k.ogg", {{"k.ogg", -3}, {"k.wav", 6}}, "OggS, and ", ""},
        {"a picture", "b.bmp", {{"b.bmp", 5}, {"b.png", 6}}, "picture 5", ""},
        {"other names", "k.wav", {{"o.ogg", 5}, {"k.txt", 0}, {"kk.ogg", 5}, {"k.ogg.bak", 0}}, "none", ""},
        {"neither sound nor picture", "k.bms", {{"k.ogg", 5}, {"k.png", 5}}, "none", ""},
        {"no ending", "k", {{"k.ogg", 5}, {"k.png", 5}}, "none", ""},
        {"only an ending", ".wav", {{".ogg", 5}}, "none", ""},
    };
    for (const Row& row : rows) Check(row);
}

TEST(PackageNames, KindsComeInTheirOrder) {
    const std::vector<Entry> sounds = {
        {"k.ogg", 11}, {"k.opus", 12}, {"k.flac", 13}, {"k.mp3", 14}, {"k.wav", 15}};
    for (auto first = sounds.begin(); first != sounds.end(); ++first) {
        const std::vector<Entry> disk(first, sounds.end());
        Check({"sounds", "k.xa", disk, "sound " + std::to_string(first->size), Stands("k.xa", first->name)});
    }
    const std::vector<Entry> pictures = {
        {"k.png", 11}, {"k.jpg", 12}, {"k.jpeg", 13}, {"k.gif", 14}, {"k.bmp", 15}};
    std::string asked = "k.bmp";  // then the kind before
    for (auto first = pictures.begin(); first + 1 != pictures.end(); asked = first++->name) {
        const std::vector<Entry> disk(first, pictures.end() - (asked == "k.bmp"));
        Check(
            {"pictures", asked, disk, "picture " + std::to_string(first->size), Stands(asked, first->name)});
    }
}

TEST(PackageNames, TheForgivingMatchHoldsForWhatStands) {
    const std::string cp932 = "\x83\x4C\x83\x62\x83\x4E";  // a word of three letters, and the same in UTF-8
    const std::string kick = "\xE3\x82\xAD\xE3\x83\x83\xE3\x82\xAF";
    const std::string kick_ogg = kick + ".ogg", kick_wav = kick + ".wav";
    const char* const composed = "\xE3\x81\x94.png";
    const char* const decomposed = "\xE3\x81\x8B\xE3\x82\x99.ogg";
    const char* const decomposed_pa = "\xE3\x83\x8F\xE3\x82\x9A.flac";
    // Letters that have a backslash as second byte.
    const char* const table = "\xE8\xA1\xA8.ogg";
    const char* const so_so = "\xE3\x82\xBD\xE3\x82\xBD.png";
    const Row rows[] = {
        Instead("case of both parts", "Kick.WAV", {{"kick.Ogg", 5}}, "kick.Ogg"),
        Instead("the exact stem wins", "k.wav", {{"K.ogg", 6}, {"k.ogg", 5}}, "k.ogg"),
        Instead("the kind goes before the spelling", "k.wav", {{"K.ogg", 5}, {"k.flac", 6}}, "K.ogg"),
        Instead("dots in the stem", "a.b.wav", {{"a.ogg", 4}, {"a.b.ogg", 5}}, "a.b.ogg"),
        Instead("folders in other case", "SND\\k.wav", {{"snd/K.ogg", 5}}, "K.ogg"),
        Instead("a look-alike of the folder", "Snd\\k.wav", {{"Snd/x.ogg", 4}, {"snd/k.ogg", 5}}, "k.ogg"),
        {"not in the folder above", "snd\\k.wav", {{"k.ogg", 4}, {"snd/x", 0}}, "none", ""},
        Instead("CP932 for UTF-8", cp932 + ".wav", {{kick_ogg, 5}}, kick_ogg.c_str(), kick_wav),
        Instead("CP932 on both sides", cp932 + ".wav", {{cp932 + ".ogg", 5}}, kick_ogg.c_str(), kick_wav),
        Instead("decomposed on disk", "\xE3\x81\x8C.wav", {{decomposed, 5}}, decomposed),
        Instead("decomposed on disk for CP932", "\x83\x70.wav", {{decomposed_pa, 5}}, decomposed_pa,
                "\xE3\x83\x91.wav"),
        Instead("composed on disk", "\xE3\x81\x93\xE3\x82\x99.bmp", {{composed, 5}}, composed),
        Instead("a backslash as second byte", "\x95\x5C.wav", {{table, 5}}, table, "\xE8\xA1\xA8.wav"),
        Instead("the same on both sides", "\x83\x5C\x83\x5C.bmp", {{"\x83\x5C\x83\x5C.png", 5}}, so_so,
                "\xE3\x82\xBD\xE3\x82\xBD.bmp"),
        Instead("and in a folder's name", "\x95\x5C\\\x95\x5C.wav", {{"\xE8\xA1\xA8/\xE8\xA1\xA8.ogg", 5}},
                table, "\xE8\xA1\xA8.wav"),
    };
    for (const Row& row : rows) Check(row);
}

TEST(PackageNames, WhatCannotBeReadGivesWayToTheNext) {
    const auto refused = [](const std::string& asked, const std::vector<std::string>& names) {
        std::string log;
        for (const std::string& name : names)
            log += "Files: " + asked + " not there, " + name + " cannot be read\n";
        return log;
    };
    const std::string all_sounds = refused("k.wav", {"k.ogg", "k.opus", "k.flac", "k.mp3"}),
                      all_pictures = refused("b.bmp", {"b.png", "b.jpg", "b.gif"}),
                      next = refused("k.wav", {"k.ogg"}) + Stands("k.wav", "k.flac");
    const Row rows[] = {
        Instead("a folder under the name", "k.wav", {{"k.wav", -1}, {"k.ogg", 5}}, "k.ogg"),
        Instead("a dangling link under the name", "k.wav", {{"k.wav", -2}, {"k.ogg", 5}}, "k.ogg"),
        {"a folder beside it", "k.wav", {{"k.ogg", -1}, {"k.mp3", -2}}, "none", ""},
        Instead("then a file", "k.wav", {{"k.ogg", -1}, {"k.opus", -2}, {"k.flac", 5}}, "k.flac"),
        {"damaged, then good", "k.wav", {{"k.ogg", -3}, {"k.flac", 5}}, "sound 5", next},
        {"all damaged",
         "k.wav",
         {{"k.ogg", -3}, {"k.opus", -4}, {"k.flac", -3}, {"k.mp3", 0}},
         "none",
         all_sounds},
        {"damaged pictures", "b.bmp", {{"b.png", -3}, {"b.jpg", -3}, {"b.gif", -3}}, "none", all_pictures},
        {"a picture is no sound", "k.wav", {{"k.png", 5}}, "none", ""},
    };
    for (const Row& row : rows) Check(row);
}

TEST(PackageNames, ContentDecidesWhatASubstituteIs) {
    TempFolder folder;
    folder.Write("a.ogg", test::SquareWav(700));
    folder.Write("b.wav", test::ReadFile(PACKAGES_DATA "/tone1.flac"));
    folder.Write("c.xa", "x");
    folder.Write("d.wav", "KWD1 and whatever follows");
    folder.Write("e.png", test::ReadFile(PACKAGES_DATA "/shades.jpg"));
    headless::Reset();
    FileForgetListings();
    EXPECT_EQ(Find(folder.Path("a.wav")), "sound 7");
    EXPECT_EQ(Find(folder.Path("b.ogg")), "sound 15");
    EXPECT_EQ(Find(folder.Path("c.wav")), "none");
    EXPECT_EQ(Find(folder.Path("d.xa")), "KWD1 and w");
    EXPECT_EQ(Find(folder.Path("e.bmp")), "picture 37");
}

// A list's kind goes before the ending; without one a name that tells nothing has no stand-in.
TEST(PackageNames, AListTellsTheKind) {
    TempFolder folder;
    for (const char* name : {"k.ogg", "m.png", "m.ogg"}) folder.Write(name, Good(name, 5));
    const std::string bare = folder.Path("k"), movie = folder.Path("m.avi");
    const char* names[] = {bare.c_str(), movie.c_str()};
    headless::Reset();
    FileForgetListings();
    FilesExpect(FILES_SOUNDS, names, 2);
    EXPECT_EQ(Find(bare), "sound 5");
    EXPECT_EQ(Find(movie), "sound 5");
    FilesExpect(FILES_PICTURES, names, 2);
    EXPECT_EQ(Find(bare), "none");
    EXPECT_EQ(Find(movie), "picture 5");
    FilesExpectNoMore();
    EXPECT_EQ(Find(movie), "none");
}

TEST(PackageNames, NothingStandsForAChart) {
    TempFolder folder;
    folder.Write("k.ogg", Good("k.ogg", 5));
    FileForgetListings();
    EXPECT_EQ(FileOpenAsNamed(folder.Path("k.wav").c_str()), nullptr);
}

TEST(PackageNames, ManyMissingNamesCostOneListing) {
    TempFolder folder;
    for (int i = 0; i < 100; ++i) folder.Write("s/k" + std::to_string(i) + ".wav.bak", "x");
    folder.Write("s/k7.ogg", Good("k.ogg", 5));
    FileForgetListings();
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(Find(folder.Path("s") + "\\k" + std::to_string(i) + ".wav"), i == 7 ? "sound 5" : "none");
    // The folder itself, and the one around it, in which a look-alike of the folder might have been.
    EXPECT_EQ(FoldersRead(), 2u);
}

TEST(PackageNames, LongNamesAreCutBetweenCharacters) {
    TempFolder folder;
    std::string stem = "x";
    for (int i = 0; i < 50; ++i) stem += "\xE3\x81\x82";
    folder.Write(stem + ".ogg", Good("k.ogg", 5));
    headless::Reset();
    FileForgetListings();
    EXPECT_EQ(Find(folder.Path(stem + ".wav")), "sound 5");
    EXPECT_EQ(headless::Log(), Stands(stem.substr(0, 79), stem.substr(0, 79)));
}

}  // namespace
