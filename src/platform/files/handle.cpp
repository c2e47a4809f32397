#include "platform/files/handle.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace {

constexpr int64_t kMaxFile = INT64_C(0x7FFFFFFF);  // bytes; the callers' offsets have 32 bits

}  // namespace

// stat comes first because merely opening a device may do something.
int OpenRegularFile(const char* pszPath, struct stat* pInfo) {
    if (stat(pszPath, pInfo) != 0 || !S_ISREG(pInfo->st_mode)) return -1;
    const int nFile = open(pszPath, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (nFile < 0) return -1;
    if (fstat(nFile, pInfo) == 0 && S_ISREG(pInfo->st_mode) && pInfo->st_size <= kMaxFile) return nFile;
    close(nFile);
    return -1;
}

int OpenRegularFile(const char* pszPath, int64_t* pnSize) {
    struct stat info;
    const int nFile = OpenRegularFile(pszPath, &info);
    if (nFile >= 0) *pnSize = info.st_size;
    return nFile;
}

size_t ReadFileAt(int nFile, BYTE* pBuffer, size_t nBytes, int64_t nOffset) {
    size_t nDone = 0;
    while (nDone < nBytes) {
        const ssize_t n =
            pread(nFile, pBuffer + nDone, nBytes - nDone, nOffset + static_cast<int64_t>(nDone));
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) break;
        nDone += static_cast<size_t>(n);
    }
    return nDone;
}
