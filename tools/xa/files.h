// Files of the XA tool: whole reading, and output that appears under its name only when it is complete.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace xa {

// False with a reason when it cannot be read or has more than limit bytes.
bool ReadFile(const std::string& path, uint64_t limit, std::vector<uint8_t>* bytes, std::string* why);

// A new file beside the one it is to become. Without Commit it vanishes with this object.
class PendingFile {
public:
    PendingFile() = default;
    ~PendingFile();
    PendingFile(const PendingFile&) = delete;
    PendingFile& operator=(const PendingFile&) = delete;
    bool Open(const std::string& path, std::string* why);
    bool Write(const void* bytes, size_t count, std::string* why);
    bool Commit(std::string* why);  // to the disk, then under its name; replaces a file that was there
    int fd() const { return fd_; }

private:
    int fd_ = -1;
    std::string target_, temporary_;
};

}  // namespace xa
