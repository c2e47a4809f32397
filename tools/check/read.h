// Reads the lines of a chart as the player does and reports those that it skips or misreads.
#pragma once

#include "check/finding.h"
#include "check/tables.h"

namespace check {

// text: from ReadChartText. chart_path: as the player gets it.
void ReadLines(const char* text, int64_t size, const char* chart_path, Tables* tables, Findings* findings);

}  // namespace check
