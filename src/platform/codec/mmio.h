// Reads RIFF files chunk by chunk.
#pragma once

#include "platform/wintypes.h"

struct MmioFile;
using HMMIO = MmioFile*;

using FOURCC = DWORD;

struct MMIOINFO;  // always null

struct MMCKINFO {
    FOURCC ckid;
    DWORD cksize;        // as declared in the file
    FOURCC fccType;      // for RIFF and LIST chunks
    DWORD dwDataOffset;  // file offset of the data
    DWORD dwFlags;
};

constexpr FOURCC mmioFOURCC(char a, char b, char c, char d) {
    return static_cast<BYTE>(a) | static_cast<DWORD>(static_cast<BYTE>(b)) << 8 |
           static_cast<DWORD>(static_cast<BYTE>(c)) << 16 | static_cast<DWORD>(static_cast<BYTE>(d)) << 24;
}

constexpr DWORD MMIO_READ = 0, MMIO_ALLOCBUF = 0x10000;
constexpr UINT MMIO_FINDCHUNK = 0x10, MMIO_FINDRIFF = 0x20, MMIO_FINDLIST = 0x40;

constexpr MMRESULT MMIOERR_CANNOTREAD = 261, MMIOERR_CANNOTSEEK = 263, MMIOERR_CHUNKNOTFOUND = 265;
constexpr MMRESULT MMIOERR_INVALIDPARAM = 11;

// Opens for reading, at the beginning. Null when the file cannot be opened, when pInfo is given, and for
// other flags.
HMMIO mmioOpenA(const char* pszName, MMIOINFO* pInfo, DWORD dwFlags);
MMRESULT mmioClose(HMMIO hMmio,
                   UINT nFlags);  // nFlags must be 0; otherwise MMIOERR_INVALIDPARAM and nothing is closed

// Reads a chunk header and stops at its data; for RIFF and LIST, after the type. nFlags 0: the chunk at the
// current position. A MMIO_FIND flag: searches forward, chunk by chunk, for ckid (FINDRIFF and FINDLIST: for
// fccType). The search continues to the end of the file whatever size the parent declares, because that size
// is often wrong. MMIOERR_CHUNKNOTFOUND when the file ends first.
MMRESULT mmioDescend(HMMIO hMmio, MMCKINFO* pChunk, const MMCKINFO* pParent, UINT nFlags);
// Moves past the chunk and its pad byte, if any. MMIOERR_CANNOTSEEK beyond 2^31 - 1.
MMRESULT mmioAscend(HMMIO hMmio, MMCKINFO* pChunk, UINT nFlags);

LONG mmioRead(HMMIO hMmio, void* pBuffer, LONG nBytes);  // bytes read, 0 at the end, -1 on failure
LONG mmioSeek(HMMIO hMmio, LONG nOffset,
              int nOrigin);  // returns the new offset; -1 on failure, and the position is unchanged
