// Converts pictures of other kinds to BMP files.
#pragma once

#include "platform/byteblock.h"

// Limits. Larger pictures are rejected before memory is allocated.
constexpr int kMaxPictureSide = 4096;                 // pixels
constexpr size_t kMaxPictureFile = size_t{64} << 20;  // bytes of the encoded picture

// Converts a PNG, JPEG or GIF file to a BMP file with 24 bits, or 32 if the picture has transparency, which
// is composed on black. Takes the first picture of a GIF, at its position on the GIF's screen. The first
// bytes tell the kind. False for any other kind, beyond the limits, and for damaged files; a truncated JPEG
// is grey after its end. Accepts arbitrary bytes. Thread-safe.
bool PictureToBmp(const BYTE* pFile, size_t nBytes, ByteBlock* pBmp);

// What decoding it costs: bytes of the BMP times the scans of a JPEG, or 1. 0 for what PictureToBmp refuses
// by its head. Looks at headers and markers alone. Any bytes may be given.
uint64_t PictureWork(const BYTE* pFile, size_t nBytes);

// The parts, each for files that begin as their kind does.
bool PngToBmp(const BYTE* pFile, size_t nBytes, ByteBlock* pBmp);
bool JpegToBmp(const BYTE* pFile, size_t nBytes, ByteBlock* pBmp);
bool GifToBmp(const BYTE* pFile, size_t nBytes, ByteBlock* pBmp);

// Allocates a BMP and writes its headers; the pixels are undefined. Returns the bottom row, with the rows
// above it at nStride. Null when the size is out of bounds or memory runs out.
struct BmpRows {
    BYTE* pBottom = nullptr;
    size_t nStride = 0;
};
BmpRows StartBmp(int64_t nWidth, int64_t nHeight, int nBits, ByteBlock* pBmp);
