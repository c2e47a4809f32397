// The charts that a command line means.
#pragma once

#include <string>
#include <vector>

#include "check/report.h"
#include "platform/byteblock.h"

namespace check {

// All that standard input holds. Returns an error message, or an empty string.
std::string ReadStandardInput(SharedBytes* bytes);

// Files as they are given, folders replaced by the charts in them and below, sorted by name. Hidden folders
// and links to folders are skipped. Adds a failure for each folder that cannot be read or has no
// charts.
std::vector<std::string> CollectCharts(const std::vector<std::string>& names, std::vector<Failure>* failures);

}  // namespace check
