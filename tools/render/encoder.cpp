#include "render/encoder.h"

#include <fcntl.h>
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

namespace render {

std::string FindEncoder() {
    const char* path = std::getenv("PATH");
    const std::string folders = path ? path : "/usr/local/bin:/usr/bin:/bin";
    for (size_t at = 0; at <= folders.size();) {
        const size_t colon = std::min(folders.find(':', at), folders.size());
        const std::string program = folders.substr(at, colon - at) + "/ffmpeg";
        // An empty element would mean the working directory, which may be a stranger's package.
        if (colon > at && access(program.c_str(), X_OK) == 0) return program;
        at = colon + 1;
    }
    return {};
}

Encoder::~Encoder() {
    Finish();
    if (messages_ >= 0) close(messages_);
}

bool Encoder::Start(const std::vector<std::string>& arguments, int inherited) {
    int ends[2];
    messages_ = tools::OpenScratchFile();
    if (messages_ < 0 || pipe2(ends, O_CLOEXEC) != 0) return false;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, messages_, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, messages_, STDERR_FILENO);
    posix_spawn_file_actions_adddup2(&actions, inherited, inherited);  // clears its close-on-exec flag
    std::vector<char*> argv;
    for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    const int error = posix_spawn(&pid_, FindEncoder().c_str(), &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(ends[0]);
    pipe_ = ends[1];
    if (error) pid_ = -1;
    return !error;
}

bool Encoder::Write(const void* bytes, size_t count) {
    const char* at = static_cast<const char*>(bytes);
    while (count > 0) {
        const ssize_t written = write(pipe_, at, count);
        if (written < 0 && errno == EINTR && !tools::Stopped()) continue;
        if (written < 0) return false;
        at += written;
        count -= static_cast<size_t>(written);
    }
    return true;
}

bool Encoder::Finish() {
    if (pipe_ >= 0) close(pipe_);
    pipe_ = -1;
    if (pid_ < 0) return false;
    if (tools::Stopped()) kill(pid_, SIGTERM);
    int status = 0;
    while (waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
        if (tools::Stopped()) kill(pid_, SIGTERM);
    }
    pid_ = -1;
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

std::string Encoder::Message() const {
    constexpr off_t kTail = 4096;
    std::string text(kTail, '\0');
    const off_t size = lseek(messages_, 0, SEEK_END);
    const ssize_t count = pread(messages_, text.data(), kTail, std::max<off_t>(size - kTail, 0));
    text.resize(static_cast<size_t>(std::max<ssize_t>(count, 0)));
    text.resize(text.find_last_not_of("\r\n ") + 1);
    return text.substr(text.find_last_of("\r\n") + 1);
}

}  // namespace render
