#include "render/encoder.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

#include "common/output.h"
#include "common/program.h"
#include "common/signals.h"

extern char** environ;

namespace render {

std::string FindEncoder() {
    return tools::FindProgram("ffmpeg");
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
    return tools::LastLine(messages_);
}

}  // namespace render
