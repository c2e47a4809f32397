// WAV files for the XA tool, by libsndfile.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace xa {

struct Sound {
    int channels = 0;
    uint32_t rate = 0;
    std::vector<int16_t> samples;  // interleaved
};

// Any sound file the library reads, brought to 16 bits; float is scaled and clipped. False with a reason when
// it cannot be read or be an XA file.
bool ReadWav(const std::string& path, Sound* sound, std::string* why);

// A 16-bit WAV file to an open descriptor, which stays open.
bool WriteWav(int fd, int channels, uint32_t rate, std::span<const int16_t> samples, std::string* why);

}  // namespace xa
