// Private to the stand-ins. Converts this machine's paths to names as the system takes them.
#pragma once

#include <string>

// Made absolute with the working directory; nothing is resolved. Unchanged when the working directory no
// longer exists.
std::string AbsolutePath(const std::string& path);

// The folder part of a path, without a closing `/` except for the root. Empty when there is none.
std::string FolderOf(const std::string& path);

// The name by which the system opens a file of this machine: absolute, separated by `\`, in UTF-8 where the
// disk has CP932. The path may be relative.
//
// The system joins a chart's folder and the names of its sounds in 260 bytes, and takes everything up to the
// last `\` for that folder. So if the folder would need most of these bytes, or contains a `\` in one of its
// names, it becomes the working directory and the returned name is relative to it.
std::string HandOver(const std::string& path);
