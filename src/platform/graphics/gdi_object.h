// Private to the platform: the targets of GDI handles.
#pragma once

#include <vector>

#include "platform/wintypes.h"

enum class GdiKind { kBrush, kBitmap, kIcon, kCursor };

struct GdiObject {
    GdiKind eKind = GdiKind::kBitmap;
    int nId = 0;                   // of the resource or stock object
    int nWidth = 0, nHeight = 0;   // for bitmaps and icons
    std::vector<uint32_t> pixels;  // bitmaps 0x00RRGGBB, icons 0xAARRGGBB, top row first
    bool bShared = false;          // owned by the platform; DeleteObject leaves it
    int nSelected = 0;             // memory contexts that hold it; DeleteObject then fails
};

// Pixels for drawing calls, always 0x00RRGGBB, top row first, rows nStride pixels apart.
struct PixelView {
    uint32_t* pPixels = nullptr;
    int nWidth = 0, nHeight = 0;
    size_t nStride = 0;
};

struct DeviceContext {
    enum class Kind { kDesktop, kMemory, kSurface };
    Kind eKind = Kind::kDesktop;
    PixelView view;                  // empty for the desktop and for a memory context without a bitmap
    GdiObject* pSelected = nullptr;  // for kMemory
};
