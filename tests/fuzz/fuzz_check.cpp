// Takes any bytes as a chart for the checker and all of its reports.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>

#include "check/report.h"
#include "platform/files/text.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const int file = memfd_create("chart", 0);
    if (file < 0 || write(file, data, size) != static_cast<ssize_t>(size)) std::abort();
    std::string why, report;
    auto subject = std::make_unique<check::Subject>("/proc/self/fd/" + std::to_string(file));
    if (size % 2 != 0) subject->modern.emplace();
    if (!check::CheckChart(subject.get(), &why)) std::abort();
    close(file);
    check::WriteText(*subject, {.notes = true, .all = size % 4 < 2}, &report);
    check::WriteJson(*subject, &report);
    check::WriteSarif(*subject, &report);
    check::WriteGithub(*subject, true, &report);
    if (!IsUtf8(report)) std::abort();
    for (const check::Finding& finding : subject->findings.Kept()) {
        if (finding.place.line < 1 || finding.place.column < 1 || finding.character < 1 ||
            finding.character > finding.place.column)
            std::abort();
    }
    return 0;
}
