// A tool run as a user runs it, in a folder of the test's own.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <string>

#include "support/tempfolder.h"

namespace test {

struct ToolResult {
    int code = -1;
    std::string text;  // standard error and output, as far as the shell leaves them
};

class ToolTest : public testing::Test {
protected:
    // before: settings of the environment, as the shell takes them.
    static ToolResult RunTool(const std::string& tool, const std::string& folder,
                              const std::string& arguments, const std::string& before = "") {
        const std::string line =
            "cd '" + folder + "' && " + before + " '" + tool + "' " + arguments + " 2>&1 </dev/null";
        FILE* pipe = popen(line.c_str(), "r");
        ToolResult result;
        char chunk[4096];
        while (const size_t count = fread(chunk, 1, sizeof chunk, pipe)) result.text.append(chunk, count);
        const int status = pclose(pipe);
        result.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        return result;
    }
    // Expects that exit code and text somewhere in what the tool says.
    static void ExpectSays(const ToolResult& result, int code, const std::string& text,
                           const std::string& what) {
        EXPECT_EQ(result.code, code) << what << "\n" << result.text;
        EXPECT_NE(result.text.find(text), std::string::npos) << what << "\n"
                                                             << text << "\nin\n"
                                                             << result.text;
    }

    TempFolder folder_;
};

}  // namespace test
