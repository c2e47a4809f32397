// Why the player refuses a chart.
#pragma once

#include <string>
#include <string_view>

namespace report {

// For a chart that CBMS::Load could not read. path: of this machine.
std::string WhyUnreadable(const std::string& path);

// For a chart that was read and that CBMS::Compile refused. text: the file, or its first megabyte.
std::string WhyRefused(std::string_view text);
std::string WhyRefusedFile(const std::string& path);

}  // namespace report
