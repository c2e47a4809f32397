#include "host/desktop/file_list.h"

#include <FL/fl_utf8.h>
#include <dirent.h>
#include <iconv.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <climits>
#include <cstdlib>
#include <string_view>

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

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

// The digits at `at`, without leading zeros; *at moves behind them.
std::string_view TakeNumber(std::string_view text, size_t* at) {
    while (*at + 1 < text.size() && text[*at] == '0' && IsDigit(text[*at + 1])) ++*at;
    const size_t begin = *at;
    while (*at < text.size() && IsDigit(text[*at])) ++*at;
    return text.substr(begin, *at - begin);
}

// Letter case does not matter, and numbers compare by value: notes9 comes before notes10.
int CompareNames(std::string_view a, std::string_view b) {
    for (size_t i = 0, j = 0;;) {
        if (i == a.size() || j == b.size())
            return static_cast<int>(j == b.size()) - static_cast<int>(i == a.size());
        if (IsDigit(a[i]) && IsDigit(b[j])) {
            const std::string_view x = TakeNumber(a, &i), y = TakeNumber(b, &j);
            if (x.size() != y.size()) return x.size() < y.size() ? -1 : 1;
            if (const int order = x.compare(y)) return order;
            continue;
        }
        const auto x = static_cast<unsigned char>(Lower(a[i++])),
                   y = static_cast<unsigned char>(Lower(b[j++]));
        if (x != y) return x < y ? -1 : 1;
    }
}

bool Before(const FileEntry& a, const FileEntry& b) {
    if (a.folder != b.folder) return a.folder;
    const int order = CompareNames(a.shown, b.shown);
    return order != 0 ? order < 0 : a.name < b.name;
}

// The entry of a folder that is called so: as bytes, as shown, or as shown in other letter case. Empty when
// there is none.
std::string FindEntry(const std::string& folder, const std::string& name) {
    struct stat info;
    if (lstat(JoinPath(folder, name).c_str(), &info) == 0) return name;
    std::string found;
    DIR* dir = opendir(folder.c_str());
    while (const dirent* item = dir ? readdir(dir) : nullptr) {
        const std::string shown = ShownName(item->d_name);
        if (shown != name && (!found.empty() || fl_utf_strcasecmp(shown.c_str(), name.c_str()) != 0))
            continue;
        found = item->d_name;
        if (shown == name) break;
    }
    if (dir) closedir(dir);
    return found;
}

std::string FindPath(const std::string& path) {
    std::string found = "/";
    for (size_t at = 0; at < path.size();) {
        const size_t end = std::min(path.find('/', at), path.size());
        const std::string part = path.substr(at, end - at);
        at = end + 1;
        if (part.empty()) continue;
        const std::string entry = FindEntry(found, part);
        if (entry.empty()) return "";
        found = JoinPath(found, entry);
    }
    return found;
}

std::string WithoutQuotes(const std::string& typed) {
    const size_t first = typed.find_first_not_of(" \t"), last = typed.find_last_not_of(" \t");
    if (first == std::string::npos) return "";
    std::string text = typed.substr(first, last - first + 1);
    if (text.size() >= 2 && text.front() == '"' && text.back() == '"') text = text.substr(1, text.size() - 2);
    return text;
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

bool IsReadable(const std::string& folder) {
    return access(folder.c_str(), R_OK) == 0;
}

std::string FindTyped(const std::string& folder, const std::string& typed, const std::string& extension) {
    std::string name = WithoutQuotes(typed);
    if (name.empty()) return "";
    const char* home = std::getenv("HOME");
    if (home && name[0] == '~' && (name.size() == 1 || name[1] == '/')) name = home + name.substr(1);
    const std::string path = JoinPath(folder, name), found = FindPath(path);
    return found.empty() && !extension.empty() ? FindPath(path + "." + extension) : found;
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
    while (const dirent* item = dir ? readdir(dir) : nullptr) {
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
    if (dir) closedir(dir);
    std::sort(entries.begin(), entries.end(), Before);
    if (folder != "/") entries.insert(entries.begin(), {"..", "..", true});
    return entries;
}

}  // namespace host::desktop
