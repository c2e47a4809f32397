// Opens files by name: looks the name up, then falls back to a substitute, made here or read ahead.
#include <cstring>
#include <unordered_set>

#include "platform/debug.h"
#include "platform/files/files.h"
#include "platform/files/lookup.h"
#include "platform/files/stream.h"
#include "platform/substitutes/readahead.h"

namespace {

ReadAhead g_readAhead;
std::unordered_set<std::string> g_logged;  // names whose substitute has been logged

void LogSubstitute(const std::string& name, const Substitute& substitute) {
    if ((substitute.path.empty() && substitute.refused.empty()) || !g_logged.insert(name).second) return;
    const std::string asked = "Files: " + NameForLog(name) + " not there, ";
    for (const std::string& path : substitute.refused)
        OutputDebugStringA((asked + NameForLog(path) + " cannot be read\n").c_str());
    if (!substitute.path.empty())
        OutputDebugStringA((asked + NameForLog(substitute.path) + " stands for it\n").c_str());
}

FileStream* OpenSubstitute(const std::string& name) {
    const std::shared_ptr<const Substitute> pSubstitute = g_readAhead.Take(name);
    LogSubstitute(name, *pSubstitute);
    if (pSubstitute->pBytes) return OpenStream(pSubstitute->pBytes);
    return pSubstitute->path.empty() ? nullptr : OpenStream(pSubstitute->path);
}

}  // namespace

FileStream* FileOpen(const char* pszPath, const char* pszMode) {
    if (!pszPath || !pszMode || std::strcmp(pszMode, "rb") != 0) return nullptr;
    FileStream* pFile = OpenNamed(pszPath);
    return pFile ? pFile : OpenSubstitute(pszPath);
}

FileStream* FileOpenAsNamed(const char* pszPath) {
    return pszPath ? OpenNamed(pszPath) : nullptr;
}

std::string FileFind(const char* pszPath) {
    if (!pszPath) return "";
    std::string found = FindNamed(pszPath);
    return found.empty() ? g_readAhead.Take(pszPath)->path : found;
}

void FileForgetListings() {
    g_readAhead.Stop();
    g_logged.clear();
    ForgetLookups();
}

void FilesExpect(int nKind, const char* const* ppszNames, int nCount) {
    std::vector<std::string> names(ppszNames, ppszNames + std::max(nCount, 0));
    g_readAhead.Expect(nKind == FILES_PICTURES ? MediaKind::kPicture : MediaKind::kSound, std::move(names));
}

void FilesExpectNoMore() {
    g_readAhead.Stop();
}
