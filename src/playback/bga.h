// Where a picture event puts a picture in its layer of 256 by 256 pixels, as functions of numbers alone.
#pragma once

#include <cstdint>

#include "chart/bms.h"
#include "platform/wintypes.h"

struct BgaRects {
    RECT dest = {};    // from the layer's top left
    RECT source = {};  // x from the picture's left, y from its bottom row; the same size
};

// A whole picture of nWidth columns and nRows rows: at the top of the layer, centred up to 256 columns, cut
// to the left and upper 256 beyond. False when nothing of it can show.
bool PlaceWholePicture(int64_t nWidth, int64_t nRows, BgaRects* pRects);

// The rectangle of a definition in a picture of nRows rows, cut at the layer's edges. False when the
// definition's rectangle is negative, or nothing of it is left.
bool PlaceDefinition(const BgaDef& def, int64_t nRows, BgaRects* pRects);
