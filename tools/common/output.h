// Where a tool's result goes: a file that appears under its name only when it is whole, a pipe or a device,
// or standard output. output_rules.h says which files may be written.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace tools {

// Each operation returns false when it fails; error() then says why, with the name. Without Commit a file
// vanishes with this object. Symbolic links are followed and kept; a file that is replaced keeps its mode
// and, where the user may, its owner.
class Output {
public:
    Output() = default;
    ~Output();
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    bool Open(const std::string& name);  // "-": standard output
    // A regular file in any case, path() long, for another program to write; Commit brings it to its place.
    bool OpenForProgram(const std::string& name);
    // An open file that stays the caller's; for scratch files.
    void OpenDescriptor(int fd);

    bool Write(const void* bytes, size_t count);  // buffered
    bool WriteZeros(uint64_t count);              // takes no room on the disk where the file may have holes
    bool Seek(int64_t place);                     // from the start; if seekable
    bool Sync();  // what is written reaches the disk before Commit replaces a file
    bool Commit();
    bool seekable() const { return seekable_; }
    const std::string& path() const { return temporary_; }
    const std::string& error() const { return error_; }

private:
    bool CreateBeside(const std::string& target);
    bool CloseHole();
    bool CopyTo(int to);
    bool Flush();
    bool WriteThrough(int fd, const char* bytes, size_t count);
    bool Fail(const char* why = nullptr);  // null: what errno says

    std::string name_, target_, temporary_, error_;
    std::vector<char> buffer_;
    int fd_ = -1;
    bool owned_ = false, seekable_ = false, in_place_ = false;
    bool hole_ = false;  // zeros were passed over, and nothing was written after them
};

// The whole file. False with a reason when it cannot be read or has more than limit bytes.
bool ReadFile(const std::string& path, uint64_t limit, std::vector<uint8_t>* bytes, std::string* why);

// What the mask that the program was started with leaves of the mode. Safe on any thread.
mode_t ModeOfNew(mode_t most);

// A file without a name in the folder for temporary files, or -1.
int OpenScratchFile();

}  // namespace tools
