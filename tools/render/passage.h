// Which passage of a chart a preview is.
#pragma once

#include <cstdint>
#include <vector>

#include "render/options.h"

namespace render {

// All for the chart that is loaded; chart times in ms.

// Where the passage begins. length: of the passage. -1 when the chart has no such place.
int64_t StartOfPassage(const PassageStart& wanted, int64_t length);

// Sorted times of the notes, or of the background sounds where there are no notes.
std::vector<int64_t> Starts();
// How many of them lie in [first, first + length).
int CountWithin(const std::vector<int64_t>& times, int64_t first, int64_t length);

// Nothing that starts before this time has any effect on what is heard at `time`.
int64_t EarliestHeard(int64_t time);

// The last measure that begins at or before a time; -1 for the very beginning.
int32_t MeasureBefore(int64_t time);

}  // namespace render
