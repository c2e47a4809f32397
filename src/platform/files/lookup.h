// Thread-safe lookup of names: threads read ahead while the loader opens files.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/files/files.h"

// Opens the file to which a name refers (pathmatch.h). Null when there is none.
FileStream* OpenNamed(const std::string& name);

// The path of that file on this machine; empty when there is none.
std::string FindNamed(const std::string& name);

// SiblingPaths of pathmatch.h, thread-safe.
std::vector<std::string> FindSiblings(std::string_view name, const std::vector<std::string_view>& endings);

// Drops cached listings.
void ForgetLookups();

// From now on what is looked up is noted, in place of what was noted before.
void NoteLookups();
struct NotedLookups {
    std::vector<std::string> found;    // paths of files, also of siblings
    std::vector<std::string> missing;  // where names that were not found would be, as they are spelled
};
NotedLookups TakeLookups();  // ends the noting
