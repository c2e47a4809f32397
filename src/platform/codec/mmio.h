// Reading RIFF files chunk by chunk.
#pragma once

#include "platform/wintypes.h"

struct MmioFile;
using HMMIO = MmioFile*;

using FOURCC = DWORD;

struct MMIOINFO;  // never given

struct MMCKINFO {
    FOURCC ckid;
    DWORD cksize;        // as the file declares it
    FOURCC fccType;      // of RIFF and LIST chunks
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

// Opens for reading, from the beginning. Null when the file cannot be opened, for an info block and for other
// flags.
HMMIO mmioOpenA(const char* pszName, MMIOINFO* pInfo, DWORD dwFlags);
MMRESULT mmioClose(HMMIO hMmio, UINT nFlags);  // nFlags 0; MMIOERR_INVALIDPARAM closes nothing

// Reads a chunk's header and stops at its data; of a RIFF or LIST behind the type. nFlags 0: the chunk at the
// current position. A MMIO_FIND flag: searches forward, over whole chunks, for ckid (FINDRIFF and FINDLIST:
// for fccType); it goes on to the end of the file whatever size the parent declares, because that size is
// often wrong. MMIOERR_CHUNKNOTFOUND when the file ends first.
MMRESULT mmioDescend(HMMIO hMmio, MMCKINFO* pChunk, const MMCKINFO* pParent, UINT nFlags);
// Moves behind the chunk and its pad byte, where it has one. MMIOERR_CANNOTSEEK beyond 2^31 - 1.
MMRESULT mmioAscend(HMMIO hMmio, MMCKINFO* pChunk, UINT nFlags);

LONG mmioRead(HMMIO hMmio, void* pBuffer, LONG nBytes);  // bytes read, 0 at the end, -1 on failure
LONG mmioSeek(HMMIO hMmio, LONG nOffset,
              int nOrigin);  // the new offset; -1 on failure, and nothing has moved
