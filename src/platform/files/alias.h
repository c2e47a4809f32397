// Short names for places that the system's fixed buffers cannot hold: `~1\song.bms` for a chart in a deep
// folder.
#pragma once

#include <string>

struct PathParts;

// A name of this kind for a file of this machine: its folder with the closing `/`, its name, and its name in
// UTF-8. The same file has the same alias for the life of the process. Called while no other thread looks
// files up.
std::string AliasOf(const std::string& folder, const std::string& name, const std::string& shown);

// Replaces an alias at the beginning of a path by what it stands for; any other path stays as it is.
void ResolveAlias(PathParts* pPath);
