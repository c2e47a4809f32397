// Other programs, run for what they print.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace tools {

// The path of a program in PATH; empty when it is not installed. Elements that are empty or relative are
// passed over: the working directory may be a stranger's package.
std::string FindProgram(const std::string& name);

// Runs the program at the path arguments[0], without input, and hands over what it writes to standard output
// as it comes. Ends it when `take` returns false, when nothing comes for five minutes, and on a wish to stop.
// False unless it succeeds and all was taken; *why is then its last line of standard error, or what happened.
bool ReadProgram(const std::vector<std::string>& arguments,
                 const std::function<bool(const char* bytes, size_t count)>& take, std::string* why);

// The last line of the text in an open file; its end when that is long.
std::string LastLine(int file);

}  // namespace tools
