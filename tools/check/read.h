// Reads the lines of a chart as the player does and says where it passes over something.
#pragma once

#include "check/finding.h"
#include "check/tables.h"

namespace check {

// text: as ReadChartText gives it. chart_path: as it is given to the player.
void ReadLines(const char* text, int64_t size, const char* chart_path, Tables* tables, Findings* findings);

}  // namespace check
