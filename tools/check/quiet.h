// Keeps libraries from writing to the terminal.
#pragma once

#include <cstdio>

namespace check {

// While one exists, what any code prints to the C stream `stderr` is dropped: the MP3 decoder prints a line
// for each damaged frame and cannot be told otherwise. The file descriptor stays as it is. One at a time.
class QuietStderr {
public:
    QuietStderr() : kept_(stderr), nowhere_(std::fopen("/dev/null", "w")) {
        if (nowhere_) stderr = nowhere_;  // an ordinary variable in the GNU C library
    }
    ~QuietStderr() {
        stderr = kept_;
        if (nowhere_) std::fclose(nowhere_);
    }
    QuietStderr(const QuietStderr&) = delete;
    QuietStderr& operator=(const QuietStderr&) = delete;

private:
    FILE* kept_;
    FILE* nowhere_;
};

}  // namespace check
