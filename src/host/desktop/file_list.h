// What the file dialog lists. File names are bytes; what is shown of them is UTF-8.
#pragma once

#include <string>
#include <vector>

namespace host::desktop {

struct FileEntry {
    std::string name;   // as on the disk
    std::string shown;  // valid UTF-8
    bool folder = false;
};

// Folders first, then the files that fit, both by name; empty when the folder cannot be read. patterns:
// "*.bms;*.bme", letter case does not matter, empty for all. Names that begin with a dot are left out, but
// `..` is there.
std::vector<FileEntry> ListFolder(const std::string& folder, const std::string& patterns);

bool FitsPatterns(const std::string& name, const std::string& patterns);

// Bytes that are no UTF-8 are taken as CP932, and as Latin-1 when they are not that either.
std::string ShownName(const std::string& name);

std::string JoinPath(const std::string& folder,
                     const std::string& name);  // name as it is when it begins with `/`
std::string ParentFolder(const std::string& folder);
bool IsFolder(const std::string& path);
bool IsFile(const std::string& path);
std::string AbsoluteFolder(const std::string& folder);  // of one that exists, else the user's home, else "/"

}  // namespace host::desktop
