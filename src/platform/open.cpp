// Opening a file by name: lookup in the files layer, then a substitute, made here or read ahead.
#include <cstring>
#include <unordered_set>

#include "platform/debug.h"
#include "platform/files/files.h"
#include "platform/files/lookup.h"
#include "platform/files/stream.h"
#include "platform/substitutes/readahead.h"
#include "platform/watch.h"

namespace {

ReadAhead g_readAhead;
std::unordered_set<std::string> g_told;  // names whose substitute the log has told

void Tell(const std::string& name, const Substitute& substitute) {
    if ((substitute.path.empty() && substitute.refused.empty()) || !g_told.insert(name).second) return;
    const std::string asked = "Files: " + NameForLog(name) + " not there, ";
    for (const std::string& path : substitute.refused)
        OutputDebugStringA((asked + NameForLog(path) + " cannot be read\n").c_str());
    if (!substitute.path.empty())
        OutputDebugStringA((asked + NameForLog(substitute.path) + " stands for it\n").c_str());
}

FileStream* OpenSubstitute(const std::string& name) {
    const std::shared_ptr<const Substitute> pSubstitute = g_readAhead.Take(name);
    Tell(name, *pSubstitute);
    if (pSubstitute->pBytes) return OpenStream(pSubstitute->pBytes);
    return pSubstitute->path.empty() ? nullptr : OpenStream(pSubstitute->path);
}

}  // namespace

FileStream* FileOpen(const char* pszPath, const char* pszMode) {
    if (!pszPath || !pszMode || std::strcmp(pszMode, "rb") != 0) return nullptr;
    if (FileStream * pOrdered; Hooked(&pOrdered, PlatformCall::kFileOpen, pszPath)) return pOrdered;
    FileStream* pFile = OpenNamed(pszPath);
    return pFile ? pFile : OpenSubstitute(pszPath);
}

FileStream* FileOpenAsNamed(const char* pszPath) {
    if (!pszPath) return nullptr;
    if (FileStream * pOrdered; Hooked(&pOrdered, PlatformCall::kFileOpen, pszPath)) return pOrdered;
    return OpenNamed(pszPath);
}

std::string FileFind(const char* pszPath) {
    if (!pszPath) return "";
    std::string found = FindNamed(pszPath);
    return found.empty() ? g_readAhead.Take(pszPath)->path : found;
}

void FileForgetListings() {
    g_readAhead.Stop();
    g_told.clear();
    ForgetLookups();
}

void FilesExpect(int nKind, const char* const* ppszNames, int nCount) {
    std::vector<std::string> names(ppszNames, ppszNames + std::max(nCount, 0));
    g_readAhead.Expect(nKind == FILES_PICTURES ? MediaKind::kPicture : MediaKind::kSound, std::move(names));
}

void FilesExpectNoMore() {
    g_readAhead.Stop();
}
