#include "common/messages.h"

#include <unistd.h>

#include <cstdio>

#include "common/terminal.h"

namespace tools {
namespace {

const char* g_program = "lumetra";

}  // namespace

void SetProgram(const char* name) {
    g_program = name;
}

const char* Program() {
    return g_program;
}

int Complain(int code, const std::string& text) {
    // A line of progress may stand on the terminal.
    const char* start = isatty(STDERR_FILENO) ? "\r" : "";
    std::fprintf(stderr, "%s%s: %s\n", start, g_program, CleanText(text).c_str());
    return code;
}

int WrongUse(int code, const std::string& text) {
    Complain(code, text);
    std::fprintf(stderr, "Try '%s --help'.\n", g_program);
    return code;
}

}  // namespace tools
