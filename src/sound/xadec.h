// The XA decoder.
#pragma once

#include "platform/codec/waveformat.h"
#include "platform/wintypes.h"

constexpr int XA_HEADER_SIZE = 32;

struct XaConvertBlock {
    const BYTE* pSrc;
    DWORD nSrcLen;
    DWORD nSrcUsed;  // out
    BYTE* pDst;
    DWORD nDstBufLen;
    DWORD nDstUsed;  // out
};

// Opens a decoder for a file with this header of XA_HEADER_SIZE bytes and sets the PCM format of its output.
// Null on failure. Copies the header. Free with xaDecodeClose.
void* xaDecodeOpen(const BYTE* pHeader, WAVEFORMATEX* pFormat);
// Sets *pnPcm to the PCM bytes that nLength encoded bytes decode to. Returns 0 on failure.
int xaDecodeSize(void* hXa, DWORD nLength, DWORD* pnPcm);
// The data ends after nLength bytes, earlier than the header says: what the file lost does not come any more.
// Before the first conversion.
void xaDecodeEndAt(void* hXa, DWORD nLength);
// Decodes on, keeping its state between calls; may leave source unread. 0 on failure.
int xaDecodeConvert(void* hXa, XaConvertBlock* pBlock);
int xaDecodeClose(void* hXa);
