// Memory for samples. Loading a song's sounds is mostly page faults, so it comes from large mappings on huge
// pages.
#pragma once

#include <cstddef>

namespace audio {

constexpr size_t kSampleMemoryLimit = size_t{1} << 31;  // bytes, all buffers of the process together

struct SampleBlock {
    unsigned char* data = nullptr;  // null: no memory, or the limit is reached
    size_t bytes = 0;
    bool zeroed = false;  // fresh from the system; otherwise it holds anything
};

SampleBlock AllocateSamples(size_t bytes);   // aligned to 64 bytes; any thread
void FreeSamples(const SampleBlock& block);  // a mapping that nothing uses any more goes back to the system

}  // namespace audio
