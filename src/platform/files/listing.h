// What folders hold, read once for each and kept until it is dropped.
#pragma once

#include <string>
#include <string_view>
#include <vector>

// Names of a folder (in the disk's form, with its closing `/`, or empty for the working directory) that have
// the key of FoldName, sorted. Empty also when the folder cannot be read. Valid until ForgetFolders.
const std::vector<std::string>& NamesInFolder(const std::string& folder, const std::string& key);

void ForgetFolders();

// Folders that have been read since the last ForgetFolders.
size_t FoldersRead();
