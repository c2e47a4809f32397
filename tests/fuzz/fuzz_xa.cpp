// Takes any bytes as an XA file, with the first four replaced by the XA magic.
#include <algorithm>
#include <vector>

#include "play_sound.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::vector<uint8_t> bytes(data, data + size);
    std::copy_n("KWD1", std::min<size_t>(size, 4), bytes.begin());
    fuzz::PlaySound(fuzz::Device(), bytes.data(), bytes.size());
    return 0;
}
