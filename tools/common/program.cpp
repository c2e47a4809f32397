#include "common/program.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>

#include "common/output.h"
#include "common/signals.h"

extern char** environ;

namespace tools {
namespace {

constexpr int kMostQuiet = 300'000;  // ms without output
constexpr int kLook = 100;           // ms between two looks for a wish to stop

// Reads until the end. Returns what went wrong, or nothing.
std::string TakeAll(int pipe, const std::function<bool(const char*, size_t)>& take) {
    std::vector<char> buffer(size_t{1} << 16);
    for (int quiet = 0; quiet < kMostQuiet;) {
        pollfd wait = {pipe, POLLIN, 0};
        const int ready = poll(&wait, 1, kLook);
        if (Stopped()) return "interrupted";
        if (ready <= 0) {
            quiet += kLook;
            continue;
        }
        const ssize_t count = read(pipe, buffer.data(), buffer.size());
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return count < 0 ? "its output cannot be read" : "";
        if (!take(buffer.data(), static_cast<size_t>(count))) return "stopped";
        quiet = 0;
    }
    return "it does not answer";
}

pid_t Start(const std::vector<std::string>& arguments, int output, int messages) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, messages, STDERR_FILENO);
    std::vector<char*> argv;
    for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    pid_t process = -1;
    if (posix_spawn(&process, argv[0], &actions, nullptr, argv.data(), environ) != 0) process = -1;
    posix_spawn_file_actions_destroy(&actions);
    return process;
}

}  // namespace

std::string FindProgram(const std::string& name) {
    const char* path = std::getenv("PATH");
    const std::string folders = path ? path : "/usr/local/bin:/usr/bin:/bin";
    for (size_t at = 0; at <= folders.size();) {
        const size_t colon = std::min(folders.find(':', at), folders.size());
        const std::string program = folders.substr(at, colon - at) + "/" + name;
        if (colon > at && folders[at] == '/' && access(program.c_str(), X_OK) == 0) return program;
        at = colon + 1;
    }
    return {};
}

bool ReadProgram(const std::vector<std::string>& arguments,
                 const std::function<bool(const char* bytes, size_t count)>& take, std::string* why) {
    int ends[2];
    const int messages = OpenScratchFile();
    if (messages < 0 || pipe2(ends, O_CLOEXEC) != 0) {
        if (messages >= 0) close(messages);
        return *why = "no file handle is left", false;
    }
    const pid_t process = Start(arguments, ends[1], messages);
    close(ends[1]);
    *why = process < 0 ? "it cannot be started" : TakeAll(ends[0], take);
    close(ends[0]);
    int status = -1;
    if (process > 0) {
        if (!why->empty()) kill(process, SIGKILL);
        while (waitpid(process, &status, 0) < 0 && errno == EINTR) {
        }
    }
    const bool good = why->empty() && WIFEXITED(status) && WEXITSTATUS(status) == 0;
    if (!good && why->empty()) *why = LastLine(messages);
    if (!good && why->empty()) *why = "it failed";
    close(messages);
    return good;
}

std::string LastLine(int file) {
    constexpr off_t kTail = 4096;
    std::string text(kTail, '\0');
    const off_t size = lseek(file, 0, SEEK_END);
    const ssize_t count = pread(file, text.data(), kTail, std::max<off_t>(size - kTail, 0));
    text.resize(static_cast<size_t>(std::max<ssize_t>(count, 0)));
    text.resize(text.find_last_not_of("\r\n ") + 1);
    return text.substr(text.find_last_of("\r\n") + 1);
}

}  // namespace tools
