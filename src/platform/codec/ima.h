// IMA ADPCM as WAV files hold it. Decoded here and not by the codec library, which takes several times as
// long for this, the usual format of compressed sounds in charts.
#pragma once

#include "platform/wintypes.h"

// Bytes per channel: the head of a block, with the first sample, the step index and a byte unused; and the
// codes that stand together, the low half of a byte first.
constexpr DWORD kImaHeadBytes = 4, kImaGroupBytes = 4;

// Decodes nBlocks blocks to interleaved samples. nBlockBytes: a multiple of 4 * nChannels, at least the
// heads. Makes 2 * (nBlockBytes / nChannels - 4) + 1 frames a block. A step index beyond the table is
// clamped.
void DecodeIma(const BYTE* pSource, DWORD nBlocks, DWORD nBlockBytes, DWORD nChannels, int16_t* pSamples);

// The bytes that hold the first nFrames (1 or more) frames of a block. Codes come in groups of eight.
constexpr DWORD ImaBlockBytes(DWORD nFrames, DWORD nChannels) {
    return (kImaHeadBytes + (nFrames - 1 + 7) / 8 * kImaGroupBytes) * nChannels;
}
