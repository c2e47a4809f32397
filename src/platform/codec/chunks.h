// What all readers of RIFF files agree on.
#pragma once

#include <algorithm>

#include "platform/wintypes.h"

// Real files have a dozen chunks. A file of empty ones must not cost a walk over gigabytes.
constexpr int kMaxChunksSearched = 65536;

// A chunk of odd size is followed by a pad byte, but some writers omit it. Whether the four bytes behind such
// a chunk are the name of the next one, so that there is no pad byte.
inline bool IsChunkName(const BYTE* pBytes) {
    return pBytes[0] != ' ' && std::all_of(pBytes, pBytes + 4, [](BYTE c) { return c >= 0x20 && c < 0x7F; });
}
