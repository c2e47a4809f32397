// Computes where a picture event draws its picture in the 256 by 256 layer. Pure functions.
#pragma once

#include <cstdint>

#include "chart/bms.h"
#include "platform/wintypes.h"

struct BgaRects {
    RECT dest = {};    // relative to the layer's top left
    RECT source = {};  // x from the picture's left, y from its bottom row; same size as dest
};

// A whole picture of nWidth columns and nRows rows: at the top of the layer, horizontally centred. If larger
// than 256, its left and upper 256 pixels. False when nothing is visible.
bool PlaceWholePicture(int64_t nWidth, int64_t nRows, BgaRects* pRects);

// The rectangle of a definition in a picture of nRows rows, clipped to the layer. False when the definition's
// rectangle is negative or nothing is left.
bool PlaceDefinition(const BgaDef& def, int64_t nRows, BgaRects* pRects);
