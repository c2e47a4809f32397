// Builds the system's single command line from this machine's argument vector.
#pragma once

#include <string>

// Whether an argument before the chart's name is an option.
bool IsOptionArgument(const std::string& argument);

// The command line without the program's name: options unchanged, then the chart's file name in quotes,
// absolute and separated by `\`. The file name starts at the first argument that is not an option. An
// argument that begins with `/` and names an existing file, or contains a second `/`, is a path, not an
// option.
//
// If the folder is too deep for the system's buffers to hold its sounds' names, the folder becomes the
// working directory and the name is relative to it. The next file dialog opens in the file's folder.
std::string BuildCommandLine(int argc, const char* const* argv);
