// Device contexts over surfaces, bitmaps of the program's resources, and the drawing of device-independent
// bitmaps.
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

// A bitmap that the program carries, or null. The caller frees it with DeleteObject.
HBITMAP LoadBitmapA(HINSTANCE hInstance, int nId);
BOOL DeleteObject(HGDIOBJ hObject);  // 0 for null and while a context holds it

HDC GetDC(HWND hWnd);  // null: the desktop's, which only serves CreateCompatibleDC. Any other window: null
int ReleaseDC(HWND hWnd, HDC hDC);
HDC CreateCompatibleDC(HDC hDC);  // a memory context without a picture; null on failure
BOOL DeleteDC(HDC hDC);           // memory contexts alone
// Puts a bitmap into a memory context; the object that was there before (never null), or null when refused.
HGDIOBJ SelectObject(HDC hDC, HGDIOBJ hObject);
// SRCCOPY alone. What lies outside either picture is left out. 0 when refused.
BOOL BitBlt(HDC hDest, int x, int y, int nWidth, int nHeight, HDC hSource, int nSourceX, int nSourceY,
            DWORD dwRop);

// The memory in which a packed bitmap's header, palette and pixels lie, for the reader's bounds:
// StretchDIBits is given bare pointers, and a header may promise more than the file holds. Registered ranges
// never overlap. False when memory has run out; a drawing from memory that is not registered is refused.
bool RegisterDibMemory(const void* pData, size_t nSize);
void UnregisterDibMemory(const void* pData);

// Draws a rectangle of a bitmap, source and destination of the same size, without scaling. The source's y
// counts from the bottom row of the picture as it is seen, also of a top-down one. pBits may be the end of
// the registered memory.
//
// Headers of 40 bytes and more count as 40, those of 12 to 39 as core headers of 12; the palette begins
// behind that. BI_RGB with 1, 4, 8, 16 (5 bits a colour), 24 and 32 bits, BI_RLE8, BI_RLE4, and BI_BITFIELDS
// with 16 and 32 bits, whose three masks lie where a palette would. Masks are never pixels: where pBits
// points at them, the pixels are those behind them. A colour of fewer than 8 bits widens by repeating its
// bits.
//
// What lies outside the picture, the destination or the registered memory draws nothing, nor do pixels that a
// run-length bitmap skips; colours beyond the palette are black. Gives the number of destination rows that
// lie in the picture, or GDI_ERROR for another format, mode or operation, a picture without pixels, sizes
// that differ or are negative, or pointers outside registered memory.
int StretchDIBits(HDC hDC, int nDestX, int nDestY, int nDestWidth, int nDestHeight, int nSourceX,
                  int nSourceY, int nSourceWidth, int nSourceHeight, const void* pBits,
                  const BITMAPINFOHEADER* pInfo, UINT nUsage, DWORD dwRop);
