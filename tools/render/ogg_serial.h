// The serial number of an Ogg stream, which its encoder draws from the clock.
#pragma once

#include <cstdint>
#include <string_view>

namespace render {

// Gives all pages of an open Ogg file with one stream the serial number that the seed, any text, leads to:
// files of the same content become the same bytes. False when the file cannot be read or written, or does not
// consist of pages; pages before that place are changed then. RFC 3533, section 6.
bool SetOggSerial(int fd, std::string_view seed);

}  // namespace render
