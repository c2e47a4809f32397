// Cached folder listings. Each folder is read once.
#pragma once

#include <string>
#include <string_view>
#include <vector>

// The sorted names in a folder whose FoldName key is `key`. The folder is in the disk's form with a closing
// `/`; empty means the working directory. Empty result also when the folder cannot be read. Valid until
// ForgetFolders.
const std::vector<std::string>& NamesInFolder(const std::string& folder, const std::string& key);

void ForgetFolders();

// Number of folders read since the last ForgetFolders.
size_t FoldersRead();
