// What a file manager drops on the window.
#pragma once

#include <string>

namespace host::desktop {

// The first local file of a list of URIs or paths, one per line; empty when there is none. Absolute, and
// without a NUL.
std::string DroppedPath(const std::string& text);

}  // namespace host::desktop
