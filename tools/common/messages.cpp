#include "common/messages.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>

#include "common/terminal.h"

namespace tools {
namespace {

const char* g_program = "lumetra";

// For threads, whose exceptions nobody catches.
[[noreturn]] void OnTerminate() {
    try {
        if (const std::exception_ptr error = std::current_exception()) std::rethrow_exception(error);
    } catch (const std::bad_alloc&) {
        _exit(ComplainOfMemory());
    } catch (...) {
    }
    std::abort();
}

}  // namespace

int RunTool(const char* name, int (*run)(int argc, char** argv), int argc, char** argv) {
    SetProgram(name);
    std::set_terminate(OnTerminate);
    try {
        return run(argc, argv);
    } catch (const std::bad_alloc&) {
        return ComplainOfMemory();
    }
}

int ComplainOfMemory() {
    std::fprintf(stderr, "%s: there is not enough memory\n", g_program);
    return kOutOfMemory;
}

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
