// IMA ADPCM as WAV files hold it. Decoded here and not by the codec library, which takes several times as
// long for this, the usual format of compressed sounds in charts.
#pragma once

#include "platform/wintypes.h"

constexpr DWORD kImaHeadBytes =
    4;  // of a block, per channel: the first sample, the step index, a byte unused

// Decodes nBlocks blocks to interleaved samples. nBlockBytes: a multiple of 4 * nChannels, more than the
// heads. Makes 2 * (nBlockBytes / nChannels - 4) + 1 frames a block. A step index beyond the table is
// clamped.
void DecodeIma(const BYTE* pSource, DWORD nBlocks, DWORD nBlockBytes, DWORD nChannels, int16_t* pSamples);
