#include "report/refusal.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>

#include "chart/bms.h"

namespace report {
namespace {

constexpr size_t kHead = 1 << 20;

// A line of a chart begins with `#` and a letter or a digit.
bool HasChartLine(std::string_view text) {
    for (size_t at = 0; at < text.size();) {
        const size_t start = text.find_first_not_of(" \t\r\n", at);
        if (start == text.npos) return false;
        const auto next = static_cast<unsigned char>(start + 1 < text.size() ? text[start + 1] : 0);
        const bool alphanumeric =
            (next >= '0' && next <= '9') || ((next | 0x20) >= 'a' && (next | 0x20) <= 'z');
        if (text[start] == '#' && alphanumeric) return true;
        at = std::min(text.find_first_of("\r\n", start), text.size());
    }
    return false;
}

}  // namespace

std::string WhyUnreadable(const std::string& path) {
    struct stat info = {};
    if (stat(path.c_str(), &info) != 0) return std::strerror(errno);
    if (S_ISDIR(info.st_mode)) return "it is a folder";
    if (!S_ISREG(info.st_mode)) return "it is not a regular file";
    if (info.st_size > BMS_FILE_LIMIT) return "it is larger than 256 MiB";
    if (!std::ifstream(path).is_open()) return std::strerror(errno);
    return "it holds more objects than the player accepts";
}

std::string WhyRefused(std::string_view text) {
    const auto begins = [text](std::string_view bytes) { return text.substr(0, bytes.size()) == bytes; };
    if (text.empty()) return "the file is empty";
    if (begins("\xFF\xFE") || begins("\xFE\xFF")) return "it is UTF-16 text; charts are CP932 or UTF-8";
    if (!HasChartLine(text)) return "it is not a BMS chart";
    if (text.find("\r\n") == text.npos && text.find_first_of("\r\n") != text.npos)
        return "its lines do not end in CR LF, so the player sees a single line";
    return "it has no object after measure 0, so there is nothing to play";
}

std::string WhyRefusedFile(const std::string& path) {
    std::string head(kHead, '\0');
    std::ifstream file(path, std::ios::binary);
    file.read(head.data(), static_cast<std::streamsize>(head.size()));
    head.resize(static_cast<size_t>(file.gcount()));
    return WhyRefused(head);
}

}  // namespace report
