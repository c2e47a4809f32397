#include "platform/files/stream.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "platform/files/handle.h"
#include "platform/watch.h"

// Reads go straight to the caller's memory, because a load requests nearly all bytes in one piece. Only small
// reads, such as headers, use the window.
struct FileStream {
    int nFile = -1;
    SharedBytes pBytes;  // a file in memory; null when nFile is used
    int64_t nSize = 0;
    int64_t nPos = 0;
    int64_t nWindow = 0;  // offset of the window's first byte
    size_t nWindowBytes = 0;
    BYTE abWindow[4096];
};

namespace {

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

FileStream* OpenStream(const std::string& path) {
    int64_t nSize = 0;
    const int nFile = OpenRegularFile(path.c_str(), &nSize);
    if (nFile < 0) return nullptr;
    FileStream* pFile = new FileStream;
    pFile->nFile = nFile;
    pFile->nSize = nSize;
    return pFile;
}

FileStream* OpenStream(SharedBytes pBytes) {
    FileStream* pFile = new FileStream;
    pFile->nSize = static_cast<int64_t>(pBytes->Size());
    pFile->pBytes = std::move(pBytes);
    return pFile;
}

size_t PeekStream(FileStream* pFile, BYTE* pBuffer, size_t nBytes) {
    const int64_t nPos = pFile->nPos;
    pFile->nPos = 0;
    FillWindow(pFile);
    const size_t n = ReadWindow(pFile, pBuffer, nBytes);
    pFile->nPos = nPos;
    return n;
}

size_t FileRead(void* pBuffer, size_t nSize, size_t nCount, FileStream* pFile) {
    if (!pFile || !pBuffer || nSize == 0 || nCount == 0) return 0;
    size_t nBytes;
    if (__builtin_mul_overflow(nSize, nCount, &nBytes)) return 0;
    if (size_t nRead; Hooked(&nRead, PlatformCall::kFileRead, pFile, static_cast<int64_t>(nBytes)))
        return nRead;
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
