// The rendered sound as a WAV file.
#pragma once

#include <cstdint>

#include "render/output.h"

namespace render {

// 44,100 Hz, 16 bit, stereo. On standard output, whose head cannot be mended later, the sizes are as large as
// can be.
class WavWriter {
public:
    static constexpr double kMostSeconds = 24300;  // 4 GiB hold a little more

    bool Open(const std::string& name);
    bool Write(const float* samples, int frames);  // interleaved, full scale at 1
    bool Commit();

private:
    bool WriteHeader(uint32_t data_bytes, bool again);

    Output out_;
    uint64_t bytes_ = 0;
};

}  // namespace render
