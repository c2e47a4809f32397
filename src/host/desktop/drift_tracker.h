// Assigns a clock reading to each block that a sound device asks for.
#pragma once

#include <cstdint>

namespace host {

// A device asks for blocks with jitter and in bursts, and its clock drifts against ours; some drivers ask as
// fast as they are served. The times given to the blocks advance evenly nevertheless, and no block is mixed
// before the clock has passed its end, so that everything that starts in it is known. After a standstill of
// the device they catch up within two seconds, in steps of at most 8 %. One per output, used on the sound
// thread.
class DriftTracker {
public:
    DriftTracker(int rate, int frames);  // Hz, frames per block

    // For a driver without a pace of its own, such as one that writes a file: the clock paces it and no drift
    // is tracked. Call before the first block.
    void HoldToClock() { m_held = true; }

    struct Block {
        bool silent;    // the device is still filling its buffer: output silence, mix nothing
        uint64_t time;  // of the first frame, ns
        uint64_t wait;  // ns to wait before mixing, at most the length of a block
    };
    Block Next(uint64_t now);

    double Length() const { return m_length; }  // of a block, ns

private:
    void Learn(double now);
    void Steer(double slack);
    bool IsPaceless(int blocks);

    double m_length;  // of a block, ns
    bool m_held = false;
    bool m_learning = true;
    int m_blocks = 0;          // counted while learning
    int m_burst = 0;           // index of the last block that was requested in a burst
    uint64_t m_base = 0;       // clock reading of the first request; times below are relative to it
    double m_end = 0;          // of the last block
    double m_earliest = 0;     // while learning: earliest request, relative to an even pace
    double m_slack = 0;        // minimum of this window; slack: from a block's end to its request
    bool m_paceless = false;   // the driver has been found to have no pace of its own
    int m_trial = 0;           // windows since the trial for that began, or since its result
    double m_trial_slack = 0;  // when it began
    int m_window = 0;          // blocks in this window
    int m_waits = 0;           // of them, requested before their end
    int m_stood = 0;           // consecutive blocks that came late enough for that
    bool m_catching_up = false;
    int m_late_windows = 0;  // consecutive windows above the slack limit
    double m_pace = 1;       // of the block times, relative to nominal
};

}  // namespace host
