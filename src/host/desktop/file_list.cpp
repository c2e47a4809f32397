#include "host/desktop/file_list.h"

#include <dirent.h>
#include <iconv.h>
#include <sys/stat.h>

#include <algorithm>
#include <cctype>
#include <climits>
#include <cstdlib>

namespace host::desktop {
namespace {

char Lower(char c) {
    return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

// `*` and `?` only. Backtracks to the last `*` alone, so it needs at most length squared steps.
bool FitsOne(const std::string& name, const std::string& pattern) {
    size_t n = 0, p = 0, star = std::string::npos, retry = 0;
    while (n < name.size()) {
        if (p < pattern.size() && (pattern[p] == '?' || Lower(pattern[p]) == Lower(name[n])) &&
            pattern[p] != '*') {
            ++n, ++p;
        } else if (p < pattern.size() && pattern[p] == '*') {
            star = p++;
            retry = n;
        } else if (star != std::string::npos) {
            p = star + 1;
            n = ++retry;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == '*') ++p;
    return p == pattern.size();
}

// False when the bytes are not valid in that encoding.
bool Convert(const std::string& from, const char* encoding, std::string* out) {
    iconv_t converter = iconv_open("UTF-8", encoding);
    if (converter == reinterpret_cast<iconv_t>(-1)) return false;
    std::string buffer(from.size() * 4 + 4, '\0');
    char* in = const_cast<char*>(from.data());
    char* to = buffer.data();
    size_t in_left = from.size(), out_left = buffer.size();
    const bool good =
        iconv(converter, &in, &in_left, &to, &out_left) != static_cast<size_t>(-1) && in_left == 0;
    iconv_close(converter);
    if (good) *out = buffer.substr(0, buffer.size() - out_left);
    return good;
}

bool Before(const FileEntry& a, const FileEntry& b) {
    if (a.folder != b.folder) return a.folder;
    return std::lexicographical_compare(
        a.shown.begin(), a.shown.end(), b.shown.begin(), b.shown.end(), [](char x, char y) {
            return static_cast<unsigned char>(Lower(x)) < static_cast<unsigned char>(Lower(y));
        });
}

}  // namespace

bool FitsPatterns(const std::string& name, const std::string& patterns) {
    if (patterns.empty()) return true;
    for (size_t at = 0; at <= patterns.size();) {
        const size_t end = std::min(patterns.find(';', at), patterns.size());
        if (end > at && FitsOne(name, patterns.substr(at, end - at))) return true;
        at = end + 1;
    }
    return false;
}

std::string ShownName(const std::string& name) {
    std::string shown;
    for (const char* encoding : {"UTF-8", "CP932", "ISO-8859-1"}) {
        if (Convert(name, encoding, &shown)) break;
    }
    return shown;
}

bool IsFolder(const std::string& path) {
    struct stat info;
    return stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

bool IsFile(const std::string& path) {
    struct stat info;
    return stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode);
}

std::string JoinPath(const std::string& folder, const std::string& name) {
    if (!name.empty() && name[0] == '/') return name;
    return folder.empty() || folder.back() == '/' ? folder + name : folder + "/" + name;
}

std::string ParentFolder(const std::string& folder) {
    const size_t slash = folder.find_last_of('/');
    return slash == std::string::npos || slash == 0 ? "/" : folder.substr(0, slash);
}

std::string AbsoluteFolder(const std::string& folder) {
    const char* home = std::getenv("HOME");
    for (const std::string& candidate :
         {folder.empty() ? std::string(".") : folder, std::string(home ? home : "/")}) {
        char resolved[PATH_MAX];
        if (IsFolder(candidate) && realpath(candidate.c_str(), resolved)) return resolved;
    }
    return "/";
}

std::vector<FileEntry> ListFolder(const std::string& folder, const std::string& patterns) {
    std::vector<FileEntry> entries;
    DIR* dir = opendir(folder.c_str());
    if (!dir) return entries;
    while (const dirent* item = readdir(dir)) {
        FileEntry entry;
        entry.name = item->d_name;
        if (entry.name[0] == '.') continue;
        const std::string path = JoinPath(folder, entry.name);
        entry.folder = item->d_type == DT_DIR || (item->d_type != DT_REG && IsFolder(path));
        if (!entry.folder && !FitsPatterns(entry.name, patterns)) continue;
        if (!entry.folder && item->d_type != DT_REG && !IsFile(path)) continue;
        entry.shown = ShownName(entry.name);
        entries.push_back(entry);
    }
    closedir(dir);
    std::sort(entries.begin(), entries.end(), Before);
    if (folder != "/") entries.insert(entries.begin(), {"..", "..", true});
    return entries;
}

}  // namespace host::desktop
