#include "display/dib.h"

#include <cstdio>
#include <cstring>
#include <new>

#include "platform/files/files.h"

namespace {

constexpr int32_t kFileHeader = 14;  // bytes before the bitmap's header
constexpr int32_t kMinSize = 54;     // of a file with any header
constexpr DWORD kInfoSize = 40, kCoreSize = 12;
constexpr int kPaletteBits = 8;  // deeper pictures have no palette

DWORD PaletteEntries(int nBits) {
    return 1u << nBits;
}

// Reads the whole file; null on failure.
BYTE* ReadWhole(FileStream* pFile, int32_t nSize) {
    auto* pData = new (std::nothrow) BYTE[static_cast<size_t>(nSize)];
    if (!pData) return nullptr;
    if (FileRead(pData, 1, static_cast<size_t>(nSize), pFile) == static_cast<size_t>(nSize)) return pData;
    delete[] pData;
    return nullptr;
}

// 32-bit difference, wrapping for edges that are far apart.
int Length(LONG nFrom, LONG nTo) {
    return static_cast<int>(static_cast<DWORD>(nTo) - static_cast<DWORD>(nFrom));
}

}  // namespace

CDib::CDib()
    : m_szFile(),
      m_pData(nullptr),
      m_nDataSize(0),
      m_pFileHeader(nullptr),
      m_pInfoHeader(nullptr),
      m_pCoreHeader(nullptr),
      m_pPalette(nullptr),
      m_pBits(nullptr),
      m_nWidth(0),
      m_nHeight(0) {}

CDib::~CDib() {
    Free();
}

int CDib::Load(const char* pszFile) {
    Free();
    FileStream* pFile = FileOpen(pszFile, "rb");
    if (!pFile) return 1;
    FileSeek(pFile, 0, SEEK_END);
    const int64_t nSize = FileTell(pFile);
    FileSeek(pFile, 0, SEEK_SET);
    if (nSize < kMinSize || nSize > INT32_MAX) {
        FileClose(pFile);
        return 1;
    }
    std::strncpy(m_szFile, pszFile, sizeof m_szFile - 1);
    m_nDataSize = static_cast<int32_t>(nSize);
    m_pData = ReadWhole(pFile, m_nDataSize);
    FileClose(pFile);
    if (!m_pData || !RegisterDibMemory(m_pData, static_cast<size_t>(m_nDataSize)) ||
        std::memcmp(m_pData, "BM", 2) != 0 || !SetPointers()) {
        Free();
        return 1;
    }
    return 0;
}

// Locates header, palette and pixels by these rules alone: the file header's offset of the pixels is never
// read, and a header of more than 40 bytes is treated as 40. Pixels that would start past the end of the file
// start at its end.
bool CDib::SetPointers() {
    BYTE* pHeader = m_pData + kFileHeader;
    m_pFileHeader = m_pData;
    m_pInfoHeader = reinterpret_cast<BITMAPINFOHEADER*>(pHeader);
    m_pCoreHeader = reinterpret_cast<BITMAPCOREHEADER*>(pHeader);
    const DWORD nHeader = m_pInfoHeader->biSize;
    if (nHeader < kCoreSize) return false;
    const bool bInfo = nHeader >= kInfoSize;
    const int nBits = bInfo ? m_pInfoHeader->biBitCount : m_pCoreHeader->bcBitCount;
    m_nWidth = bInfo ? m_pInfoHeader->biWidth : m_pCoreHeader->bcWidth;
    m_nHeight = bInfo ? m_pInfoHeader->biHeight : m_pCoreHeader->bcHeight;
    int64_t nOffset = kFileHeader + (bInfo ? kInfoSize : kCoreSize);
    if (nBits <= kPaletteBits) {
        m_pPalette = m_pData + nOffset;
        if (bInfo && m_pInfoHeader->biClrUsed == 0) m_pInfoHeader->biClrUsed = PaletteEntries(nBits);
        nOffset += bInfo ? int64_t{4} * m_pInfoHeader->biClrUsed : int64_t{3} * PaletteEntries(nBits);
    }
    m_pBits = m_pData + (nOffset < m_nDataSize ? nOffset : m_nDataSize);
    return true;
}

void CDib::Free() {
    std::memset(m_szFile, 0, sizeof m_szFile);
    if (m_pData) UnregisterDibMemory(m_pData);
    delete[] m_pData;
    m_pData = m_pFileHeader = m_pPalette = m_pBits = nullptr;
    m_pInfoHeader = nullptr;
    m_pCoreHeader = nullptr;
    m_nDataSize = m_nWidth = m_nHeight = 0;
}

int32_t CDib::GetWidth() const {
    return m_nWidth;
}

int32_t CDib::GetHeight() const {
    return m_nHeight;
}

int CDib::Draw(HDC hDC, const RECT* pDest, const RECT* pSource) {
    if (!m_pBits || !m_pInfoHeader || !pDest || !pSource) return 1;
    const int nRows = StretchDIBits(
        hDC, pDest->left, pDest->top, Length(pDest->left, pDest->right), Length(pDest->top, pDest->bottom),
        pSource->left, pSource->top, Length(pSource->left, pSource->right),
        Length(pSource->top, pSource->bottom), m_pBits, m_pInfoHeader, DIB_RGB_COLORS, SRCCOPY);
    return nRows == GDI_ERROR ? 1 : 0;
}

int CDib::Draw(HDC hDC, const RECT* pDest) {
    const RECT whole = {0, 0, m_nWidth, m_nHeight};
    return Draw(hDC, pDest, &whole);
}

int CDib::Draw(HDC hDC, int x, int y, int nWidth, int nHeight) {
    const RECT dest = {x, y, static_cast<LONG>(int64_t{x} + nWidth), static_cast<LONG>(int64_t{y} + nHeight)};
    return Draw(hDC, &dest);
}
