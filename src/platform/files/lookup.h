// Looking names up, from several threads at once: a package is read ahead while its loader opens files.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/files/files.h"

// The file that a name stands for (pathmatch.h), opened; null when there is none.
FileStream* OpenNamed(const std::string& name);

// Its path on this machine; empty when there is none.
std::string FindNamed(const std::string& name);

// SiblingPaths of pathmatch.h.
std::vector<std::string> FindSiblings(std::string_view name, const std::vector<std::string_view>& endings);

// Drops what is remembered of folders.
void ForgetLookups();
