// One job for each of many files, on all cores.
#pragma once

#include <cstddef>
#include <functional>
#include <string>

namespace tools {

// What became of a job. crashed: a signal ended it; code is then that signal.
struct JobResult {
    int code = 0;
    bool crashed = false;
    std::string printed;  // standard output and error
};

// Runs job(0) to job(count - 1), each in a process of its own, and calls done for each in this order. A job
// returns an exit code below 256. After a wish to stop (signals.h) no further job starts and those that run
// are asked to end.
void RunParallel(size_t count, const std::function<int(size_t)>& job,
                 const std::function<void(size_t, const JobResult&)>& done);

}  // namespace tools
