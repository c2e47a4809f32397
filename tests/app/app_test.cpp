// The desktop program without a display.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <string>

#include "support/tempfolder.h"

namespace {

// Its exit code, and what it prints. It has a folder of its own for meeting other instances.
int Launch(const std::string& arguments, std::string* out) {
    test::TempFolder folder;
    const std::string command = "chmod 700 " + folder.Path() + "; XDG_RUNTIME_DIR=" + folder.Path() +
                                " timeout 20 env -u DISPLAY -u WAYLAND_DISPLAY " LUMETRA_PROGRAM " " +
                                arguments + " </dev/null 2>&1";
    FILE* pipe = popen(command.c_str(), "r");
    std::array<char, 4096> part;
    out->clear();
    for (size_t n; (n = fread(part.data(), 1, part.size(), pipe)) > 0;) out->append(part.data(), n);
    const int status = pclose(pipe);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(App, WithoutADisplay) {
    const std::string version = "lumetra " LUMETRA_VERSION "\n";
    const struct {
        const char* arguments;
        int code, lines;
        std::string holds;
    } rows[] = {
        {"--version", 0, 1, version},
        {"-D -Q --version", 0, 1, version},
        {"/P '' --version", 0, 1, version},
        {"--help", 0, -1, "usage: lumetra"},
        {"-D -h", 0, -1, "usage: lumetra"},
        {"song.bms", 255, 1, "lumetra-render"},
        {"-P -D song.bms", 255, 1, "lumetra-render"},
        {"--watch --modern song.bms", 255, 1, "lumetra-render"},
        {"", 255, 1, "lumetra-render"},
        {"song.bms --help", 255, 2, "options come before"},
        {"-Q", 1, 1, "no instance is running"},
        {"--stop", 4, 1, "no instance is running"},
        {"-z -Q", 1, 2, "-z is unknown"},
        {"--open nothing.bms", 3, 1, "nothing.bms"},
        {"--open", 255, 1, "XWayland"},
        {"--open ''", 2, 1, "needs"},
        {"--at 5 --open", 2, 1, "--at"},
        {"-D -N5 -M2 -Q song.bms", 1, 0, ""},
    };
    for (const auto& row : rows) {
        std::string out;
        EXPECT_EQ(Launch(row.arguments, &out), row.code) << row.arguments;
        EXPECT_NE(out.find(row.holds), std::string::npos) << row.arguments << ": " << out;
        const auto lines = std::count(out.begin(), out.end(), '\n');
        EXPECT_TRUE(row.lines < 0 || lines == row.lines) << row.arguments << ": " << out;
        for (const char* option : {"-N<n>", "-M<x>", "-X<n>", "-Y<n>", "-D", "-P", "-R", "-S", "-Q"})
            EXPECT_TRUE(row.lines >= 0 || out.find(option) != std::string::npos) << option;
    }
}

}  // namespace
