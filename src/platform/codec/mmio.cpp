#include "platform/codec/mmio.h"

#include <algorithm>
#include <cstdio>
#include <new>

#include "platform/bytes.h"
#include "platform/codec/chunks.h"
#include "platform/files/files.h"
#include "platform/watch.h"

struct MmioFile {
    FileStream* pStream;
    int64_t nLength;
    int64_t nPos;
};

namespace {

constexpr FOURCC kRiff = mmioFOURCC('R', 'I', 'F', 'F');
constexpr FOURCC kList = mmioFOURCC('L', 'I', 'S', 'T');
constexpr FOURCC kData = mmioFOURCC('d', 'a', 't', 'a');
// The length that a writer to a pipe leaves, since it cannot go back: the data ends with the file.
constexpr DWORD kUnknownLength = 0xFFFFFFFF;
constexpr int64_t kMaxOffset = INT32_MAX;  // offsets are LONGs to the caller
bool SeekTo(HMMIO hMmio, int64_t nPos) {
    if (nPos < 0 || FileSeek(hMmio->pStream, nPos, SEEK_SET) != 0) return false;
    hMmio->nPos = nPos;
    return true;
}

size_t ReadBytes(HMMIO hMmio, void* pBuffer, size_t nBytes) {
    const size_t nRead = FileRead(pBuffer, 1, nBytes, hMmio->pStream);
    hMmio->nPos += static_cast<int64_t>(nRead);
    return nRead;
}

bool IsGroup(FOURCC ckid) {
    return ckid == kRiff || ckid == kList;
}

// Reads the header at the current position and stops at the chunk's data; for RIFF and LIST, after the type.
bool ReadChunkHeader(HMMIO hMmio, MMCKINFO* pChunk) {
    BYTE aHead[8], aType[4];
    if (ReadBytes(hMmio, aHead, sizeof(aHead)) != sizeof(aHead)) return false;
    *pChunk = {ReadLe32(aHead), ReadLe32(aHead + 4), 0, static_cast<DWORD>(hMmio->nPos), 0};
    if (pChunk->ckid == kData && pChunk->cksize == kUnknownLength)
        pChunk->cksize = static_cast<DWORD>(std::max<int64_t>(hMmio->nLength - hMmio->nPos, 0));
    if (!IsGroup(pChunk->ckid)) return true;
    if (ReadBytes(hMmio, aType, sizeof(aType)) != sizeof(aType)) return false;
    pChunk->fccType = ReadLe32(aType);
    return true;
}

// The offset of the next chunk.
int64_t NextChunk(HMMIO hMmio, const MMCKINFO& chunk) {
    const int64_t nEnd = int64_t{chunk.dwDataOffset} + chunk.cksize;
    if (chunk.cksize % 2 == 0 || nEnd >= hMmio->nLength) return nEnd + chunk.cksize % 2;
    BYTE aName[4];
    if (!SeekTo(hMmio, nEnd) || ReadBytes(hMmio, aName, sizeof(aName)) != sizeof(aName)) return nEnd + 1;
    return IsChunkName(aName) ? nEnd : nEnd + 1;
}

bool IsWanted(const MMCKINFO& chunk, const MMCKINFO& wanted, UINT nFlags) {
    switch (nFlags) {
        case MMIO_FINDCHUNK:
            return chunk.ckid == wanted.ckid;
        case MMIO_FINDRIFF:
            return chunk.ckid == kRiff && chunk.fccType == wanted.fccType;
        default:
            return chunk.ckid == kList && chunk.fccType == wanted.fccType;
    }
}

}  // namespace

HMMIO mmioOpenA(const char* pszName, MMIOINFO* pInfo, DWORD dwFlags) {
    if (pszName == nullptr || pInfo != nullptr || (dwFlags & ~MMIO_ALLOCBUF) != MMIO_READ) return nullptr;
    FileStream* pStream = FileOpen(pszName, "rb");
    if (pStream == nullptr) return nullptr;
    HMMIO hMmio = new (std::nothrow) MmioFile{pStream, 0, 0};
    if (hMmio != nullptr && FileSeek(pStream, 0, SEEK_END) == 0) {
        hMmio->nLength = FileTell(pStream);
        if (hMmio->nLength >= 0 && hMmio->nLength <= kMaxOffset && SeekTo(hMmio, 0)) return hMmio;
    }
    delete hMmio;
    FileClose(pStream);
    return nullptr;
}

MMRESULT mmioClose(HMMIO hMmio, UINT nFlags) {
    if (hMmio == nullptr || nFlags != 0) return MMIOERR_INVALIDPARAM;
    FileClose(hMmio->pStream);
    delete hMmio;
    return MMSYSERR_NOERROR;
}

MMRESULT mmioDescend(HMMIO hMmio, MMCKINFO* pChunk, const MMCKINFO* pParent, UINT nFlags) {
    if (hMmio == nullptr || pChunk == nullptr) return MMIOERR_INVALIDPARAM;
    if (MMRESULT nResult; Hooked(&nResult, PlatformCall::kMmioDescend, hMmio)) return nResult;
    if (nFlags == 0) return ReadChunkHeader(hMmio, pChunk) ? MMSYSERR_NOERROR : MMIOERR_CHUNKNOTFOUND;
    if (nFlags != MMIO_FINDCHUNK && nFlags != MMIO_FINDRIFF && nFlags != MMIO_FINDLIST)
        return MMIOERR_INVALIDPARAM;
    const MMCKINFO wanted = *pChunk;
    MMCKINFO chunk;
    for (int i = 0; i < kMaxChunksSearched && ReadChunkHeader(hMmio, &chunk); ++i) {
        if (IsWanted(chunk, wanted, nFlags)) {
            *pChunk = chunk;
            return MMSYSERR_NOERROR;
        }
        const int64_t nNext = NextChunk(hMmio, chunk);
        if (nNext >= hMmio->nLength || !SeekTo(hMmio, nNext)) break;
    }
    return MMIOERR_CHUNKNOTFOUND;
}

MMRESULT mmioAscend(HMMIO hMmio, MMCKINFO* pChunk, UINT nFlags) {
    if (hMmio == nullptr || pChunk == nullptr || nFlags != 0) return MMIOERR_INVALIDPARAM;
    if (MMRESULT nResult; Hooked(&nResult, PlatformCall::kMmioAscend, hMmio)) return nResult;
    const int64_t nNext = NextChunk(hMmio, *pChunk);
    if (nNext > kMaxOffset || !SeekTo(hMmio, nNext)) return MMIOERR_CANNOTSEEK;
    return MMSYSERR_NOERROR;
}

LONG mmioRead(HMMIO hMmio, void* pBuffer, LONG nBytes) {
    if (hMmio == nullptr || nBytes < 0 || (pBuffer == nullptr && nBytes > 0)) return -1;
    if (LONG nRead; Hooked(&nRead, PlatformCall::kMmioRead, hMmio, nBytes)) return nRead;
    return static_cast<LONG>(ReadBytes(hMmio, pBuffer, static_cast<size_t>(nBytes)));
}

LONG mmioSeek(HMMIO hMmio, LONG nOffset, int nOrigin) {
    if (hMmio == nullptr) return -1;
    int64_t nPos = nOffset;
    switch (nOrigin) {
        case SEEK_SET:
            break;
        case SEEK_CUR:
            nPos += hMmio->nPos;
            break;
        case SEEK_END:
            nPos += hMmio->nLength;
            break;
        default:
            return -1;
    }
    if (nPos < 0 || nPos > kMaxOffset) return -1;
    // Asking for the position, or seeking to it, must not discard the buffer.
    if (nPos != hMmio->nPos && !SeekTo(hMmio, nPos)) return -1;
    return static_cast<LONG>(nPos);
}
