#include "platform/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "platform/pathmatch.h"

// Reads go to the caller's memory directly, since nearly all of a load's bytes are asked for in one piece;
// only small ones, such as a file's headers, pass through the window.
struct FileStream {
    int nFile = -1;
    int64_t nSize = 0;
    int64_t nPos = 0;
    int64_t nWindow = 0;  // the offset at which the window's bytes begin
    size_t nWindowBytes = 0;
    BYTE abWindow[4096];
};

namespace {

constexpr int64_t kMaxFile = INT64_C(0x7FFFFFFF);  // bytes; offsets are 32-bit above here

// Devices are told by stat, because merely opening one may do something.
int OpenRegular(const char* pszPath, int64_t* pnSize) {
    struct stat info;
    if (stat(pszPath, &info) != 0 || !S_ISREG(info.st_mode)) return -1;
    const int nFile = open(pszPath, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (nFile < 0) return -1;
    if (fstat(nFile, &info) != 0 || !S_ISREG(info.st_mode) || info.st_size > kMaxFile) {
        close(nFile);
        return -1;
    }
    *pnSize = info.st_size;
    return nFile;
}

bool TryOpen(const std::string& candidate, void* pUser) {
    int64_t nSize = 0;
    const int nFile = OpenRegular(candidate.c_str(), &nSize);
    if (nFile < 0) return false;
    FileStream* pFile = new FileStream;
    pFile->nFile = nFile;
    pFile->nSize = nSize;
    *static_cast<FileStream**>(pUser) = pFile;
    return true;
}

// Bytes read at an offset; fewer than asked for at the end of the file or on a failure.
size_t ReadAt(FileStream* pFile, BYTE* pBuffer, size_t nBytes, int64_t nOffset) {
    size_t nDone = 0;
    while (nDone < nBytes) {
        const ssize_t n =
            pread(pFile->nFile, pBuffer + nDone, nBytes - nDone, nOffset + static_cast<int64_t>(nDone));
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) break;
        nDone += static_cast<size_t>(n);
    }
    return nDone;
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

FileStream* FileOpen(const char* pszPath, const char* pszMode) {
    if (!pszPath || !pszMode || std::strcmp(pszMode, "rb") != 0) return nullptr;
    FileStream* pFile = nullptr;
    MatchPath(pszPath, TryOpen, &pFile);
    return pFile;
}

std::string FileFind(const char* pszPath) {
    std::string found;
    if (!pszPath) return found;
    const auto tryOne = [](const std::string& candidate, void* pUser) {
        int64_t nSize = 0;
        const int nFile = OpenRegular(candidate.c_str(), &nSize);
        if (nFile < 0) return false;
        close(nFile);
        *static_cast<std::string*>(pUser) = candidate;
        return true;
    };
    MatchPath(pszPath, tryOne, &found);
    return found;
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
    const int nResult = close(pFile->nFile);
    delete pFile;
    return nResult == 0 ? 0 : EOF;
}

void FileForgetListings() {
    ForgetPaths();
}
