// Memory for samples. Page faults take most of the time when a song's sounds are loaded, so the memory comes
// from large mappings on huge pages.
#pragma once

#include <cstddef>

namespace audio {

constexpr size_t kSampleMemoryLimit = size_t{1} << 31;  // bytes, for all buffers of the process together

struct SampleBlock {
    unsigned char* data = nullptr;  // null: out of memory, or over the limit
    size_t bytes = 0;
    bool zeroed = false;  // fresh from the system; otherwise the content is undefined
};

SampleBlock AllocateSamples(size_t bytes);   // aligned to 64 bytes; callable from any thread
void FreeSamples(const SampleBlock& block);  // returns a mapping to the system when its last block is freed

// Fills part of a block. From kLargeFill bytes on, silence (0, or 0x80 for 8 bits) takes no memory until it
// is written to.
constexpr size_t kLargeFill = size_t{256} << 10;
void FillSamples(unsigned char* data, size_t bytes, unsigned char value);

}  // namespace audio
