// Which passage of a chart a preview is.
#pragma once

#include <cstdint>

#include "render/options.h"

namespace render {

// All for the chart that is loaded; chart times in ms.

// Where the passage begins. length: of the passage. -1 when the chart has no such place.
int64_t StartOfPassage(const PassageStart& wanted, int64_t length);

// The last measure that begins so long before a time that no sound started before it can still be heard then;
// -1 for the very beginning.
int32_t MeasureToStartFrom(int64_t time);

}  // namespace render
