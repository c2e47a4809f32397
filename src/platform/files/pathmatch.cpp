#include "platform/files/pathmatch.h"

#include <sys/stat.h>

#include <algorithm>
#include <unordered_map>

#include "platform/files/alias.h"
#include "platform/files/listing.h"
#include "platform/files/namefold.h"
#include "platform/files/text.h"

namespace {

constexpr size_t kMaxPath = 4096;   // bytes of a name, this machine's limit
constexpr size_t kMaxDepth = 256;   // nested folders that are matched
constexpr size_t kMaxFolders = 16;  // folders to which one spelling may refer
constexpr size_t kMaxTries = 64;    // files tried for one name

enum class Reading {
    kMixed,   // well-formed UTF-8 sequences, and two-byte characters elsewhere
    kCp932,   // two-byte characters everywhere
    kSingle,  // every `\` separates
};

size_t CharLength(std::string_view rest, Reading nReading) {
    if (nReading == Reading::kSingle || static_cast<unsigned char>(rest[0]) < 0x80) return 1;
    if (nReading == Reading::kMixed) {
        if (const size_t nLength = Utf8Length(rest)) return nLength;
    }
    const bool bPair = rest.size() > 1 && IsCp932Lead(static_cast<unsigned char>(rest[0])) &&
                       IsCp932Trail(static_cast<unsigned char>(rest[1]));
    return bPair ? 2 : 1;
}

PathParts Split(std::string_view path, Reading nReading) {
    PathParts result;
    result.bAbsolute = !path.empty() && (path[0] == '\\' || path[0] == '/');
    std::string part;
    for (size_t i = 0; i < path.size();) {
        const size_t nLength = CharLength(path.substr(i), nReading);
        if (nLength == 1 && (path[i] == '\\' || path[i] == '/')) {
            if (!part.empty()) result.parts.push_back(std::move(part));
            part.clear();
        } else {
            part.append(path.substr(i, nLength));
        }
        i += nLength;
    }
    if (!part.empty()) result.parts.push_back(std::move(part));
    return result;
}

bool IsFolder(const std::string& path) {
    struct stat info;
    return stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

std::vector<std::string> Keys(const std::string& part) {
    std::vector<std::string> keys = {FoldName(part)};
    std::string asCp932 = FoldName(part, NameEncoding::kCp932);
    if (asCp932 != keys[0]) keys.push_back(std::move(asCp932));
    return keys;
}

// Names in a folder to which a part may refer, except its exact spelling.
std::vector<std::string> SimilarNames(const std::string& folder, const std::string& part) {
    std::vector<std::string> names;
    if (part == "." || part == "..") return names;
    for (const std::string& key : Keys(part)) {
        for (const std::string& name : NamesInFolder(folder, key)) {
            if (name != part) names.push_back(name);
        }
    }
    return names;
}

using Folders = std::vector<std::string>;  // each with a closing `/`; empty for the working directory
std::unordered_map<std::string, Folders> g_resolved;

void AddFolder(Folders* pFolders, std::string folder) {
    if (pFolders->size() < kMaxFolders && IsFolder(folder)) pFolders->push_back(std::move(folder += '/'));
}

std::string ExactFolder(const PathParts& path, size_t nCount) {
    std::string folder = path.bAbsolute ? "/" : path.root;
    for (size_t i = 0; i < nCount; ++i) folder += path.parts[i] + '/';
    return folder;
}

// The folders to which the first nCount parts may refer. A folder with the exact spelling excludes similar
// ones.
const Folders& ResolveFolders(const PathParts& path, size_t nCount) {
    std::string exact = ExactFolder(path, nCount);
    if (const auto it = g_resolved.find(exact); it != g_resolved.end()) return it->second;
    Folders found;
    if (nCount == 0 || IsFolder(exact)) {
        found.push_back(exact);
    } else if (nCount <= kMaxDepth) {
        const std::string& part = path.parts[nCount - 1];
        const Folders parents = ResolveFolders(path, nCount - 1);
        for (const std::string& parent : parents) {
            AddFolder(&found, parent + part);
            for (const std::string& name : SimilarNames(parent, part)) AddFolder(&found, parent + name);
        }
    }
    return g_resolved.emplace(std::move(exact), std::move(found)).first->second;
}

// Folders similar to the last one. For example, when `Sound/` matches the name but `sound/` beside it has the
// file.
Folders SimilarFolders(const PathParts& path, size_t nCount) {
    Folders found;
    if (nCount == 0 || nCount > kMaxDepth) return found;
    const Folders parents = ResolveFolders(path, nCount - 1);
    for (const std::string& parent : parents) {
        for (const std::string& name : SimilarNames(parent, path.parts[nCount - 1]))
            AddFolder(&found, parent + name);
    }
    return found;
}

// Names in a folder to which a part may refer, its exact spelling first.
std::vector<std::string> ListedNames(const std::string& folder, const std::string& part) {
    std::vector<std::string> names;
    for (const std::string& key : Keys(part)) {
        for (const std::string& name : NamesInFolder(folder, key)) {
            if (name == part)
                names.insert(names.begin(), name);
            else
                names.push_back(name);
        }
    }
    return names;
}

std::string Stem(const std::string& name) {
    return name.substr(0, std::min(name.rfind('.'), name.size()));
}

class Search {
public:
    Search(PathTry pfnTry, void* pUser) : m_pfnTry(pfnTry), m_pUser(pUser) {}

    bool Try(const std::string& candidate) {
        return m_nLeft > 0 && (--m_nLeft, m_pfnTry(candidate, m_pUser));
    }

    bool TryIn(const Folders& folders, const std::string& part) {
        for (const std::string& folder : folders) {
            if (Try(folder + part)) return true;
            for (const std::string& name : SimilarNames(folder, part)) {
                if (Try(folder + name)) return true;
            }
        }
        return false;
    }

    bool TrySimilar(const PathParts& path) {
        const size_t nFolders = path.parts.size() - 1;
        return TryIn(ResolveFolders(path, nFolders), path.parts.back()) ||
               TryIn(SimilarFolders(path, nFolders), path.parts.back());
    }

private:
    PathTry m_pfnTry;
    void* m_pUser;
    size_t m_nLeft = kMaxTries;
};

}  // namespace

std::vector<PathParts> CutPath(std::string_view path) {
    std::vector<PathParts> cuts;
    for (const Reading nReading : {Reading::kMixed, Reading::kCp932, Reading::kSingle}) {
        PathParts cut = Split(path, nReading);
        ResolveAlias(&cut);
        if (!cut.parts.empty() && std::find(cuts.begin(), cuts.end(), cut) == cuts.end())
            cuts.push_back(std::move(cut));
    }
    return cuts;
}

std::string JoinPath(const PathParts& path) {
    std::string joined = ExactFolder(path, path.parts.size());
    if (!path.parts.empty()) joined.pop_back();
    return joined;
}

bool MatchPath(std::string_view path, PathTry pfnTry, void* pUser) {
    if (path.size() >= kMaxPath || path.find('\0') != path.npos) return false;
    const std::vector<PathParts> cuts = CutPath(path);
    Search search(pfnTry, pUser);
    // With this machine's separator, a `\` may be part of a name.
    if (path.find('/') != path.npos && path.find('\\') != path.npos && search.Try(std::string(path)))
        return true;
    for (const PathParts& cut : cuts) {
        if (search.Try(JoinPath(cut))) return true;
    }
    for (const PathParts& cut : cuts) {
        if (search.TrySimilar(cut)) return true;
    }
    return false;
}

std::vector<std::string> SiblingPaths(std::string_view path, const std::vector<std::string_view>& endings) {
    struct Location {
        Folders folders;
        std::string stem;
    };
    std::vector<Location> locations;
    std::vector<std::string> found;
    if (path.size() >= kMaxPath || path.find('\0') != path.npos) return found;
    for (const PathParts& cut : CutPath(path)) {
        const size_t nFolders = cut.parts.size() - 1;
        Location location = {ResolveFolders(cut, nFolders), Stem(cut.parts.back())};
        for (std::string& folder : SimilarFolders(cut, nFolders))
            location.folders.push_back(std::move(folder));
        if (!location.stem.empty()) locations.push_back(std::move(location));
    }
    for (const std::string_view ending : endings) {
        for (const Location& location : locations) {
            const std::string part = location.stem + std::string(ending);
            for (const std::string& folder : location.folders) {
                for (const std::string& name : ListedNames(folder, part)) found.push_back(folder + name);
            }
        }
    }
    if (found.size() > kMaxTries) found.resize(kMaxTries);
    return found;
}

void ForgetPaths() {
    g_resolved.clear();
    ForgetFolders();
}
