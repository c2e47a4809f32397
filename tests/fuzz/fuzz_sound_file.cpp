// Takes any bytes as a substitute sound. If it converts, the result is a WAV file with whole frames.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "platform/substitutes/sound.h"

// Each truncated Vorbis header leaks 6 kB inside the library.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libvorbis\nleak:libsndfile\n";
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    // A few bytes can mean minutes of silence; anything of interest is in the first seconds.
    constexpr size_t kEnough = size_t{8} << 20;
    size_t held = 0;
    ByteBlock wav;
    if (!SoundToWav(
            data, size, [&](size_t bytes) { return (held = bytes) < kEnough; }, &wav))
        return 0;
    uint32_t bytes;
    uint16_t channels, align;
    std::memcpy(&channels, wav.Data() + 22, 2);
    std::memcpy(&align, wav.Data() + 32, 2);
    std::memcpy(&bytes, wav.Data() + 40, 4);
    if (channels < 1 || channels > kMaxSoundChannels || align != channels * 2) std::abort();
    if (bytes == 0 || bytes % align != 0 || wav.Size() != 44 + size_t{bytes} || held != size + wav.Size())
        std::abort();
    return 0;
}
