// Private to this room: the pixel loops behind every frame.
#pragma once

#include <cstddef>
#include <cstdint>

// Each works on nHeight rows of nWidth pixels; strides are in pixels. Source and destination must not
// overlap.
void CopyPixels(uint32_t* pDest, size_t nDestStride, const uint32_t* pSource, size_t nSourceStride,
                size_t nWidth, size_t nHeight);
// Skips source pixels that equal nKey.
void CopyPixelsKeyed(uint32_t* pDest, size_t nDestStride, const uint32_t* pSource, size_t nSourceStride,
                     size_t nWidth, size_t nHeight, uint32_t nKey);
void FillPixels(uint32_t* pDest, size_t nDestStride, size_t nWidth, size_t nHeight, uint32_t nValue);
