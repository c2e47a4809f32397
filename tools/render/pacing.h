// When the frames of a pass run.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace render {

// The player's frames lie 15 ms apart. Pacing can do two things to them, at the sleeps between them:
//
// - Add a frame at each due time. The player's own frames stay where they are: an added frame is hidden from
// the stamp by
//   which the next presentation decides how long to sleep.
// - Skip frames while nothing is due, for a pass of which nobody sees the frames. A pass then takes as long
// as its
//   sounds, not as its silence.
class Pacer {
public:
    // times: chart times in ms at which something happens.
    void Set(std::vector<int64_t> times, bool add, bool skip);
    // The reading at which a sleep from now to end is to end; see headless::OnSleep. In nanoseconds.
    uint64_t Wake(uint64_t now, uint64_t end);
    void OnShown();  // each frame, from within its presentation

private:
    void SkipTo(uint64_t due);

    std::vector<int64_t> due_;
    size_t next_due_ = 0;
    bool add_ = false, skip_ = false;
    bool added_ = false, next_added_ = false;  // the frame that is shown now, and the next one
    uint64_t players_end_ = 0;                 // of the sleep between two of the player's frames
    uint32_t players_stamp_ = 0, next_stamp_ = 0;
};

// Whether a sound of the chart, whole and never a stream, has more than silence ahead.
bool IsSounding();

// Chart times at which the records ahead become due, for the chart that is loaded.
std::vector<int64_t> DueTimes();

}  // namespace render
