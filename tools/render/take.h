// Sound that is kept until all of it is known, and what is done to it then.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>

namespace render {

// Frames of stereo floats in a file without a name, so that long charts take no memory. False when the disk
// fails.
class Take {
public:
    Take();
    ~Take();
    Take(const Take&) = delete;
    Take& operator=(const Take&) = delete;
    bool Add(const float* samples, int64_t frames);
    int64_t frames() const { return frames_; }
    // Hands out [first, last) in blocks. False when the disk fails or the receiver returned false.
    using Receiver = std::function<bool(float* samples, int64_t frames)>;
    bool Read(int64_t first, int64_t last, const Receiver& receiver) const;

private:
    int fd_;
    int64_t frames_ = 0;
};

struct Treatment {
    bool trim = false;                  // leave out silence below -60 dB at both ends
    int64_t fade_in = 0, fade_out = 0;  // frames
    std::optional<double> loudness;     // LUFS by EBU R128; a true peak above -1 dBTP lowers it
};

struct TreatmentResult {
    bool held_by_peak = false;
    double loudness = 0;  // reached, when one was wanted
};

// Hands the treated take to the receiver. Without any treatment samples come as they were added.
bool Treat(const Take& take, const Treatment& treatment, const Take::Receiver& receiver,
           TreatmentResult* result);

}  // namespace render
