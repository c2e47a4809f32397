// The sound output of the headless host: captured for tests, or passed on to a sink.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace headless {

// Output frame n sounds n / rate seconds after kClockOrigin: what happens at a clock reading t is heard from
// frame floor((t - kClockOrigin) * rate / 1e9) on.
int64_t SoundFrame(uint64_t nanoseconds);

bool SoundIsOpen();
int SoundRate();  // of the current or the last output; 0 before the first

// All sound since the output was opened, up to the clock; interleaved stereo. Kept until it is opened again
// or Reset.
struct SoundCapture {
    int rate = 0;
    int64_t first = 0;  // the frame of samples[0] and [1]
    std::vector<float> samples;

    int64_t End() const { return first + static_cast<int64_t>(samples.size() / 2); }
    float At(int64_t frame, int channel) const {  // 0 outside
        if (frame < first || frame >= End()) return 0;
        return samples[static_cast<size_t>(2 * (frame - first) + channel)];
    }
};
const SoundCapture& Sound();

// A sink receives each block of frames in order, instead of the capture. Null captures again. Reset removes
// the sink.
using SoundSink = void (*)(void* user, const float* samples, int frames, int rate);
void SetSoundSink(SoundSink sink, void* user);

// Opening the output fails while this is on.
void RefuseSound(bool refuse);

// The device asks for nothing while this is on, like one that is still being opened or hangs; the output is
// silence.
void StallSound(bool stall);

// From now on the device asks for blocks of exactly so many frames, each so long after the clock has passed
// its end, as a real device does. Each begins `apart` frames after the end of the last, as those of a device
// that is being caught up with; the capture joins them. 0 frames, as after Reset: no lag.
void LagSound(int frames, uint64_t nanoseconds, int apart = 0);

}  // namespace headless
