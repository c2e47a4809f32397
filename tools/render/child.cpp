#include "render/child.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <new>

#include "common/messages.h"
#include "common/output.h"
#include "common/signals.h"

namespace render {
namespace {

[[noreturn]] void RunPassAndExit(const std::function<ExitCode()>& pass, pid_t parent, int printed) {
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (getppid() != parent) _exit(kStopped);
    if (printed >= 0) {
        dup2(printed, STDOUT_FILENO);
        dup2(printed, STDERR_FILENO);
    }
    int code = kOutput;
    try {
        code = pass();
    } catch (const std::bad_alloc&) {  // the parent's outputs are not to be undone here
        code = tools::ComplainOfMemory();
    }
    std::fflush(nullptr);
    _exit(code);
}

std::string TakePrinted(int fd) {
    constexpr size_t kMost = 1 << 20;
    std::string text(kMost, '\0');
    const ssize_t count = pread(fd, text.data(), text.size(), 0);
    text.resize(static_cast<size_t>(std::max<ssize_t>(count, 0)));
    close(fd);
    return text;
}

}  // namespace

ExitCode RunInChild(const std::string& chart, const std::function<ExitCode()>& pass, std::string* printed) {
    std::fflush(nullptr);
    const int file = printed ? tools::OpenScratchFile() : -1;
    const pid_t parent = getpid(), pid = printed && file < 0 ? -1 : fork();
    if (pid < 0) return Complain(kOutput, "cannot create a process");
    if (pid == 0) RunPassAndExit(pass, parent, file);
    // Polls, because a signal that comes just before a blocking wait would not end it.
    int status = 0;
    while (waitpid(pid, &status, WNOHANG) == 0) {
        if (tools::Stopped()) kill(pid, SIGTERM);
        usleep(1000);
    }
    if (printed) *printed = TakePrinted(file);
    if (WIFEXITED(status)) return static_cast<ExitCode>(WEXITSTATUS(status));
    return Complain(kOutput, chart + ": the renderer crashed, signal " + std::to_string(WTERMSIG(status)));
}

}  // namespace render
