#include <cerrno>
#include <cstdlib>
#include <ctime>

#include <sys/prctl.h>
#include <unistd.h>

#include "host/desktop/instances.h"
#include "host/desktop/log.h"
#include "host/host.h"
#include "host/terminal.h"

namespace host {

uint64_t Nanoseconds() {
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<uint64_t>(now.tv_sec) * 1'000'000'000u + static_cast<uint64_t>(now.tv_nsec);
}

void SleepMilliseconds(uint32_t milliseconds) {
    // By default the kernel lets sleeps overrun by 50 microseconds.
    static const int told = prctl(PR_SET_TIMERSLACK, 1000UL);
    (void)told;
    desktop::EndPostedRound();
    timespec end;
    clock_gettime(CLOCK_MONOTONIC, &end);
    end.tv_sec += milliseconds / 1000;
    end.tv_nsec += static_cast<long>(milliseconds % 1000) * 1'000'000;
    if (end.tv_nsec >= 1'000'000'000) ++end.tv_sec, end.tv_nsec -= 1'000'000'000;
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &end, nullptr) == EINTR) {
    }
}

void DebugText(const char* bytes, size_t count) {
    const char* const wanted = std::getenv("LUMETRA_DEBUG");
    if (!wanted || !*wanted) return;
    // Texts name files of strangers. Only the line feed that ends a text is the program's own.
    const bool ends_line = count > 0 && bytes[count - 1] == '\n';
    const std::string text = TerminalText({bytes, count - (ends_line ? 1 : 0)}) + (ends_line ? "\n" : "");
    for (size_t at = 0; at < text.size();) {
        const ssize_t written = write(STDERR_FILENO, text.data() + at, text.size() - at);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return;
        at += static_cast<size_t>(written);
    }
}

void desktop::Log(const std::string& line) {
    DebugText(line.data(), line.size());
}

}  // namespace host
