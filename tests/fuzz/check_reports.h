// A chart that the checker reads, with all of its reports.
#pragma once

#include <cstdlib>
#include <memory>
#include <string>

#include "check/report.h"
#include "platform/files/text.h"

namespace fuzz {

// choice: whether the chart is compiled first, and which notes the report names.
inline void CheckReports(const std::string& path, size_t choice) {
    std::string why, report;
    auto subject = std::make_unique<check::Subject>(path);
    if (choice % 2 != 0) subject->modern.emplace();
    if (!check::CheckChart(subject.get(), &why)) std::abort();
    check::WriteText(*subject, {.notes = true, .all = choice % 4 < 2}, &report);
    check::WriteJson(*subject, &report);
    check::WriteSarifHead("1", &report);
    check::WriteSarif(*subject, &report);
    check::WriteSarifEnd({{path, why}}, &report);
    check::WriteGithub(*subject, true, &report);
    if (!IsUtf8(report)) std::abort();
    int64_t done = 0;
    subject->edits.ForEach([&](const check::Edit& edit) {
        if (edit.offset < done) std::abort();
        done = edit.offset + edit.length;
    });
    for (const check::Finding& finding : subject->findings.Kept()) {
        if (finding.place.line < 1 || finding.place.column < 1 || finding.character < 1 ||
            finding.character > finding.place.column)
            std::abort();
    }
}

}  // namespace fuzz
