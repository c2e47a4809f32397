// Reads the header, palette and masks of a bitmap.
#include "platform/graphics/dib_format.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace {

constexpr DWORD kInfoSize = 40, kCoreSize = 12;
constexpr size_t kMaskBytes = 12;

struct Masks {
    DWORD nRed, nGreen, nBlue;
};
constexpr Masks kMasks555 = {0x7C00, 0x03E0, 0x001F};
constexpr Masks kMasks888 = {0xFF0000, 0x00FF00, 0x0000FF};

template <class T>
T Get(const BYTE* p) {
    T value;
    std::memcpy(&value, p, sizeof value);
    return value;
}

void SetChannel(DWORD nMask, DibChannel* pChannel) {
    *pChannel = {};
    if (nMask == 0) return;
    const int nTop = 32 - std::countl_zero(nMask);  // one above the highest bit
    const int nBits = std::min(nTop - std::countr_zero(nMask), 8);
    pChannel->nMask = nMask;
    pChannel->nShift = nTop - nBits;
    for (int v = 0; v < 1 << nBits; ++v) {
        int nWide = v << (8 - nBits);
        for (int nHave = nBits; nHave < 8; nHave += nBits) nWide |= nWide >> nHave;
        pChannel->abExpand[v] = static_cast<BYTE>(nWide);
    }
}

void SetChannels(const Masks& masks, DibPicture* pPicture) {
    SetChannel(masks.nRed, &pPicture->aChannel[0]);
    SetChannel(masks.nGreen, &pPicture->aChannel[1]);
    SetChannel(masks.nBlue, &pPicture->aChannel[2]);
    pPicture->bMasked = true;
}

bool IsKnownFormat(int nBits, DWORD nCompression) {
    switch (nCompression) {
        case BI_RGB:
            return nBits == 1 || nBits == 4 || nBits == 8 || nBits == 16 || nBits == 24 || nBits == 32;
        case BI_RLE8:
            return nBits == 8;
        case BI_RLE4:
            return nBits == 4;
        case BI_BITFIELDS:
            return nBits == 16 || nBits == 32;
        default:
            return false;
    }
}

// Entries of nEntryBytes: blue, green, red, and an optional fourth byte that is ignored.
void ReadPalette(const BYTE* pPalette, DWORD nEntries, size_t nEntryBytes, DibPicture* pPicture) {
    const size_t nInMemory = static_cast<size_t>(pPicture->pEnd - pPalette) / nEntryBytes;
    const size_t nCount = std::min({size_t{nEntries}, nInMemory, size_t{1} << pPicture->nBits});
    for (size_t i = 0; i < nCount; ++i, pPalette += nEntryBytes)
        pPicture->anPalette[i] = static_cast<DWORD>(pPalette[2] << 16 | pPalette[1] << 8 | pPalette[0]);
}

bool ReadMasks(const BYTE* pMasks, DibPicture* pPicture) {
    if (static_cast<size_t>(pPicture->pEnd - pMasks) < kMaskBytes) return false;
    const auto masks = Get<Masks>(pMasks);
    if (pPicture->pBits == pMasks) pPicture->pBits += kMaskBytes;
    const bool bPlain = pPicture->nBits == 32 && masks.nRed == kMasks888.nRed &&
                        masks.nGreen == kMasks888.nGreen && masks.nBlue == kMasks888.nBlue;
    if (!bPlain) SetChannels(masks, pPicture);
    return true;
}

bool ReadCore(const BYTE* pInfo, DibPicture* pPicture) {
    BITMAPCOREHEADER header;
    std::memcpy(&header, pInfo, sizeof header);
    pPicture->nWidth = header.bcWidth;
    pPicture->nHeight = header.bcHeight;
    pPicture->nBits = header.bcBitCount;
    if (!IsKnownFormat(pPicture->nBits, BI_RGB)) return false;
    if (pPicture->nBits <= 8) ReadPalette(pInfo + kCoreSize, 256, 3, pPicture);
    return true;
}

bool ReadInfo(const BYTE* pInfo, DibPicture* pPicture) {
    BITMAPINFOHEADER header;
    std::memcpy(&header, pInfo, sizeof header);
    pPicture->nWidth = header.biWidth;
    pPicture->nHeight = header.biHeight < 0 ? -int64_t{header.biHeight} : header.biHeight;
    pPicture->bTopDown = header.biHeight < 0;
    pPicture->nBits = header.biBitCount;
    pPicture->nCompression = header.biCompression;
    if (!IsKnownFormat(pPicture->nBits, header.biCompression)) return false;
    if (header.biCompression == BI_BITFIELDS) return ReadMasks(pInfo + kInfoSize, pPicture);
    if (pPicture->nBits <= 8)
        ReadPalette(pInfo + kInfoSize, header.biClrUsed ? header.biClrUsed : 256, 4, pPicture);
    return true;
}

}  // namespace

bool ReadDibPicture(const BITMAPINFOHEADER* pInfo, const void* pBits, DibPicture* pPicture) {
    const auto* pHeader = reinterpret_cast<const BYTE*>(pInfo);
    pPicture->pBits = static_cast<const BYTE*>(pBits);
    pPicture->pEnd = FindDibEnd(pHeader);
    if (!pPicture->pEnd || pPicture->pBits < pHeader || pPicture->pBits > pPicture->pEnd) return false;
    const auto nRoom = static_cast<size_t>(pPicture->pEnd - pHeader);
    if (nRoom < kCoreSize) return false;
    const auto nSize = Get<DWORD>(pHeader);
    if (nSize < kCoreSize || (nSize >= kInfoSize && nRoom < kInfoSize)) return false;
    if (nSize >= kInfoSize ? !ReadInfo(pHeader, pPicture) : !ReadCore(pHeader, pPicture)) return false;
    if (pPicture->nBits == 16 && pPicture->nCompression == BI_RGB) SetChannels(kMasks555, pPicture);
    const auto nRowBits = static_cast<uint64_t>(pPicture->nWidth) * static_cast<uint64_t>(pPicture->nBits);
    pPicture->nRowBytes = (nRowBits + 31) / 32 * 4;
    return pPicture->nWidth > 0 && pPicture->nHeight > 0;
}
