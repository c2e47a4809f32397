// Builds the system's single command line from this machine's argument vector.
#pragma once

#include <string>

// Whether an argument before the chart's name is an option.
bool IsOptionArgument(const std::string& argument);

// The command line without the program's name: options as they are, from the first argument that is none on
// the chart's file name, in quotes, absolute and with `\` between its parts. An argument that begins with `/`
// and names an existing file, or holds a second `/`, is a path and no option. A path too long for
// the system's buffers is handed over as an alias. The next file dialog begins in the file's folder.
std::string BuildCommandLine(int argc, const char* const* argv);
