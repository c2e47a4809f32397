#include "host/desktop/dropped.h"

#include <algorithm>

namespace host::desktop {
namespace {

int HexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

std::string DecodePercent(const std::string& text) {
    std::string out;
    for (size_t i = 0; i < text.size(); ++i) {
        const int high = text[i] == '%' && i + 2 < text.size() ? HexDigit(text[i + 1]) : -1;
        const int low = high >= 0 ? HexDigit(text[i + 2]) : -1;
        if (low < 0) {
            out += text[i];
        } else {
            out += static_cast<char>(high * 16 + low);
            i += 2;
        }
    }
    return out;
}

std::string PathOfLine(const std::string& line) {
    static const std::string kScheme = "file:";
    if (line.compare(0, kScheme.size(), kScheme) != 0) return line;
    std::string path = line.substr(kScheme.size());
    if (path.compare(0, 2, "//") == 0) {
        const size_t slash = path.find('/', 2);  // after the host name, which is empty for this machine
        path = slash == std::string::npos ? "" : path.substr(slash);
    }
    return DecodePercent(path);
}

// A name with a NUL would be cut there and mean another file.
bool IsOnThisMachine(const std::string& path) {
    return !path.empty() && path[0] == '/' && path.find('\0') == path.npos;
}

}  // namespace

std::string DroppedPath(const std::string& text) {
    for (size_t at = 0; at < text.size();) {
        const size_t end = std::min(text.find_first_of("\r\n", at), text.size());
        const std::string line = text.substr(at, end - at);
        at = end + 1;
        if (line.empty() || line[0] == '#') continue;
        const std::string path = PathOfLine(line);
        if (IsOnThisMachine(path)) return path;
    }
    return "";
}

}  // namespace host::desktop
