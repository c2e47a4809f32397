// The decisions of CDDraw::Present, as functions of numbers alone.
#pragma once

#include "platform/wintypes.h"

// A client area in desktop coordinates, cut to the desktop; empty when nothing of it lies there.
RECT ClampToDesktop(const RECT& area, int32_t nFrontW, int32_t nFrontH);

// The part of the back surface that shows in a clamped area: its right or lower part where the window hangs
// over the left or upper edge of the desktop.
RECT SourceOfArea(const RECT& area, int32_t nFrontW, int32_t nFrontH, int32_t nBackW, int32_t nBackH);
