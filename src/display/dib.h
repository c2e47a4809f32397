// A BMP file in memory.
#pragma once

#include "platform/graphics/gdi.h"

class CDib {
public:
    CDib();
    ~CDib();  // Free
    CDib(const CDib&) = delete;
    CDib& operator=(const CDib&) = delete;

    int Load(const char* pszFile);  // 0, or 1 when it is not a readable BMP
    void Free();
    int32_t GetWidth() const;
    int32_t GetHeight() const;  // as stored: negative for a top-down picture

    // Destination relative to the surface's top left, source to the bitmap's bottom row. 0, or 1 on failure.
    int Draw(HDC hDC, const RECT* pDest, const RECT* pSource);
    int Draw(HDC hDC, const RECT* pDest);  // the whole picture
    int Draw(HDC hDC, int x, int y, int nWidth, int nHeight);

    bool SetPointers();  // from m_pData; false when there is no bitmap header

    char m_szFile[260];
    BYTE* m_pData;  // the whole file, owned
    int32_t m_nDataSize;
    BYTE* m_pFileHeader;
    BITMAPINFOHEADER* m_pInfoHeader;
    BITMAPCOREHEADER* m_pCoreHeader;  // the same address
    BYTE* m_pPalette;                 // null above 8 bits per pixel
    BYTE* m_pBits;
    int32_t m_nWidth;
    int32_t m_nHeight;
};
