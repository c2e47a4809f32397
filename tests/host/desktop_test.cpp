// The desktop host below its windows: packets, folders, sockets, file lists.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <ctime>

#include "host/desktop/chart_head.h"
#include "host/desktop/clicks.h"
#include "host/desktop/dropped.h"
#include "host/desktop/file_list.h"
#include "host/desktop/inbox.h"
#include "host/desktop/instance_folder.h"
#include "host/desktop/instance_message.h"
#include "host/desktop/instances.h"
#include "host/desktop/main_window.h"
#include "host/desktop/settings_text.h"
#include "host/host.h"
#include "support/tempfolder.h"

using namespace host;
using namespace host::desktop;

namespace {

class Instances : public testing::Test {
protected:
    void SetUp() override {
        setenv("XDG_RUNTIME_DIR", m_folder.Path().c_str(), 1);
        setenv("DISPLAY", ":7.0", 1);
    }
    void TearDown() override { WithdrawInstance(); }

    std::string Mine() const { return m_folder.Path("lumetra-7"); }
    // Of this process, which ListInstances leaves out.
    static uint64_t OwnId() { return static_cast<uint64_t>(getpid()); }

    std::vector<uint32_t> TakeAll(size_t count) {
        std::vector<uint32_t> numbers;
        Event event;
        for (int tries = 0; numbers.size() < count && tries < 2000; ++tries) {
            while (TakePosted(&event)) numbers.push_back(event.message);
            EndPostedRound();
            if (numbers.size() < count) usleep(1000);
        }
        return numbers;
    }

    test::TempFolder m_folder;
};

// A socket whose process is gone.
void LeaveSocket(const std::string& path) {
    const int fd = socket(AF_UNIX, SOCK_DGRAM, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::strcpy(address.sun_path, path.c_str());
    ASSERT_EQ(bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
    close(fd);
}

TEST(InstanceMessage, OnlyWellFormedPacketsAreTaken) {
    uint8_t good[kInstanceMessageBytes];
    EncodeInstanceMessage({1129, -5, INT64_MIN}, good);
    const uint8_t expected[kInstanceMessageBytes] = {
        'L',  'M',  'T',  'R',  1,    0,    0,    0,    0x69, 4, 0, 0, 0, 0, 0, 0,
        0xFB, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0,    0, 0, 0, 0, 0, 0, 0x80};
    EXPECT_EQ(std::memcmp(good, expected, sizeof(good)), 0);
    InstanceMessage message;
    ASSERT_TRUE(DecodeInstanceMessage(good, sizeof(good), &message));
    EXPECT_EQ(message.message, 1129u);
    EXPECT_EQ(message.wparam, -5);
    EXPECT_EQ(message.lparam, INT64_MIN);
    for (size_t count = 0; count < sizeof(good); ++count)
        EXPECT_FALSE(DecodeInstanceMessage(good, count, &message));
    for (size_t at : {0, 3, 4, 5, 6, 7, 12, 15}) {
        uint8_t bad[kInstanceMessageBytes];
        std::memcpy(bad, good, sizeof(bad));
        bad[at] ^= 0x10;
        EXPECT_FALSE(DecodeInstanceMessage(bad, sizeof(bad), &message)) << at;
    }
    for (uint32_t number : {0u, 16u, 70u, 1023u, 1024u, 0xBFFFu, 0xC000u, UINT32_MAX}) {
        EncodeInstanceMessage({number, 0, 0}, good);
        const bool taken = number == 1024 || number == 0xBFFF;
        EXPECT_EQ(DecodeInstanceMessage(good, sizeof(good), &message), taken) << number;
    }
}

TEST(InstanceNames, DisplaysAndSockets) {
    const std::pair<const char*, const char*> displays[] = {{":0", "0"},
                                                            {":0.1", "0"},
                                                            {"unix:12.0", "12"},
                                                            {"localhost:10.0", "localhost_10"},
                                                            {"", "none"},
                                                            {nullptr, "none"},
                                                            {"../../x:1", "______x_1"},
                                                            {"wayland-0", "wayland-0"},
                                                            {"a.b:3.2", "a_b_3"}};
    for (const auto& [display, key] : displays) EXPECT_EQ(DisplayKey(display), key);
    InstanceSocket socket;
    EXPECT_EQ(SocketName({"Lumetra_ZN", 42}), "Lumetra_ZN.42");
    EXPECT_EQ(SocketName({"a b/.", 1}), "a%20b%2F%2E.1");
    ASSERT_TRUE(ParseSocketName("a%20b%2F%2E.1", &socket));
    EXPECT_EQ(socket.class_name, "a b/.");
    for (const char* bad :
         {"", ".", "a", "a.", ".1", "a.0", "a.1x", "a b.1", "%2.1", "%zz.1", "a.99999999999999999999"})
        EXPECT_FALSE(ParseSocketName(bad, &socket)) << bad;
}

TEST_F(Instances, AnnounceListPostWithdraw) {
    std::vector<Instance> instances;
    EXPECT_TRUE(ListInstances(&instances));
    EXPECT_NE(access(Mine().c_str(), F_OK), 0) << "looking makes no folder";
    ASSERT_EQ(mkdir(Mine().c_str(), 0700), 0);
    LeaveSocket(Mine() + "/Lumetra_ZN.99");
    LeaveSocket(Mine() + "/Lumetra_ZN." + std::to_string(OwnId()));
    ASSERT_TRUE(AnnounceInstance("Lumetra_ZN"));
    EXPECT_TRUE(ListInstances(&instances));
    EXPECT_TRUE(instances.empty());
    EXPECT_EQ(ReadInstanceFolder(Mine()).size(), 1u) << "dead sockets are swept";
    EXPECT_FALSE(PostToInstance(OwnId() + 1, 1125, 0, 0));
    for (uint32_t i = 0; i < 500; ++i) ASSERT_TRUE(PostToInstance(OwnId(), 2000 + i, 0, 0));
    const std::vector<uint32_t> numbers = TakeAll(500);
    ASSERT_EQ(numbers.size(), 500u);
    for (uint32_t i = 0; i < 500; ++i) EXPECT_EQ(numbers[i], 2000 + i);
    WithdrawInstance();
    EXPECT_NE(access(Mine().c_str(), F_OK), 0) << "the last one removes the folder";
    EXPECT_FALSE(PostToInstance(OwnId(), 1125, 0, 0));
}

TEST_F(Instances, AQuitThatActsLeavesTheListAndDropsTheRest) {
    for (const bool deaf : {false, true}) {
        ASSERT_TRUE(AnnounceInstance("Lumetra_ZN"));
        EXPECT_TRUE(PostToInstance(OwnId(), 2000, 0, 0));
        if (deaf) PostToInstance(OwnId(), 1224, 0, 0);
        EXPECT_TRUE(PostToInstance(OwnId(), 1125, 0, 0));
        EXPECT_EQ(ReadInstanceFolder(Mine()).size(), deaf ? 1u : 0u);
        const std::vector<uint32_t> expected = {2000, 1224, 1125};
        EXPECT_EQ(TakeAll(deaf ? 3 : 1), deaf ? expected : std::vector<uint32_t>{1125});
        WithdrawInstance();
    }
}

// Other starts wait from the look for instances to the announcement.
TEST_F(Instances, StartsAreSerialised) {
    const std::string try_lock = "flock -x -n " + Mine() + " true";
    LockStart(true);
    EXPECT_NE(system(try_lock.c_str()), 0);
    ASSERT_TRUE(AnnounceInstance("Lumetra_ZN"));
    EXPECT_EQ(system(try_lock.c_str()), 0);
    LockStart(true);
    EXPECT_NE(system(try_lock.c_str()), 0);
    WithdrawInstance();
    UnlockStart();
    EXPECT_NE(access(Mine().c_str(), F_OK), 0) << "the folder goes when nobody is there";
}

TEST_F(Instances, OnlyPrivateFoldersAreUsed) {
    std::vector<Instance> instances;
    for (mode_t mode : {0777, 0710, 0701}) {
        ASSERT_EQ(mkdir(Mine().c_str(), 0700), 0);
        chmod(Mine().c_str(), mode);
        EXPECT_FALSE(AnnounceInstance("Lumetra_ZN"));
        EXPECT_FALSE(ListInstances(&instances));
        ASSERT_EQ(rmdir(Mine().c_str()), 0) << "nothing was put into it";
    }
    ASSERT_EQ(mkdir(m_folder.Path("other").c_str(), 0700), 0);
    EXPECT_TRUE(IsPrivateFolder(m_folder.Path("other")));
    ASSERT_EQ(symlink(m_folder.Path("other").c_str(), Mine().c_str()), 0);
    EXPECT_FALSE(AnnounceInstance("Lumetra_ZN"));
    // Somebody else's, whoever runs this.
    const std::string foreign = geteuid() == 0 ? m_folder.Path("other") : "/root";
    EXPECT_EQ(geteuid() == 0 ? chown(foreign.c_str(), 65534, 65534) : 0, 0);
    EXPECT_FALSE(IsPrivateFolder(foreign));
    chmod(m_folder.Path().c_str(), 0755);
    EXPECT_NE(FindInstanceFolder(false).path.compare(0, m_folder.Path().size(), m_folder.Path()), 0);
}

TEST_F(Instances, ARoundIsBoundedAndAFullQueueRefuses) {
    ASSERT_TRUE(AnnounceInstance("Lumetra_ZN"));
    size_t sent = 0;
    while (sent < 20000 && PostToInstance(OwnId(), 3000, 0, 0)) ++sent;
    EXPECT_GE(sent, 10000u);
    EXPECT_LT(sent, 12000u);
    Event event;
    size_t first = 0;
    while (first < 2000 && TakePosted(&event)) ++first;
    EXPECT_GE(first, 1000u);
    EXPECT_LT(first, 2000u);
    EXPECT_EQ(TakeAll(sent - first).size(), sent - first) << "nothing that was accepted is lost";
}

TEST_F(Instances, WhyAFolderIsNotUsed) {
    ASSERT_EQ(mkdir(Mine().c_str(), 0755), 0);
    EXPECT_EQ(FindInstanceFolder(true).problem, Mine() + " is not a folder of this user alone");
    setenv("XDG_RUNTIME_DIR", "/proc/self/fd", 1);  // private, and nothing can be made in it
    EXPECT_EQ(FindInstanceFolder(true).problem,
              "no folder /proc/self/fd/lumetra-7: No such file or directory");
    EXPECT_TRUE(FindInstanceFolder(false).missing);
}

// Without a free descriptor the channel waits without work, and goes on afterwards.
TEST_F(Instances, TheChannelRestsWithoutDescriptors) {
    ServeLines([](uint64_t client, const std::string& line) { SendLine(client, line); });
    ASSERT_TRUE(AnnounceInstance("Lumetra_ZN"));
    rlimit before;
    getrlimit(RLIMIT_NOFILE, &before);
    LineClient client(OwnId()), second(OwnId());
    usleep(50'000);
    std::vector<int> taken;
    const rlimit few = {64, before.rlim_max};
    setrlimit(RLIMIT_NOFILE, &few);
    const int spare = dup(0);
    for (int fd; (fd = dup(0)) >= 0;) taken.push_back(fd);
    close(spare);
    LineClient third(OwnId());  // takes the last one
    ASSERT_TRUE(third.IsOpen());
    const clock_t start = clock();
    usleep(300'000);
    EXPECT_LT(clock() - start, CLOCKS_PER_SEC / 20);
    for (const int fd : taken) close(fd);
    setrlimit(RLIMIT_NOFILE, &before);
    std::string line;
    for (LineClient* each : {&client, &second, &third}) {
        EXPECT_TRUE(each->Write("hello"));
        EXPECT_TRUE(each->Read(&line, 2000));
        EXPECT_EQ(line, "hello");
    }
    ServeLines(nullptr);
}

// The kernel's note about a message's sender, as recvmsg returns it.
TEST(InboxSender, OnlyThisUserIsHeard) {
    const struct {
        int type;
        uid_t uid;
        bool heard;
    } rows[] = {{SCM_CREDENTIALS, geteuid(), true},
                {SCM_CREDENTIALS, geteuid() + 1, false},
                {SCM_RIGHTS, geteuid(), false}};
    for (const auto& row : rows) {
        alignas(cmsghdr) char control[CMSG_SPACE(sizeof(ucred))] = {};
        msghdr header = {};
        header.msg_control = control;
        header.msg_controllen = sizeof(control);
        cmsghdr* part = CMSG_FIRSTHDR(&header);
        part->cmsg_level = SOL_SOCKET;
        part->cmsg_type = row.type;
        part->cmsg_len = CMSG_LEN(sizeof(ucred));
        const ucred sender = {1, row.uid, 0};
        std::memcpy(CMSG_DATA(part), &sender, sizeof(sender));
        EXPECT_EQ(IsFromThisUser(&header), row.heard) << row.type << " " << row.uid;
    }
    msghdr nothing = {};
    EXPECT_FALSE(IsFromThisUser(&nothing));
}

TEST(DebugText, EscapesWhatATerminalObeys) {
    setenv("LUMETRA_DEBUG", "1", 1);
    testing::internal::CaptureStderr();
    for (const std::string text : {"a\x1B[2J\nb\xFF\n", "曲"}) DebugText(text.data(), text.size());
    unsetenv("LUMETRA_DEBUG");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "a\\x1B[2J\\x0Ab\\xFF\n曲");
}

TEST(DroppedPath, TakesTheFirstLocalFile) {
    const std::pair<const char*, const char*> rows[] = {
        {"file:///tmp/a%20b.bms\r\n", "/tmp/a b.bms"},
        {"file://host/tmp/%E6%9B%B2.bms\r\nfile:///b\r\n", "/tmp/\xE6\x9B\xB2.bms"},
        {"# comment\r\nhttp://x/y\r\nfile:/c.bms", "/c.bms"},
        {"/plain/path.bms\n", "/plain/path.bms"},
        {"file:///100%.bms", "/100%.bms"},
        {"file:///%zz%4", "/%zz%4"},
        {"file://", ""},
        {"relative.bms", ""},
        {"file:relative.bms\nfile:///a%00.bms\n/b", "/b"},
        {"", ""}};
    for (const auto& [text, path] : rows) EXPECT_EQ(DroppedPath(text), path) << text;
}

TEST(FileList, PatternsAndNames) {
    const char* charts = "*.bms;*.bme";
    for (const char* name : {"a.bms", "A.BME", ".bms", "a.b.bMs"})
        EXPECT_TRUE(FitsPatterns(name, charts)) << name;
    for (const char* name : {"a.bm", "a.bmsx", "bms", ""}) EXPECT_FALSE(FitsPatterns(name, charts)) << name;
    EXPECT_TRUE(FitsPatterns("anything", ""));
    EXPECT_TRUE(FitsPatterns(std::string(5000, 'a'), "*a*a*a*a*a*a*a*a*a*b;*a"));
    EXPECT_EQ(ShownName("\x8B\xC8.bms"), "\xE6\x9B\xB2.bms");
    EXPECT_EQ(ShownName("\xE6\x9B\xB2.bms"), "\xE6\x9B\xB2.bms");
    EXPECT_FALSE(ShownName("\xFF\xFE\xFD").empty());
    EXPECT_EQ(JoinPath("/", "a") + JoinPath("/b", "/c"), "/a/c");
    EXPECT_EQ(ParentFolder("/a/b") + ParentFolder("/a") + ParentFolder("/"), "/a//");
}

TEST(FileList, WhatAUserTyped) {
    test::TempFolder folder;
    for (const char* file :
         {"second.bms", "Second.BME", "plain", "a/b c.bms", "home/x.bms", "q\".bms", "v1.2.bms"})
        folder.Write(file, "");
    folder.Write("\x8B\xC8.bms", "");
    setenv("HOME", folder.Path("home").c_str(), 1);
    const std::pair<std::string, const char*> rows[] = {{"second.bms", "second.bms"},
                                                        {"SECOND.BMS", "second.bms"},
                                                        {"second", "second.bms"},
                                                        {"second.bme", "Second.BME"},
                                                        {"\"second.bms\"", "second.bms"},
                                                        {"  plain ", "plain"},
                                                        {"a/B C.BMS", "a/b c.bms"},
                                                        {"A", "a"},
                                                        {"A/../second", "a/../second.bms"},
                                                        {"~", "home"},
                                                        {"~/X", "home/x.bms"},
                                                        {folder.Path("SECOND"), "second.bms"},
                                                        {"v1.2", "v1.2.bms"},
                                                        {"q\"", "q\".bms"},
                                                        {"\xE6\x9B\xB2", "\x8B\xC8.bms"},
                                                        {"\"\"", nullptr},
                                                        {"", nullptr},
                                                        {"third", nullptr},
                                                        {"~x", nullptr}};
    for (const auto& [typed, found] : rows)
        EXPECT_EQ(FindTyped(folder.Path(), typed, "BMS"), found ? folder.Path(found) : "") << typed;
}

TEST(ChartHead, ReadsWhatTheListShows) {
    const struct {
        std::string text, shown;
    } rows[] = {{"#TITLE A\r\n#artist  B \r\n#PLAYLEVEL 12\r\n", "A|B |12"},
                {"x\n#TITLE old\n#TITLE \x8B\xC8\t1\n#ARTIST", "\xE6\x9B\xB2 1||"},
                {"#TITLE" + std::string(1, '\0') + "#TITLE a\x1B[b", "a [b||"},
                {"#TITLE " + std::string(199, 'a') + "\xE6\x9B\xB2", std::string(199, 'a') + "||"},
                {"#TITLEX", "||"},
                {"#TITLE   ", "||"}};
    for (const auto& [text, shown] : rows) {
        const ChartHead head = ParseChartHead(text);
        EXPECT_EQ(head.title + "|" + head.artist + "|" + head.level, shown);
    }
    test::TempFolder folder;
    mkfifo(folder.Path("pipe").c_str(), 0600);
    HeadReader reader;
    reader.Read({{1, folder.Path("none")}, {2, folder.Path("pipe")}, {3, folder.Write("a.bms", "#TITLE x")}});
    std::vector<HeadReader::Result> results;
    while (results.size() < 3) {
        for (HeadReader::Result& result : reader.TakeResults()) results.push_back(std::move(result));
        SleepMilliseconds(1);
    }
    EXPECT_EQ(results[0].head.title + results[1].head.title + results[2].head.title, "x");
    EXPECT_EQ(results[2].id, 3u);
}

TEST(DesktopSettings, FontsAndColors) {
    const struct {
        const char* text;
        const char* family;
        double points;
    } fonts[] = {{"Noto Sans 10", "Noto Sans", 10},
                 {"Noto Sans, Bold Italic 10.5", "Noto Sans", 10.5},
                 {"Cantarell Semi-Bold 11", "Cantarell", 11},
                 {"Font 3 of 4", "Font 3 of", 4},
                 {"Sans", "Sans", 0},
                 {"12", "12", 0},
                 {"Sans -4", "Sans -4", 0},
                 {"", "", 0}};
    for (const auto& [text, family, points] : fonts) {
        const FontName font = ParseFontName(text);
        EXPECT_EQ(font.family, family) << text;
        EXPECT_EQ(font.points, points) << text;
    }
    for (const char* text : {"#336699", "#369", "#336699ff", "rgb(51, 102,153)", "51,102,153", " #336699 "})
        EXPECT_EQ(ParseColor(text), 0x336699u) << text;
    for (const char* text : {"", "#", "#12345", "rgb(1,2)", "256,0,0", "alpha(@x, 0.5)"})
        EXPECT_FALSE(ParseColor(text)) << text;
    const auto colors = ParseThemeColors(
        "@define-color bg #112233;\n@define-color theme_bg_color @bg; @define-color x shade(@bg, "
        "2);\n@define-color y");
    EXPECT_EQ(colors, (std::map<std::string, uint32_t>{{"bg", 0x112233}, {"theme_bg_color", 0x112233}}));
    const Settings ini = ParseIni("[Settings]\n# c=d\ngtk-font-name = \"Sans 9\"\r\nnothing\n[");
    EXPECT_EQ(ini, (Settings{{"Settings/gtk-font-name", "Sans 9"}}));
}

// Cut anywhere, the bytes give the settings before the cut.
TEST(DesktopSettings, XSettings) {
    const std::string little(
        "\0\0\0\0\1\0\0\0\3\0\0\0"
        "\1\0\3\0Aa/\0\0\0\0\0\5\0\0\0Sans9\0\0\0"
        "\2\0\1\0C\0\0\0\0\0\0\0\1\2\3\4\5\6\7\10"
        "\0\0\4\0Size\0\0\0\0\376\377\377\377",
        72);
    EXPECT_EQ(ParseXSettings(little), (Settings{{"Aa/", "Sans9"}, {"C", ""}, {"Size", "-2"}}));
    for (size_t length = 0; length < little.size(); ++length)
        EXPECT_EQ(ParseXSettings(little.substr(0, length)).count("Size"), 0u) << length;
    const std::string big("\1\0\0\0\0\0\0\1\0\0\0\1\0\0\0\1N\0\0\0\0\0\0\0\0\0\1\2", 28);
    EXPECT_EQ(ParseXSettings(big), (Settings{{"N", "258"}}));
    EXPECT_TRUE(ParseXSettings(std::string("\0\0\0\0\0\0\0\0\377\377\377\377\11\0\0\0", 16)).size() <= 1);
}

TEST(ClickCounter, TellsDoubleClicks) {
    const struct {
        uint32_t time;
        int x;
        bool second;
    } rows[] = {{1000, 0, false},  {1500, 5, true},        {1600, 5, false},
                {2101, 5, false},  {2200, 11, false},      {2300, 11, true},
                {2400, 11, false}, {UINT32_MAX, 0, false}, {400, 0, true}};
    ClickCounter clicks;
    for (const auto& row : rows) EXPECT_EQ(clicks.Press(row.time, row.x, 0), row.second) << row.time;
}

TEST(FileList, FoldersFirstThenChartsByName) {
    test::TempFolder folder;
    for (const char* file :
         {"b10.bms", "b9.bms", "b.bms", "A.BME", "\xE6\x9B\xB2.bms", "x.wav", ".hidden.bms", "zoo/x"})
        folder.Write(file, "");
    mkfifo(folder.Path("f.bms").c_str(), 0600);
    std::vector<std::string> names;
    for (const FileEntry& entry : ListFolder(folder.Path(), "*.bms;*.bme")) names.push_back(entry.name);
    EXPECT_EQ(names, (std::vector<std::string>{"..", "zoo", "A.BME", "b.bms", "b9.bms", "b10.bms",
                                               "\xE6\x9B\xB2.bms"}));
    EXPECT_EQ(ListFolder(folder.Path("none"), "").size(), 1u);  // ..
}

}  // namespace
