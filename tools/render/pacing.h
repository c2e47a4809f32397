// When the frames of a pass run.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace render {

// The player's frames lie 15 ms apart. Between them this puts one frame at each due time, without moving the
// player's own: it ends the sleep of a frame early, and hides the frames it adds from the stamp by which the
// next presentation decides how long to sleep.
class Pacer {
public:
    void SetDue(std::vector<int64_t> times);  // chart times in ms
    // The reading at which a sleep from now to end is to end; see headless::OnSleep. In nanoseconds.
    uint64_t Wake(uint64_t now, uint64_t end);
    void OnShown();  // each frame, from within its presentation

private:
    std::vector<int64_t> due_;
    size_t next_due_ = 0;
    bool added_ = false, next_added_ = false;  // the frame that is shown now, and the next one
    uint64_t players_end_ = 0;                 // of the sleep between two of the player's frames
    uint32_t players_stamp_ = 0, next_stamp_ = 0;
};

// Chart times at which the records ahead become due, for the chart that is loaded.
std::vector<int64_t> DueTimes();

}  // namespace render
