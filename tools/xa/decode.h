// A whole XA file in memory, for the tool.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "xa/read_sound.h"

namespace xa {

struct Header {
    uint32_t data_bytes = 0;
    uint32_t frames = 0;
    int bits = 0;
    int channels = 0;
    uint32_t rate = 0;
};

// Returns false with a reason when the decoder does not take the file.
bool ReadHeader(const std::vector<uint8_t>& file, Header* header, std::string* why);

// Decodes to PCM, cut to the header's frames. A file that ends early is decoded as far as it goes.
bool Decode(const std::vector<uint8_t>& file, const Header& header, Sound* sound, std::string* why);

}  // namespace xa
