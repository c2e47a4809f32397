// The resources that a program carries. Its module handle points to them.
#pragma once

#include "platform/wintypes.h"

struct BitmapResource {
    int nId;
    int nWidth, nHeight;
    // Draws into nWidth * nHeight pixels 0x00RRGGBB, top row first.
    void (*pfnDraw)(uint32_t* pPixels);
};

struct ModuleResources {
    const BitmapResource* pBitmaps;
    int nBitmaps;
    const BitmapResource* pIcons;  // pixels 0xAARRGGBB
    int nIcons;
};
