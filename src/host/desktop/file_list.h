// What the file dialog lists. File names are bytes; their shown form is UTF-8.
#pragma once

#include <string>
#include <vector>

namespace host::desktop {

struct FileEntry {
    std::string name;   // as on the disk
    std::string shown;  // valid UTF-8
    bool folder = false;
};

// Folders first, then the files that match, both sorted by name with numbers by value; only `..` when the
// folder cannot be read. patterns: "*.bms;*.bme", in any letter case; empty matches all. Leaves out names
// that begin with a dot, except `..`.
std::vector<FileEntry> ListFolder(const std::string& folder, const std::string& patterns);

bool FitsPatterns(const std::string& name, const std::string& patterns);

// Decodes a name as UTF-8, else as CP932, else as Latin-1.
std::string ShownName(const std::string& name);

// name unchanged when it begins with `/`.
// The existing file or folder that a user means by what he typed while in `folder`, empty when there is none:
// blanks and double quotes around it go, `~` is his home, letter case does not matter where no name is exact,
// and a name that is not there is tried with the extension.
std::string FindTyped(const std::string& folder, const std::string& typed, const std::string& extension);

std::string JoinPath(const std::string& folder, const std::string& name);
std::string ParentFolder(const std::string& folder);
bool IsFolder(const std::string& path);
bool IsFile(const std::string& path);
bool IsReadable(const std::string& folder);
// The folder's real path when it exists, else the user's home, else "/".
std::string AbsoluteFolder(const std::string& folder);

}  // namespace host::desktop
