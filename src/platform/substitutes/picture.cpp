#include "platform/substitutes/picture.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr size_t kHeaders = 54;

void PutNumber(BYTE* p, uint64_t n, int nBytes) {
    for (int i = 0; i < nBytes; ++i) p[i] = static_cast<BYTE>(n >> (8 * i));
}

bool BeginsWith(const BYTE* pFile, size_t nBytes, const char* pszHead) {
    const size_t nHead = std::strlen(pszHead);
    return nBytes >= nHead && std::memcmp(pFile, pszHead, nHead) == 0;
}

}  // namespace

BmpRows StartBmp(int64_t nWidth, int64_t nHeight, int nBits, ByteBlock* pBmp) {
    if (nWidth < 1 || nHeight < 1 || nWidth > kMaxPictureSide || nHeight > kMaxPictureSide) return {};
    const size_t nStride = (static_cast<size_t>(nWidth * nBits) / 8 + 3) / 4 * 4;
    const size_t nPixels = nStride * static_cast<size_t>(nHeight);
    if (!pBmp->Resize(kHeaders + nPixels)) return {};
    BYTE* p = pBmp->Data();
    std::memset(p, 0, kHeaders);
    std::memcpy(p, "BM", 2);
    PutNumber(p + 2, kHeaders + nPixels, 4);
    PutNumber(p + 10, kHeaders, 4);
    PutNumber(p + 14, 40, 4);
    PutNumber(p + 18, static_cast<uint64_t>(nWidth), 4);
    PutNumber(p + 22, static_cast<uint64_t>(nHeight), 4);
    PutNumber(p + 26, 1, 2);
    PutNumber(p + 28, static_cast<uint64_t>(nBits), 2);
    PutNumber(p + 34, nPixels, 4);
    // Clear the padding of each row.
    const size_t nRow = static_cast<size_t>(nWidth * nBits) / 8;
    for (size_t y = 0; nRow < nStride && y < static_cast<size_t>(nHeight); ++y)
        std::memset(p + kHeaders + y * nStride + nRow, 0, nStride - nRow);
    return {p + kHeaders, nStride};
}

bool PictureToBmp(const BYTE* pFile, size_t nBytes, ByteBlock* pBmp) {
    if (nBytes > kMaxPictureFile) return false;
    if (BeginsWith(pFile, nBytes, "\x89PNG\r\n\x1A\n")) return PngToBmp(pFile, nBytes, pBmp);
    if (BeginsWith(pFile, nBytes, "\xFF\xD8\xFF")) return JpegToBmp(pFile, nBytes, pBmp);
    if (BeginsWith(pFile, nBytes, "GIF8")) return GifToBmp(pFile, nBytes, pBmp);
    return false;
}
