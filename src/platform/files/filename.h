// Private to the stand-ins. Converts this machine's paths to names as the system takes them.
#pragma once

#include <string>

// Made absolute with the working directory; nothing is resolved. Unchanged when the working directory no
// longer exists.
std::string AbsolutePath(const std::string& path);

// The folder part of a path, without a closing `/` except for the root. Empty when there is none.
std::string FolderOf(const std::string& path);

// The name by which the system is to open a file of this machine: absolute, with `\` between its parts, in
// UTF-8 where the disk has CP932. The system joins the names of sounds to a chart's folder in 260 bytes, and
// takes what ends at the last `\` for that folder. So a path that would take most of them, or that has a `\`
// of its own, is handed over as an alias (alias.h). The path may be relative itself.
std::string HandOver(const std::string& path);
