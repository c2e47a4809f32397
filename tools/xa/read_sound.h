// Sound files for the XA tool, by libsndfile.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace xa {

struct Sound {
    int channels = 0;
    uint32_t rate = 0;
    std::vector<int16_t> samples;  // interleaved
};

// Reads any sound file that the library reads as 16 bits; floats are scaled and clipped. Returns false with a
// reason when the file cannot be read or cannot become an XA file.
bool ReadSound(const std::string& path, Sound* sound, std::string* why);

}  // namespace xa
