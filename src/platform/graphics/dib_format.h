// Inside the platform: what a device-independent bitmap's header says, checked against the memory that it
// lies in.
#pragma once

#include "platform/graphics/gdi.h"
#include "platform/wintypes.h"

// One colour of a pixel with masks: its bits, moved down and widened to 8.
struct DibChannel {
    DWORD nMask = 0;
    int nShift = 0;           // brings the topmost 8 bits of the mask (or all, if fewer) to bit 0
    BYTE abExpand[256] = {};  // of these bits to 0..255
};

struct DibPicture {
    int64_t nWidth = 0, nHeight = 0;  // both above 0
    bool bTopDown = false;
    int nBits = 0;
    DWORD nCompression = BI_RGB;
    uint64_t nRowBytes = 0;  // from row to row, without compression
    const BYTE* pBits = nullptr;
    const BYTE* pEnd = nullptr;  // of the memory; pBits <= pEnd
    DWORD anPalette[256] = {};   // 0x00RRGGBB; black where there is no entry
    DibChannel aChannel[3];      // red, green, blue, of 16 bits and of 32 bits with masks
    bool bMasked = false;        // colours go through aChannel
};

// The part of a drawing that lies in the destination and in the picture. Columns and rows of the picture are
// those that are seen, from the top left.
struct DibWindow {
    DWORD* pDest;        // where the first pixel goes
    size_t nDestStride;  // pixels
    int64_t nLeft, nTop;
    int64_t nWidth, nHeight;  // both above 0
};

// False when the header is none, or no format that can be drawn, or a pointer lies outside registered memory.
bool ReadDibPicture(const BITMAPINFOHEADER* pInfo, const void* pBits, DibPicture* pPicture);

void DrawDibRows(const DibPicture& picture, const DibWindow& window);
void DrawDibRuns(const DibPicture& picture, const DibWindow& window);  // BI_RLE8, BI_RLE4

// The end of the registered range in which p lies (or whose end p is), null when there is none.
const BYTE* FindDibEnd(const void* p);
