// Pictures as PNG files.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tools {

// A PNG in memory, 8 bits RGB. pixels: 0x00RRGGBB, top row first. Empty when the library fails.
std::string EncodePng(const std::vector<uint32_t>& pixels, int width, int height);

}  // namespace tools
