// What a tool tells its user.
#pragma once

#include <string>

namespace tools {

// The name in front of each complaint, such as "lumetra-xa". A text that outlives the program.
void SetProgram(const char* name);
const char* Program();

// "PROGRAM: TEXT" as one line on standard error, cleaned for a terminal. Returns the code, for use in a
// return statement.
int Complain(int code, const std::string& text);

// Complains and points at --help.
int WrongUse(int code, const std::string& text);

}  // namespace tools
