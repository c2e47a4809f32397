// Inside the platform: what the handles of drawing objects and device contexts point at.
#pragma once

#include <vector>

#include "platform/wintypes.h"

enum class GdiKind { kBrush, kBitmap, kIcon, kCursor };

struct GdiObject {
    GdiKind eKind = GdiKind::kBitmap;
    int nId = 0;                   // the resource's or stock object's number
    int nWidth = 0, nHeight = 0;   // of bitmaps and icons
    std::vector<uint32_t> pixels;  // bitmaps 0x00RRGGBB, icons 0xAARRGGBB, top row first
    bool bShared = false;          // the platform's own: DeleteObject leaves it alone
    int nSelected = 0;             // memory contexts that hold it: DeleteObject refuses
};

// Pixels that drawing calls reach; rows nStride pixels apart, top row first. Pixels are always 0x00RRGGBB.
struct PixelView {
    uint32_t* pPixels = nullptr;
    int nWidth = 0, nHeight = 0;
    size_t nStride = 0;
};

struct DeviceContext {
    enum class Kind { kDesktop, kMemory, kSurface };
    Kind eKind = Kind::kDesktop;
    PixelView view;                  // empty for the desktop and for a memory context without a bitmap
    GdiObject* pSelected = nullptr;  // kMemory
};
