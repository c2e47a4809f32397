// The decisions of CDDraw::Present, as pure functions.
#pragma once

#include "platform/wintypes.h"

// Clips a client area in desktop coordinates to the desktop; empty when they do not overlap.
RECT ClampToDesktop(const RECT& area, int32_t nFrontW, int32_t nFrontH);

// The part of the back surface that is visible in a clipped area: its right or lower part where the window
// extends beyond the left or upper edge of the desktop.
RECT SourceOfArea(const RECT& area, int32_t nFrontW, int32_t nFrontH, int32_t nBackW, int32_t nBackH);
