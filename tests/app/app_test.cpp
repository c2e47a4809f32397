#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <string>

#include "support/tempfolder.h"

namespace {

struct Outcome {
    int code;
    std::string out;  // standard output and standard error
};

// Runs the program with no display, and with a folder of its own for meeting other copies.
Outcome RunWithoutDisplay(const std::string& arguments, const std::string& redirection = "2>&1") {
    test::TempFolder folder;
    const std::string command = "chmod 700 " + folder.Path() + "; XDG_RUNTIME_DIR=" + folder.Path() +
                                " timeout 20 env -u DISPLAY -u WAYLAND_DISPLAY " LUMETRA_PROGRAM " " +
                                arguments + " </dev/null " + redirection;
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe) return {-1, "cannot start"};
    std::string out;
    std::array<char, 4096> part;
    for (size_t n; (n = fread(part.data(), 1, part.size(), pipe)) > 0;) out.append(part.data(), n);
    const int status = pclose(pipe);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, out};
}

TEST(App, AnswersHelpAndVersionFirst) {
    const Outcome version = RunWithoutDisplay("--version");
    EXPECT_EQ(version.code, 0);
    EXPECT_EQ(version.out, "lumetra " LUMETRA_VERSION "\n");
    EXPECT_EQ(RunWithoutDisplay("-D -Q --version").out, version.out);
    EXPECT_EQ(RunWithoutDisplay("/P '' --version").out, version.out);
    const Outcome help = RunWithoutDisplay("--help", "2>/dev/null");
    EXPECT_EQ(help.code, 0);
    for (const char* part :
         {"usage: lumetra", "-N<n>", "-M<x>", "-X<n>", "-Y<n>", "-D", "-P", "-R", "-S", "-Q", "--version"}) {
        EXPECT_NE(help.out.find(part), std::string::npos) << part;
    }
}

TEST(App, SaysInOneLineThatThereIsNoDisplay) {
    for (const char* arguments : {"song.bms", "-P -D song.bms", ""}) {
        const Outcome outcome = RunWithoutDisplay(arguments);
        EXPECT_EQ(outcome.code, 255) << arguments;
        EXPECT_NE(outcome.out.find("lumetra-render"), std::string::npos) << arguments << ": " << outcome.out;
        EXPECT_EQ(std::count(outcome.out.begin(), outcome.out.end(), '\n'), 1)
            << arguments << ": " << outcome.out;
    }
}

TEST(App, CommandsNeedNoDisplay) {
    for (const char* arguments : {"-Q", "-D -Q", "-N5 -M2 -Q song.bms"}) {
        const Outcome outcome = RunWithoutDisplay(arguments);
        EXPECT_EQ(outcome.code, 1) << arguments;
        const bool host = std::string(arguments).find("-D") != std::string::npos;
        EXPECT_EQ(outcome.out, host ? "" : "lumetra: no instance is running\n") << arguments;
    }
}

}  // namespace
