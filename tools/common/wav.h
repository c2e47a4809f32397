// Sound as a WAV file.
#pragma once

#include <cstdint>
#include <string>

#include "common/output.h"

namespace tools {

// 16-bit PCM. Where the head cannot be mended once all is written, such as on standard output, its sizes are
// as large as can be. Operations return false when they fail; error() then says why.
class WavWriter {
public:
    bool Open(const std::string& name, int channels, uint32_t rate);
    bool OpenDescriptor(int fd, int channels, uint32_t rate);  // an open file, which stays the caller's
    bool Write(const int16_t* samples, size_t count);          // interleaved; fails above 4 GiB in all
    bool WriteSilence(size_t count);                           // so many samples
    bool Commit();
    const std::string& error() const { return error_.empty() ? out_.error() : error_; }

private:
    bool Begin(int channels, uint32_t rate);
    bool WriteHeader(uint32_t data_bytes);
    bool Count(uint64_t bytes);
    bool EndSilence();

    Output out_;
    std::string error_;
    int channels_ = 0;
    uint32_t rate_ = 0;
    uint64_t bytes_ = 0;
    uint64_t silence_ = 0;  // bytes of them that are not written yet
};

}  // namespace tools
