// Takes any bytes as a chart for the checker and all of its reports.
#include <sys/mman.h>
#include <unistd.h>

#include "check_reports.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const int file = memfd_create("chart", 0);
    if (file < 0 || write(file, data, size) != static_cast<ssize_t>(size)) std::abort();
    fuzz::CheckReports("/proc/self/fd/" + std::to_string(file), size);
    close(file);
    return 0;
}
