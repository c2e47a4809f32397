#include "platform/files/handle.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace {

constexpr int64_t kMaxFile = INT64_C(0x7FFFFFFF);  // bytes; the callers' offsets have 32 bits

}  // namespace

// Detects devices with stat, because just opening one may have an effect.
int OpenRegularFile(const char* pszPath, int64_t* pnSize) {
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
