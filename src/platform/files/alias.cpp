#include "platform/files/alias.h"

#include <algorithm>
#include <charconv>
#include <vector>

#include "platform/files/pathmatch.h"

namespace {

constexpr size_t kMaxName = 200;  // bytes; longer names get a number too
constexpr size_t kMaxEnding = 8;

struct Folder {
    std::string sPath;                // of this machine, with its closing `/`
    std::vector<std::string> aNames;  // of files that have a number
};
std::vector<Folder> g_folders;

// Its place, 1 for the first.
template <class Items, class Same>
size_t PlaceOf(const Items& items, Same same) {
    return static_cast<size_t>(std::find_if(items.begin(), items.end(), same) - items.begin()) + 1;
}

// The number of `~12` and `~12.bms`; 0 for anything else.
size_t NumberOf(const std::string& part) {
    size_t n = 0;
    if (part.size() < 2 || part[0] != '~') return 0;
    const char* pEnd = part.data() + part.size();
    const auto [p, error] = std::from_chars(part.data() + 1, pEnd, n);
    return error == std::errc() && (p == pEnd || *p == '.') ? n : 0;
}

// `~12.bms` for the name with that number.
std::string Numbered(size_t n, const std::string& name) {
    const size_t nDot = std::min(name.rfind('.'), name.size());
    const std::string ending = name.size() - nDot <= kMaxEnding ? name.substr(nDot) : "";
    return '~' + std::to_string(n) + (ending.find('\\') == ending.npos ? ending : "");
}

std::string NumberedName(Folder* pFolder, const std::string& name) {
    const size_t n = PlaceOf(pFolder->aNames, [&](const std::string& other) { return other == name; });
    if (n > pFolder->aNames.size()) pFolder->aNames.push_back(name);
    return Numbered(n, name);
}

}  // namespace

std::string AliasOf(const std::string& folder, const std::string& name, const std::string& shown) {
    const size_t n = PlaceOf(g_folders, [&](const Folder& other) { return other.sPath == folder; });
    if (n > g_folders.size()) g_folders.push_back({folder, {}});
    const bool bPlain = shown.size() <= kMaxName && shown.find('\\') == shown.npos && NumberOf(shown) == 0;
    return '~' + std::to_string(n) + '\\' + (bPlain ? shown : NumberedName(&g_folders[n - 1], name));
}

void ResolveAlias(PathParts* pPath) {
    if (pPath->bAbsolute || pPath->parts.size() < 2) return;
    const size_t nFolder = NumberOf(pPath->parts[0]);
    if (nFolder == 0 || nFolder > g_folders.size() || pPath->parts[0] != '~' + std::to_string(nFolder))
        return;
    const Folder& folder = g_folders[nFolder - 1];
    pPath->root = folder.sPath;
    pPath->parts.erase(pPath->parts.begin());
    const size_t nName = NumberOf(pPath->parts[0]);
    if (pPath->parts.size() != 1 || nName == 0 || nName > folder.aNames.size()) return;
    const std::string& name = folder.aNames[nName - 1];
    if (pPath->parts[0] == Numbered(nName, name)) pPath->parts[0] = name;
}
