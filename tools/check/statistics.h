// What was found in all charts together.
#pragma once

#include <string>

#include "check/json.h"
#include "check/subject.h"

namespace check {

// Plain bytes: results travel between processes.
struct Statistics {
    int64_t charts = 0, unreadable = 0;
    int64_t with_errors = 0, with_warnings = 0;  // the latter without errors
    int64_t codes[std::size(kCodes)] = {};       // findings

    void Count(const Findings& findings);
    void Add(const Statistics& other);
};

void WriteStatisticsText(const Statistics& statistics, std::string* out);
void WriteStatisticsJson(const Statistics& statistics, Json* json);  // a member `statistics`

}  // namespace check
