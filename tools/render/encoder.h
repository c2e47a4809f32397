// The ffmpeg program at the other end of a pipe.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <string>
#include <vector>

namespace render {

std::string FindEncoder();  // its path; empty when it is not installed

class Encoder {
public:
    ~Encoder();
    // inherited: an open file that the program also gets, under the same number.
    bool Start(const std::vector<std::string>& arguments, int inherited);
    bool Write(const void* bytes, size_t count);
    bool Finish();                // true when the program succeeded
    std::string Message() const;  // the last line that it printed

private:
    pid_t pid_ = -1;
    int pipe_ = -1, messages_ = -1;
};

}  // namespace render
