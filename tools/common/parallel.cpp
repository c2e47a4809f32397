#include "common/parallel.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <map>
#include <thread>

#include "common/output.h"
#include "common/signals.h"

namespace tools {
namespace {

struct Worker {
    size_t index;
    int printed;  // an open file
};

[[noreturn]] void RunWorker(const std::function<int(size_t)>& job, const Worker& worker, pid_t parent) {
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (getppid() != parent) _exit(255);
    dup2(worker.printed, STDOUT_FILENO);
    dup2(worker.printed, STDERR_FILENO);
    const int code = job(worker.index);
    std::fflush(nullptr);
    _exit(code);
}

std::string ReadPrinted(int fd) {
    constexpr size_t kMost = 1 << 20;
    std::string text(kMost, '\0');
    const ssize_t count = fd < 0 ? 0 : pread(fd, text.data(), text.size(), 0);
    text.resize(static_cast<size_t>(std::max<ssize_t>(count, 0)));
    if (fd >= 0) close(fd);
    return text;
}

class Pool {
public:
    Pool(const std::function<int(size_t)>& job, const std::function<void(size_t, const JobResult&)>& done)
        : job_(job), done_(done) {}

    void Run(size_t count) {
        const size_t most = std::max(1u, std::thread::hardware_concurrency());
        for (size_t next = 0; (next < count && !Stopped()) || !workers_.empty();) {
            if (next < count && !Stopped() && workers_.size() < most)
                Start(next++);
            else if (!Collect())
                usleep(1000);
        }
    }

private:
    void Start(size_t index) {
        std::fflush(nullptr);
        const Worker worker = {index, OpenScratchFile()};
        const pid_t parent = getpid(), pid = worker.printed < 0 ? -1 : fork();
        if (pid == 0) RunWorker(job_, worker, parent);
        if (pid > 0)
            workers_[pid] = worker;
        else
            Finish(worker, {255, false, "cannot create a process\n"});
    }

    // False when no worker has ended.
    bool Collect() {
        int status = 0;
        if (Stopped()) {
            for (const auto& [pid, worker] : workers_) kill(pid, SIGTERM);
        }
        const pid_t pid = waitpid(-1, &status, WNOHANG);
        const auto found = workers_.find(pid);
        if (found == workers_.end()) return false;
        const Worker worker = found->second;
        workers_.erase(found);
        const bool crashed = WIFSIGNALED(status);
        Finish(worker, {crashed ? WTERMSIG(status) : WEXITSTATUS(status), crashed, ""});
        return true;
    }

    void Finish(const Worker& worker, JobResult result) {
        result.printed += ReadPrinted(worker.printed);
        results_[worker.index] = std::move(result);
        for (auto first = results_.begin(); first != results_.end() && first->first == next_done_;) {
            done_(next_done_++, first->second);
            first = results_.erase(first);
        }
    }

    const std::function<int(size_t)>& job_;
    const std::function<void(size_t, const JobResult&)>& done_;
    std::map<pid_t, Worker> workers_;
    std::map<size_t, JobResult> results_;  // that wait for an earlier one
    size_t next_done_ = 0;
};

}  // namespace

void RunParallel(size_t count, const std::function<int(size_t)>& job,
                 const std::function<void(size_t, const JobResult&)>& done) {
    Pool(job, done).Run(count);
}

}  // namespace tools
