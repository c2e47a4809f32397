#include "platform/files.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <unordered_set>

#include "platform/debug.h"
#include "platform/file_handle.h"
#include "platform/pathmatch.h"
#include "platform/readahead.h"

// Reads go to the caller's memory directly, since nearly all of a load's bytes are asked for in one piece;
// only small ones, such as a file's headers, pass through the window.
struct FileStream {
    int nFile = -1;
    SharedBytes pBytes;  // instead of nFile, a file made in memory
    int64_t nSize = 0;
    int64_t nPos = 0;
    int64_t nWindow = 0;  // the offset at which the window's bytes begin
    size_t nWindowBytes = 0;
    BYTE abWindow[4096];
};

namespace {

// Names are matched by several threads while a package is read ahead.
std::mutex g_matchMutex;
ReadAhead g_readAhead;
std::unordered_set<std::string> g_told;  // names of which the log has said what stands for them

bool TryOpen(const std::string& candidate, void* pUser) {
    int64_t nSize = 0;
    const int nFile = OpenRegularFile(candidate.c_str(), &nSize);
    if (nFile < 0) return false;
    FileStream* pFile = new FileStream;
    pFile->nFile = nFile;
    pFile->nSize = nSize;
    *static_cast<FileStream**>(pUser) = pFile;
    return true;
}

FileStream* OpenNamed(const char* pszPath) {
    FileStream* pFile = nullptr;
    const std::lock_guard lock(g_matchMutex);
    MatchPath(pszPath, TryOpen, &pFile);
    return pFile;
}

void Tell(const std::string& name, const StandIn& standIn) {
    if ((standIn.path.empty() && standIn.refused.empty()) || !g_told.insert(name).second) return;
    const std::string asked = "Files: " + NameForLog(name) + " not there, ";
    for (const std::string& path : standIn.refused)
        OutputDebugStringA((asked + NameForLog(path) + " cannot be read\n").c_str());
    if (!standIn.path.empty())
        OutputDebugStringA((asked + NameForLog(standIn.path) + " stands for it\n").c_str());
}

FileStream* OpenStandIn(const std::string& name) {
    const std::shared_ptr<const StandIn> pStandIn = g_readAhead.Take(name);
    Tell(name, *pStandIn);
    FileStream* pFile = nullptr;
    if (pStandIn->pBytes) {
        pFile = new FileStream;
        pFile->nSize = static_cast<int64_t>(pStandIn->pBytes->Size());
        pFile->pBytes = pStandIn->pBytes;
    } else if (!pStandIn->path.empty()) {
        TryOpen(pStandIn->path, &pFile);
    }
    return pFile;
}

size_t ReadAt(FileStream* pFile, BYTE* pBuffer, size_t nBytes, int64_t nOffset) {
    if (!pFile->pBytes) return ReadFileAt(pFile->nFile, pBuffer, nBytes, nOffset);
    if (nOffset >= pFile->nSize) return 0;
    const size_t n = std::min(nBytes, static_cast<size_t>(pFile->nSize - nOffset));
    std::memcpy(pBuffer, pFile->pBytes->Data() + nOffset, n);
    return n;
}

size_t ReadWindow(FileStream* pFile, BYTE* pBuffer, size_t nBytes) {
    const int64_t nInto = pFile->nPos - pFile->nWindow;
    if (nInto < 0 || nInto >= static_cast<int64_t>(pFile->nWindowBytes)) return 0;
    const size_t n = std::min(nBytes, pFile->nWindowBytes - static_cast<size_t>(nInto));
    std::memcpy(pBuffer, pFile->abWindow + nInto, n);
    return n;
}

void FillWindow(FileStream* pFile) {
    pFile->nWindow = pFile->nPos;
    pFile->nWindowBytes = ReadAt(pFile, pFile->abWindow, sizeof(pFile->abWindow), pFile->nPos);
}

}  // namespace

bool NamedFileExists(const std::string& name) {
    FileStream* pFile = OpenNamed(name.c_str());
    if (pFile) FileClose(pFile);
    return pFile != nullptr;
}

std::vector<std::string> LockedStandInPaths(const std::string& name, MediaKind kind) {
    const std::lock_guard lock(g_matchMutex);
    return StandInPaths(name, kind);
}

FileStream* FileOpen(const char* pszPath, const char* pszMode) {
    if (!pszPath || !pszMode || std::strcmp(pszMode, "rb") != 0) return nullptr;
    FileStream* pFile = OpenNamed(pszPath);
    return pFile ? pFile : OpenStandIn(pszPath);
}

FileStream* FileOpenAsNamed(const char* pszPath) {
    return pszPath ? OpenNamed(pszPath) : nullptr;
}

std::string FileFind(const char* pszPath) {
    std::string found;
    if (!pszPath) return found;
    const auto tryOne = [](const std::string& candidate, void* pUser) {
        int64_t nSize = 0;
        const int nFile = OpenRegularFile(candidate.c_str(), &nSize);
        if (nFile < 0) return false;
        close(nFile);
        *static_cast<std::string*>(pUser) = candidate;
        return true;
    };
    {
        const std::lock_guard lock(g_matchMutex);
        if (MatchPath(pszPath, tryOne, &found)) return found;
    }
    return g_readAhead.Take(pszPath)->path;
}

size_t FileRead(void* pBuffer, size_t nSize, size_t nCount, FileStream* pFile) {
    if (!pFile || !pBuffer || nSize == 0 || nCount == 0) return 0;
    size_t nBytes;
    if (__builtin_mul_overflow(nSize, nCount, &nBytes)) return 0;
    BYTE* pOut = static_cast<BYTE*>(pBuffer);
    size_t nDone = ReadWindow(pFile, pOut, nBytes);
    pFile->nPos += static_cast<int64_t>(nDone);
    if (nDone < nBytes) {
        const size_t nRest = nBytes - nDone;
        size_t n;
        if (nRest >= sizeof(pFile->abWindow)) {
            n = ReadAt(pFile, pOut + nDone, nRest, pFile->nPos);
        } else {
            FillWindow(pFile);
            n = ReadWindow(pFile, pOut + nDone, nRest);
        }
        pFile->nPos += static_cast<int64_t>(n);
        nDone += n;
    }
    return nDone / nSize;
}

int FileSeek(FileStream* pFile, int64_t nOffset, int nWhence) {
    if (!pFile) return -1;
    int64_t nBase;
    switch (nWhence) {
        case SEEK_SET:
            nBase = 0;
            break;
        case SEEK_CUR:
            nBase = pFile->nPos;
            break;
        case SEEK_END:
            nBase = pFile->nSize;
            break;
        default:
            return -1;
    }
    int64_t nNew;
    if (__builtin_add_overflow(nBase, nOffset, &nNew) || nNew < 0) return -1;
    pFile->nPos = nNew;
    return 0;
}

int64_t FileTell(FileStream* pFile) {
    return pFile ? pFile->nPos : -1;
}

int FileClose(FileStream* pFile) {
    if (!pFile) return EOF;
    const int nResult = pFile->nFile >= 0 ? close(pFile->nFile) : 0;
    delete pFile;
    return nResult == 0 ? 0 : EOF;
}

void FileForgetListings() {
    g_readAhead.Stop();
    g_told.clear();
    const std::lock_guard lock(g_matchMutex);
    ForgetPaths();
}

void FilesExpect(int nKind, const char* const* ppszNames, int nCount) {
    std::vector<std::string> names(ppszNames, ppszNames + std::max(nCount, 0));
    g_readAhead.Expect(nKind == FILES_PICTURES ? MediaKind::kPicture : MediaKind::kSound, std::move(names));
}

void FilesExpectNoMore() {
    g_readAhead.Stop();
}
