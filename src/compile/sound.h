// The sound of a name, as the player would load it, decoded for mixing.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/byteblock.h"

namespace audio {
class Filter;
}

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

// Tells how long sounds last. Reads only the head of PCM files of 8 or 16 bits and decodes all others.
class SoundClock {
public:
    // In ms, as LoadSound's result would last; negative when that would be null, and for those that would
    // have to be decoded after six hours of others.
    double Ms(const std::string& name);

private:
    double Measure(const std::string& name);

    std::map<std::string, double> known_;
    std::shared_ptr<const audio::Filter> last_filter_;  // kept: most sounds of a chart have one rate
    double decoded_ms_ = 0.0;
};

}  // namespace compile
