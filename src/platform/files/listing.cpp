#include "platform/files/listing.h"

#include <dirent.h>

#include <algorithm>
#include <memory>
#include <unordered_map>

#include "platform/files/namefold.h"

namespace {

// No song has this many files. Names beyond the limit are found only by exact spelling.
constexpr size_t kMaxNames = 200'000;

using Listing = std::unordered_map<std::string, std::vector<std::string>>;

std::unordered_map<std::string, Listing> g_folders;

Listing ReadFolder(const std::string& folder) {
    Listing listing;
    const std::unique_ptr<DIR, int (*)(DIR*)> pDir(opendir(folder.empty() ? "." : folder.c_str()), closedir);
    if (!pDir) return listing;
    for (size_t n = 0; n < kMaxNames; ++n) {
        const dirent* pEntry = readdir(pDir.get());
        if (!pEntry) break;
        const std::string_view name = pEntry->d_name;
        if (name == "." || name == "..") continue;
        listing[FoldName(name)].emplace_back(name);
    }
    for (auto& [key, names] : listing) std::sort(names.begin(), names.end());
    return listing;
}

}  // namespace

const std::vector<std::string>& NamesInFolder(const std::string& folder, const std::string& key) {
    static const std::vector<std::string> kNone;
    auto it = g_folders.find(folder);
    if (it == g_folders.end()) it = g_folders.emplace(folder, ReadFolder(folder)).first;
    const auto names = it->second.find(key);
    return names == it->second.end() ? kNone : names->second;
}

void ForgetFolders() {
    g_folders.clear();
}

size_t FoldersRead() {
    return g_folders.size();
}
