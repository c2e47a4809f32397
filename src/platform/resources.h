// The resources that a program carries: its module handle points at them.
#pragma once

#include "platform/wintypes.h"

struct BitmapResource {
    int nId;
    int nWidth, nHeight;
    // Draws the picture into nWidth * nHeight pixels 0x00RRGGBB, top row first.
    void (*pfnDraw)(uint32_t* pPixels);
};

struct ModuleResources {
    const BitmapResource* pBitmaps;
    int nBitmaps;
    const BitmapResource* pIcons;  // pixels 0xAARRGGBB
    int nIcons;
};
