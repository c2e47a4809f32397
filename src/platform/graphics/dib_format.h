// Private to this room: the header of a device-independent bitmap, checked against the memory that contains
// it.
#pragma once

#include "platform/graphics/gdi.h"
#include "platform/wintypes.h"

// One colour channel of a masked pixel: its bits are shifted down and expanded to 8.
struct DibChannel {
    DWORD nMask = 0;
    int nShift = 0;           // moves the top 8 bits of the mask (all, if fewer) to bit 0
    BYTE abExpand[256] = {};  // those bits to 0..255
};

struct DibPicture {
    int64_t nWidth = 0, nHeight = 0;  // both above 0
    bool bTopDown = false;
    int nBits = 0;
    DWORD nCompression = BI_RGB;
    uint64_t nRowBytes = 0;  // bytes per row; uncompressed formats only
    const BYTE* pBits = nullptr;
    const BYTE* pEnd = nullptr;  // end of the memory; pBits <= pEnd
    DWORD anPalette[256] = {};   // 0x00RRGGBB; black for missing entries
    DibChannel aChannel[3];      // red, green, blue; for 16 bits, and 32 bits with masks
    bool bMasked = false;        // colours are decoded by aChannel
};

// The part of a drawing that lies in both the destination and the picture. Columns and rows count from the
// top left of the visible picture.
struct DibWindow {
    DWORD* pDest;        // destination of the first pixel
    size_t nDestStride;  // pixels
    int64_t nLeft, nTop;
    int64_t nWidth, nHeight;  // both above 0
};

// False when there is no header, the format cannot be drawn, or a pointer is outside registered memory.
bool ReadDibPicture(const BITMAPINFOHEADER* pInfo, const void* pBits, DibPicture* pPicture);

void DrawDibRows(const DibPicture& picture, const DibWindow& window);
void DrawDibRuns(const DibPicture& picture, const DibWindow& window);  // BI_RLE8, BI_RLE4

// The end of the registered range that contains p or ends at p; null when there is none.
const BYTE* FindDibEnd(const void* p);
