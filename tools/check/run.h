// Checks the charts of a command line and writes the report.
#pragma once

#include "check/options.h"

namespace check {

enum ExitCode { kClean = 0, kFindings = 1, kUnreadable = 2, kOutput = 3 };

// Writes to standard output. Returns the highest exit code of all charts.
int CheckAll(const Options& options);

}  // namespace check
