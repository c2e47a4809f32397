// Where a rendering goes: a file that appears under its name only when it is whole, or standard output.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "xa/files.h"

namespace render {

// Each operation tells on standard error why it failed.
class Output {
public:
    bool Open(const std::string& name);             // "-": standard output
    bool Write(const void* bytes, size_t count);    // buffered
    bool Rewrite(const void* bytes, size_t count);  // at the head of what has been written; files only
    bool Commit();
    bool seekable() const { return name_ != "-"; }

private:
    bool Flush();
    bool Fail(const std::string& why) const;

    std::string name_;
    xa::PendingFile file_;
    std::vector<char> buffer_;
};

}  // namespace render
