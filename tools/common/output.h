// Where a tool's result goes: a file that appears under its name only when it is whole, or standard output.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace tools {

// Each operation returns false when it fails; error() then says why, with the name. Without Commit the file
// vanishes with this object.
class Output {
public:
    Output() = default;
    ~Output();
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    bool Open(const std::string& name);             // "-": standard output
    bool Write(const void* bytes, size_t count);    // buffered
    bool Rewrite(const void* bytes, size_t count);  // at the head of what has been written; if seekable
    bool Commit();                                  // under its name; replaces a file that was there
    bool seekable() const { return name_ != "-"; }
    const std::string& error() const { return error_; }

private:
    bool Create();
    bool Flush();
    bool WriteThrough(const char* bytes, size_t count);
    bool Fail(const char* why = nullptr);  // null: what errno says

    std::string name_, target_, temporary_, error_;
    std::vector<char> buffer_;
    int fd_ = -1;
};

// The whole file. False with a reason when it cannot be read or has more than limit bytes.
bool ReadFile(const std::string& path, uint64_t limit, std::vector<uint8_t>* bytes, std::string* why);

}  // namespace tools
