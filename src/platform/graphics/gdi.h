// Device contexts for surfaces, bitmap resources, and drawing of device-independent bitmaps.
#pragma once

#include "platform/resources.h"
#include "platform/wintypes.h"

#pragma pack(push, 1)
struct BITMAPCOREHEADER {
    DWORD bcSize;
    WORD bcWidth, bcHeight, bcPlanes, bcBitCount;
};
struct BITMAPINFOHEADER {
    DWORD biSize;
    LONG biWidth, biHeight;
    WORD biPlanes, biBitCount;
    DWORD biCompression, biSizeImage;
    LONG biXPelsPerMeter, biYPelsPerMeter;
    DWORD biClrUsed, biClrImportant;
};
#pragma pack(pop)
static_assert(sizeof(BITMAPCOREHEADER) == 12 && sizeof(BITMAPINFOHEADER) == 40);

constexpr DWORD BI_RGB = 0, BI_RLE8 = 1, BI_RLE4 = 2, BI_BITFIELDS = 3;
constexpr UINT DIB_RGB_COLORS = 0;
constexpr DWORD SRCCOPY = 0x00CC0020;
constexpr int GDI_ERROR = -1;
constexpr int BLACK_BRUSH = 4;

HGDIOBJ GetStockObject(int nObject);  // BLACK_BRUSH; null for any other

// A bitmap resource of the program, or null. Free it with DeleteObject.
HBITMAP LoadBitmapA(HINSTANCE hInstance, int nId);
BOOL DeleteObject(HGDIOBJ hObject);  // 0 for null, and while a context holds the object

HDC GetDC(HWND hWnd);  // null: the desktop, only for CreateCompatibleDC. Any other window returns null
int ReleaseDC(HWND hWnd, HDC hDC);
HDC CreateCompatibleDC(HDC hDC);  // an empty memory context; null on failure
BOOL DeleteDC(HDC hDC);           // memory contexts only
// Selects a bitmap into a memory context. Returns the previous object (never null), or null when rejected.
HGDIOBJ SelectObject(HDC hDC, HGDIOBJ hObject);
// SRCCOPY only. Clips to both pictures. Returns 0 when rejected.
BOOL BitBlt(HDC hDest, int x, int y, int nWidth, int nHeight, HDC hSource, int nSourceX, int nSourceY,
            DWORD dwRop);

// Registers the memory of a packed bitmap (header, palette, pixels) for bounds checks: StretchDIBits takes
// bare pointers, and a header may declare more than the file holds. Registered ranges must not overlap. False
// when out of memory. Drawing from unregistered memory is rejected.
bool RegisterDibMemory(const void* pData, size_t nSize);
void UnregisterDibMemory(const void* pData);

// Draws a rectangle of a bitmap without scaling; source and destination have the same size. The source's y
// counts from the bottom row of the visible picture, also for a top-down one. pBits may be the end of the
// registered memory.
//
// A header of 40 bytes or more is read as 40 bytes, one of 12 to 39 as a core header of 12; the palette
// follows. Supports BI_RGB with 1, 4, 8, 16 (5 bits per colour), 24 and 32 bits, BI_RLE8, BI_RLE4, and
// BI_BITFIELDS with 16 and 32 bits, whose three masks take the palette's place. If pBits points at the masks,
// the pixels follow them. A colour with fewer than 8 bits is expanded by repeating its bits.
//
// Anything outside the picture, the destination or the registered memory is not drawn, nor are pixels that a
// run-length bitmap skips. Colours beyond the palette are black. Returns the number of destination rows that
// lie in the picture. GDI_ERROR for another format, mode or operation, a picture without pixels, negative or
// different sizes, or pointers outside registered memory.
int StretchDIBits(HDC hDC, int nDestX, int nDestY, int nDestWidth, int nDestHeight, int nSourceX,
                  int nSourceY, int nSourceWidth, int nSourceHeight, const void* pBits,
                  const BITMAPINFOHEADER* pInfo, UINT nUsage, DWORD dwRop);
