#include "platform/codec/wavefile.h"

#include <algorithm>
#include <cstring>

#include "platform/bytes.h"
#include "platform/codec/chunks.h"

namespace {

constexpr size_t kMinFormat = 14, kMaxFormat = 4096;

struct Chunk {
    const BYTE* pBytes;
    size_t nBytes;
    DWORD nDeclared;
};

// What lies between a chunk of odd size and the next one.
size_t PadAfter(const BYTE* pFile, size_t nFile, size_t nEnd) {
    return nEnd + 4 <= nFile && IsChunkName(pFile + nEnd) ? 0 : 1;
}

// The first chunk of this name from *pnAt on; *pnAt is then behind it.
bool FindChunk(const BYTE* pFile, size_t nFile, const char* pszName, size_t* pnAt, Chunk* pChunk) {
    for (int i = 0; i < kMaxChunksSearched && nFile >= 8 && *pnAt <= nFile - 8; ++i) {
        const BYTE* pHead = pFile + *pnAt;
        const DWORD nSize = ReadLe32(pHead + 4);
        *pChunk = {pHead + 8, std::min<size_t>(nSize, nFile - *pnAt - 8), nSize};
        *pnAt += 8 + size_t{nSize};
        if (nSize % 2 != 0) *pnAt += PadAfter(pFile, nFile, *pnAt);
        if (std::memcmp(pHead, pszName, 4) == 0) return true;
    }
    return false;
}

}  // namespace

bool ReadWaveFile(const BYTE* pFile, size_t nFile, WaveFile* pWave) {
    if (nFile < 12 || std::memcmp(pFile, "RIFF", 4) != 0 || std::memcmp(pFile + 8, "WAVE", 4) != 0)
        return false;
    size_t nAt = 12;
    Chunk format, data;
    if (!FindChunk(pFile, nFile, "fmt ", &nAt, &format) || format.nBytes < kMinFormat) return false;
    if (!FindChunk(pFile, nFile, "data", &nAt, &data)) data = {pFile + nFile, 0, 0};
    std::memset(pWave->aFormat, 0, sizeof(pWave->aFormat));
    std::memcpy(pWave->aFormat, format.pBytes, std::min(format.nBytes, kMaxFormat));
    pWave->pData = data.pBytes;
    pWave->nBytes = data.nBytes;
    pWave->nDeclared = data.nDeclared;
    return true;
}
