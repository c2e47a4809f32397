// The decoder of XA sound data.
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

// A decoder for the file that begins with this header of XA_HEADER_SIZE bytes, and the PCM format that it
// will give. Null on failure. The header need not outlive the call.
void* xaDecodeOpen(const BYTE* pHeader, WAVEFORMATEX* pFormat);
// The PCM bytes that nLength encoded bytes give. 0 on failure.
int xaDecodeSize(void* hXa, DWORD nLength, DWORD* pnPcm);
// The data ends after nLength bytes, earlier than the header says: what the file lost does not come any more.
// Before the first conversion.
void xaDecodeEndAt(void* hXa, DWORD nLength);
// Decodes on, keeping its state between calls; may leave source unread. 0 on failure.
int xaDecodeConvert(void* hXa, XaConvertBlock* pBlock);
int xaDecodeClose(void* hXa);
