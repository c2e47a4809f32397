// Opening a file by name: what the disk has, or what the door makes.
#include <algorithm>
#include <cstring>

#include "platform/files/files.h"
#include "platform/files/lookup.h"
#include "platform/files/stream.h"
#include "platform/substitutes/door.h"
#include "platform/watch.h"

namespace {

Door& TheDoor() {
    static Door door;
    return door;
}

FileStream* OpenMade(const std::string& name) {
    const std::shared_ptr<const Substitute> pMade = TheDoor().Take(name);
    if (pMade->pBytes) return OpenStream(pMade->pBytes);
    return pMade->path.empty() ? nullptr : OpenStream(pMade->path);
}

int64_t SizeOf(FileStream* pFile) {
    FileSeek(pFile, 0, SEEK_END);
    const int64_t nSize = FileTell(pFile);
    FileSeek(pFile, 0, SEEK_SET);
    return nSize;
}

std::string g_provided;   // the name that FileProvide was given
SharedBytes g_pProvided;  // null: none

}  // namespace

FileStream* FileOpen(const char* pszPath, const char* pszMode) {
    if (!pszPath || !pszMode || std::strcmp(pszMode, "rb") != 0) return nullptr;
    FileStream* pOrdered = nullptr;
    if (Hooked(&pOrdered, PlatformCall::kFileOpen, pszPath)) return pOrdered;
    FileStream* pFile = TheDoor().HasMaker(pszPath) ? nullptr : OpenNamed(pszPath);
    if (!pFile) pFile = OpenMade(pszPath);
    if (!pFile || TheDoor().MayOpen(pszPath, SizeOf(pFile))) return pFile;
    FileClose(pFile);
    return nullptr;
}

FileStream* FileOpenAsNamed(const char* pszPath) {
    if (!pszPath) return nullptr;
    FileStream* pOrdered = nullptr;
    if (Hooked(&pOrdered, PlatformCall::kFileOpen, pszPath)) return pOrdered;
    return g_pProvided && g_provided == pszPath ? OpenStream(g_pProvided) : OpenNamed(pszPath);
}

void FileProvide(const char* pszPath, SharedBytes pBytes) {
    g_provided = pszPath;
    g_pProvided = std::move(pBytes);
}

std::string FileFind(const char* pszPath) {
    if (!pszPath) return "";
    std::string found = FindNamed(pszPath);
    return found.empty() ? TheDoor().Take(pszPath)->path : found;
}

void FileForgetListings() {
    TheDoor().BeginLoad();
    ForgetLookups();
}

void FilesExpect(int nKind, const char* const* ppszNames, int nCount) {
    std::vector<std::string> names(ppszNames, ppszNames + std::max(nCount, 0));
    TheDoor().Expect(nKind == FILES_PICTURES ? MediaKind::kPicture : MediaKind::kSound, std::move(names));
}

void FilesExpectNoMore() {
    TheDoor().ExpectNoMore();
}
