#include "platform/substitutes/picture.h"

#include <algorithm>
#include <cstring>

#include "platform/bytes.h"

namespace {

constexpr size_t kHeaders = 54;

void PutNumber(BYTE* p, uint64_t n, int nBytes) {
    for (int i = 0; i < nBytes; ++i) p[i] = static_cast<BYTE>(n >> (8 * i));
}

bool BeginsWith(const BYTE* pFile, size_t nBytes, const char* pszHead) {
    const size_t nHead = std::strlen(pszHead);
    return nBytes >= nHead && std::memcmp(pFile, pszHead, nHead) == 0;
}

enum class PictureKind { kNone, kPng, kJpeg, kGif };

PictureKind KindOfPicture(const BYTE* pFile, size_t nBytes) {
    if (BeginsWith(pFile, nBytes, "\x89PNG\r\n\x1A\n")) return PictureKind::kPng;
    if (BeginsWith(pFile, nBytes, "\xFF\xD8\xFF")) return PictureKind::kJpeg;
    return BeginsWith(pFile, nBytes, "GIF8") ? PictureKind::kGif : PictureKind::kNone;
}

// Highest byte first.
uint32_t ReadBe(const BYTE* p, int nBytes) {
    uint32_t n = 0;
    for (int i = 0; i < nBytes; ++i) n = n << 8 | p[i];
    return n;
}

// 0 for a size that is not decoded.
uint64_t PixelsOf(uint64_t nWidth, uint64_t nHeight) {
    constexpr uint64_t kSide = kMaxPictureSide;
    return nWidth <= kSide && nHeight <= kSide ? nWidth * nHeight : 0;
}

uint64_t Work(uint64_t nWidth, uint64_t nHeight) {
    return PixelsOf(nWidth, nHeight) * 3;
}

// Walks the markers; what follows the start of a scan is skipped up to the next marker.
uint64_t JpegWork(const BYTE* pFile, size_t nBytes) {
    constexpr BYTE kFrame = 0xC0, kLastFrame = 0xCF, kEnd = 0xD9, kScan = 0xDA;
    uint64_t nPixels = 0, nScans = 0;
    for (size_t i = 2; i + 9 <= nBytes;) {
        const BYTE nMarker = pFile[i + 1];
        if (pFile[i] != 0xFF || nMarker <= 1 || nMarker == 0xFF || (nMarker >= 0xD0 && nMarker <= 0xD7)) {
            ++i;
            continue;
        }
        if (nMarker == kEnd) break;
        // Each fourth marker among those of frames is something else.
        // The decoder takes the first; what looks like one further on may be anything.
        if (nMarker == kFrame || (nMarker > kFrame && nMarker <= kLastFrame && nMarker % 4 != 0))
            nPixels = std::max(nPixels, PixelsOf(ReadBe(pFile + i + 7, 2), ReadBe(pFile + i + 5, 2)));
        nScans += nMarker == kScan;
        i += 2 + ReadBe(pFile + i + 2, 2);
    }
    return nPixels * 3 * std::max<uint64_t>(nScans, 1);
}

// The larger of the screen and the first picture, which is decoded whole however small the screen is.
uint64_t GifWork(const BYTE* p, size_t nBytes) {
    constexpr size_t kHead = 13, kPlace = 10;
    if (nBytes < kHead) return 0;
    uint64_t nWidth = ReadLe16(p + 6), nHeight = ReadLe16(p + 8);
    size_t i = kHead + (p[10] & 0x80 ? size_t{6} << (p[10] & 7) : 0);
    while (i + 2 < nBytes && p[i] == '!') {
        for (i += 2; i < nBytes && p[i] != 0;) i += p[i] + size_t{1};
        ++i;
    }
    if (i + kPlace <= nBytes && p[i] == ',') {
        nWidth = std::max<uint64_t>(nWidth, ReadLe16(p + i + 5));
        nHeight = std::max<uint64_t>(nHeight, ReadLe16(p + i + 7));
    }
    return Work(nWidth, nHeight);
}

}  // namespace

uint64_t PictureWork(const BYTE* pFile, size_t nBytes) {
    constexpr size_t kPngSize = 16;
    const PictureKind kind = KindOfPicture(pFile, nBytes);
    if (kind == PictureKind::kJpeg) return JpegWork(pFile, nBytes);
    if (kind == PictureKind::kPng && nBytes >= kPngSize + 8)
        return Work(ReadBe(pFile + kPngSize, 4), ReadBe(pFile + kPngSize + 4, 4));
    return kind == PictureKind::kGif ? GifWork(pFile, nBytes) : 0;
}

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
    switch (KindOfPicture(pFile, nBytes)) {
        case PictureKind::kPng:
            return PngToBmp(pFile, nBytes, pBmp);
        case PictureKind::kJpeg:
            return JpegToBmp(pFile, nBytes, pBmp);
        case PictureKind::kGif:
            return GifToBmp(pFile, nBytes, pBmp);
        default:
            return false;
    }
}
