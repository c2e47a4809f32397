#pragma once

#include <string>

namespace host::desktop {

void Log(
    const std::string& line);  // a line of the host's own, closed by a line feed, to where DebugText writes

}  // namespace host::desktop
