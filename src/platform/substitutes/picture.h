// Pictures of other kinds made into BMP files.
#pragma once

#include "platform/byteblock.h"

// Bounds. Larger pictures are refused before memory is taken for them.
constexpr int kMaxPictureSide = 4096;                 // pixels
constexpr size_t kMaxPictureFile = size_t{64} << 20;  // bytes of the encoded picture

// The BMP file that shows what a PNG, JPEG or GIF file shows: of 24 bits, or of 32 where the picture can be
// seen through, which is composed on black; the first picture of a GIF on its screen. Which kind it is is
// told by its first bytes. False for any other, for one beyond the bounds, and for one that is damaged; of a
// JPEG that ends early the rest is grey. Any bytes may be given. Safe on any thread.
bool PictureToBmp(const BYTE* pFile, size_t nBytes, ByteBlock* pBmp);

// What decoding it costs: bytes of the BMP times the scans of a JPEG, or 1. 0 for what PictureToBmp refuses
// by its head. Looks at headers and markers alone. Any bytes may be given.
uint64_t PictureWork(const BYTE* pFile, size_t nBytes);

// The parts, each for files that begin as their kind does.
bool PngToBmp(const BYTE* pFile, size_t nBytes, ByteBlock* pBmp);
bool JpegToBmp(const BYTE* pFile, size_t nBytes, ByteBlock* pBmp);
bool GifToBmp(const BYTE* pFile, size_t nBytes, ByteBlock* pBmp);

// A BMP with its headers written and its pixels not yet. Null when the size is out of bounds or memory is
// lacking; else the bottom row, with the others above it at nStride.
struct BmpRows {
    BYTE* pBottom = nullptr;
    size_t nStride = 0;
};
BmpRows StartBmp(int64_t nWidth, int64_t nHeight, int nBits, ByteBlock* pBmp);
