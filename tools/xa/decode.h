// A whole XA file in memory, for the tool.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "xa/wav.h"

namespace xa {

struct Header {
    uint32_t data_bytes = 0;
    uint32_t frames = 0;
    int bits = 0;
    int channels = 0;
    uint32_t rate = 0;
};

// False with a reason when the file is none that the decoder takes.
bool ReadHeader(const std::vector<uint8_t>& file, Header* header, std::string* why);

// The PCM, cut to the header's frames. A file that ends early gives what it has.
bool Decode(const std::vector<uint8_t>& file, const Header& header, Sound* sound, std::string* why);

}  // namespace xa
