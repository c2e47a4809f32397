#include "common/parallel.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace {

// The outputs and results of 50 items; item 7 kills its process when that is not the test's own.
std::string RunAll(unsigned processes, size_t last, bool deadly) {
    std::string all;
    const pid_t test = getpid();
    const auto job = [&](size_t item, const tools::Sink& sink) -> std::string {
        if (item == 7 && deadly && getpid() != test) _exit(1);
        if (item % 5 == 0) usleep(2000);
        for (size_t i = 0; i < item % 3; ++i)
            sink(std::string(item % 4 * 100'000, static_cast<char>('a' + i)));
        return " result of " + std::to_string(item) + "\n";
    };
    tools::RunInOrder(50, processes, job,
                      {[&](size_t item, std::string_view piece) { all += piece; },
                       [&](size_t item, const std::string* result) {
                           all += result ? *result : "died\n";
                           return item < last;
                       }});
    return all;
}

TEST(Parallel, OrderDoesNotDependOnProcesses) {
    const std::string one = RunAll(1, 50, false);
    EXPECT_TRUE(one.ends_with("a result of 49\n"));
    EXPECT_TRUE(RunAll(4, 50, false) == one);
}

TEST(Parallel, DeadProcessCostsOnlyItsItem) {
    std::string want = RunAll(1, 50, false);
    const std::string seven = std::string(300'000, 'a') + " result of 7\n";
    ASSERT_NE(want.find(seven), std::string::npos);
    want.replace(want.find(seven), seven.size(), "died\n");
    EXPECT_TRUE(RunAll(3, 50, true) == want);
}

TEST(Parallel, StopsWhenTold) {
    EXPECT_TRUE(RunAll(3, 20, false).ends_with(" result of 20\n"));
}

}  // namespace
