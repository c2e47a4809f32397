// Plays each chart of this folder and compares what happens with the transcript beside it. With
// LUMETRA_WRITE_TRACES set the transcripts are written anew, for review: the inputs they hold are all it
// takes.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

#include "charts/session.h"
#include "support/tempfolder.h"

namespace {

namespace fs = std::filesystem;

// The first line that differs, and in it the first field.
std::string FirstDifference(const std::string& wanted, const std::string& found) {
    std::istringstream a(wanted), b(found);
    std::string was, is, event;
    for (int number = 1;; ++number) {
        const bool more = !!std::getline(a, was), too = !!std::getline(b, is);
        if (!more && !too) return "";
        if (was.rfind("> ", 0) == 0 || was.rfind("frame ", 0) == 0) event = was;
        if (more == too && was == is) continue;
        std::istringstream left(was), right(is);
        std::string x, y;
        int field = 0;
        do ++field, x = y = "nothing", left >> x, right >> y;
        while (x == y && left && right);
        return "line " + std::to_string(number) + ", after `" + event + "`, field " + std::to_string(field) +
               " is `" + y + "`, not `" + x + "`\n  wanted " + (more ? was : "nothing") + "\n  found  " +
               (too ? is : "nothing");
    }
}

TEST(Charts, PlayAsTheirTracesSay) {
    int count = 0;
    for (const auto& entry : fs::directory_iterator(LUMETRA_CHARTS)) {
        if (entry.path().extension() != ".trace") continue;
        ++count;
        const std::string wanted = test::ReadFile(entry.path());
        const std::string found = Session(fs::path(entry.path()).replace_extension(".bms")).Play(wanted);
        if (std::getenv("LUMETRA_WRITE_TRACES")) std::ofstream(entry.path(), std::ios::binary) << found;
        EXPECT_EQ(FirstDifference(wanted, found), "") << entry.path();
    }
    EXPECT_GE(count, 30);
}

}  // namespace
