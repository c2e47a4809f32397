// Encodes XA files. The decoder is sound/xadec.h; docs/xa.md describes the format.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace xa {

enum class Mode {
    kFast,  // 4-bit codes: 4.5 bits a sample
    kFine,  // 10-bit codes: 10.5 bits a sample
};

// Why this sound cannot be an XA file; null when it can: 1 or 2 channels, a rate of 100 to 200,000 Hz, and at
// most 2 GB of PCM.
const char* Refusal(int channels, uint32_t rate, uint64_t frames);

// The whole file: header and data. Samples are interleaved, 16 bits. Empty when Refusal has a reason. Tries
// the most likely filters and ranges for each block, in the decoder's own arithmetic, and keeps the smallest
// error.
std::vector<uint8_t> Encode(std::span<const int16_t> samples, int channels, uint32_t rate, Mode mode);

}  // namespace xa
