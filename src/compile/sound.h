// The sound of a name, as the player would load it, decoded for mixing.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/byteblock.h"

namespace compile {

struct Sound {
    std::vector<int16_t> samples;  // interleaved stereo at kStemRate
    size_t Frames() const { return samples.size() / 2; }
    double Ms() const;
};
using SoundPtr = std::shared_ptr<const Sound>;

// Null when there is no such file, when it cannot be decoded, and when memory runs out. Takes substitutes.
// Does not use the door, so it is safe on any thread.
SoundPtr LoadSound(const std::string& name);

// The same for bytes of a RIFF WAVE or XA file. Accepts arbitrary bytes.
SoundPtr DecodeSound(const BYTE* bytes, size_t size);

}  // namespace compile
