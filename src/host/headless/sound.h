// What the headless host's sound output has given: to compare in tests, or to pass on as it comes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace headless {

// Output frame n sounds at n / rate seconds of the clock, counted from kClockOrigin: what happens at a
// reading t is heard from frame floor((t - kClockOrigin) * rate / 1e9) on.
int64_t SoundFrame(uint64_t nanoseconds);

bool SoundIsOpen();
int SoundRate();  // of the output that is open, or was last; 0 before the first

// All sound since the output was opened, up to the clock; interleaved stereo. Kept until it is opened anew or
// Reset.
struct SoundCapture {
    int rate = 0;
    int64_t first = 0;  // the frame that samples[0] and [1] are
    std::vector<float> samples;

    int64_t End() const { return first + static_cast<int64_t>(samples.size() / 2); }
    float At(int64_t frame, int channel) const {  // 0 outside
        if (frame < first || frame >= End()) return 0;
        return samples[static_cast<size_t>(2 * (frame - first) + channel)];
    }
};
const SoundCapture& Sound();

// Instead of keeping it: called for each run of frames, in order. Null to keep it again. Reset forgets the
// sink.
using SoundSink = void (*)(void* user, const float* samples, int frames, int rate);
void SetSoundSink(SoundSink sink, void* user);

// The next openings of the output fail.
void RefuseSound(bool refuse);

// The device asks for nothing while this is on, as one does that is still being opened or that stands still;
// what sounds then is silence.
void StallSound(bool stall);

}  // namespace headless
