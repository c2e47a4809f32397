// What a tool tells its user.
#pragma once

#include <string>

namespace tools {

// The name in front of each complaint, such as "lumetra-xa". A text that outlives the program.
void SetProgram(const char* name);
const char* Program();

// The main function of a tool. When memory runs out, what was begun is undone, the user is told, and the exit
// code is that of a failed output, which is the same for all tools.
constexpr int kOutOfMemory = 3;
int RunTool(const char* name, int (*run)(int argc, char** argv), int argc, char** argv);
// Says that memory has run out, and allocates nothing. Returns kOutOfMemory.
int ComplainOfMemory();

// "PROGRAM: TEXT" as one line on standard error, cleaned for a terminal. Returns the code, for use in a
// return statement.
int Complain(int code, const std::string& text);

// Complains and points at --help.
int WrongUse(int code, const std::string& text);

}  // namespace tools
