// Device contexts over surfaces, bitmaps of the program's resources, and the drawing of device-independent bitmaps.
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

HGDIOBJ GetStockObject(int nObject);

// A bitmap that the program carries, or null. The caller frees it with DeleteObject.
HBITMAP LoadBitmapA(HINSTANCE hInstance, int nId);
BOOL DeleteObject(HGDIOBJ hObject);

HDC GetDC(HWND hWnd);  // null: the desktop's
int ReleaseDC(HWND hWnd, HDC hDC);
HDC CreateCompatibleDC(HDC hDC);
BOOL DeleteDC(HDC hDC);
HGDIOBJ SelectObject(HDC hDC, HGDIOBJ hObject);  // the object that was selected before
BOOL BitBlt(HDC hDest, int x, int y, int nWidth, int nHeight, HDC hSource, int nSourceX, int nSourceY, DWORD dwRop);

// The memory in which a packed bitmap's header, palette and pixels lie, for the reader's bounds: StretchDIBits is
// given bare pointers, and a header may promise more than the file holds. Registered ranges never overlap.
// A pointer outside every registered range is refused.
void RegisterDibMemory(const void* pData, size_t nSize);
void UnregisterDibMemory(const void* pData);

// Draws a rectangle of a bitmap, source and destination of the same size, without scaling (any other pair is
// refused). The source's y counts from the bottom row. What lies outside the picture, the destination or the
// registered memory draws nothing. Gives the number of rows, or GDI_ERROR.
int StretchDIBits(HDC hDC, int nDestX, int nDestY, int nDestWidth, int nDestHeight, int nSourceX, int nSourceY,
                  int nSourceWidth, int nSourceHeight, const void* pBits, const BITMAPINFOHEADER* pInfo, UINT nUsage,
                  DWORD dwRop);
