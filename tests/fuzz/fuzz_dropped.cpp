// Takes any bytes as what a file manager drops: a list of URIs or paths.
#include <cstdint>
#include <cstdlib>

#include "host/desktop/dropped.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    const std::string path = host::desktop::DroppedPath(text);
    if (!path.empty() && (path[0] != '/' || path.find('\0') != path.npos)) std::abort();
    // A plain path among comments and foreign URIs is found as it stands.
    const bool found = host::desktop::DroppedPath("#" + text.substr(0, text.find_first_of("\r\n")) +
                                                  "\r\nhttp://a/b\n/plain%20\n" + text) == "/plain%20";
    return found ? 0 : (std::abort(), 0);
}
