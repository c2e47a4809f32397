// Inside the platform: the copies of rectangles of pixels from which every frame is made.
#pragma once

#include <cstddef>
#include <cstdint>

// Both take rows of nWidth pixels, nStride pixels apart. Source and destination must not overlap.
void CopyPixels(uint32_t* pDest, size_t nDestStride, const uint32_t* pSource, size_t nSourceStride,
                size_t nWidth, size_t nHeight);
// Leaves the destination where the source has exactly the value nKey.
void CopyPixelsKeyed(uint32_t* pDest, size_t nDestStride, const uint32_t* pSource, size_t nSourceStride,
                     size_t nWidth, size_t nHeight, uint32_t nKey);
void FillPixels(uint32_t* pDest, size_t nDestStride, size_t nWidth, size_t nHeight, uint32_t nValue);
