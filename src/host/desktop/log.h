#pragma once

#include <string>

namespace host::desktop {

// Logs a line of the host itself, which ends with a line feed, to where DebugText writes.
void Log(const std::string& line);

}  // namespace host::desktop
