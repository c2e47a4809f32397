// Which clock reading each block of a sound device stands for.
#pragma once

#include <cstdint>

namespace host {

// A device asks for blocks with jitter, in bursts, at a pace that is not quite the nominal one; some drivers
// ask as fast as they are served. The blocks' times advance evenly all the same, and no block ends after the
// moment of its mixing, so that everything that has happened until its end is known.
class BlockClock {
public:
    BlockClock(int rate, int frames);

    // The driver has no pace of its own, such as one that writes a file: it is held to the clock, nothing is
    // followed. Before the first block.
    void HoldToClock() { m_held = true; }

    struct Block {
        bool silent;    // the device is still filling up: give silence, mix nothing
        uint64_t time;  // of the first frame
        uint64_t wait;  // ns to wait before mixing, at most a block's length
    };
    Block Next(uint64_t now);

    double Length() const { return m_length; }  // of a block, ns

private:
    void Learn(double now);
    void Steer(double slack);
    bool IsPaceless();

    double m_length;  // ns
    bool m_held = false;
    bool m_learning = true;
    int m_blocks = 0;         // while learning, so far
    int m_burst = 0;          // the latest of them that was asked for in a burst
    uint64_t m_base = 0;      // readings below are relative to the first
    double m_end = 0;         // of the latest block
    double m_earliest = 0;    // while learning: the earliest that a block was asked for, against an even pace
    double m_slack = 0;       // the least time between a block's end and its mixing in this window
    bool m_paceless = false;  // the driver, as far as is known
    int m_trial = 0;          // windows since the question was opened, or since it was answered
    double m_trial_slack = 0;  // at its opening
    int m_window = 0;          // blocks in it
    int m_waits = 0;           // of them, those that were asked for before they had ended
    int m_late_windows = 0;    // in a row
    double m_pace = 1;         // of the times, against the nominal one
};

}  // namespace host
