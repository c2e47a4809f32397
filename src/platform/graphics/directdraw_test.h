// For tests alone: makes chosen steps of the surfaces fail, and shows a surface's pixels.
#pragma once

#include "platform/graphics/directdraw.h"

namespace directdraw_test {

enum class Step { kCreate, kCooperativeLevel, kCreatePrimary, kCreateSurface, kSurfaceDesc, kGetDC };

// The next nPasses calls of that step go through, the one after them fails. One failure is set at a time.
void FailNext(Step eStep, int nPasses = 0);
void FailNone();

int LiveObjects();  // DirectDraw objects and surfaces that have not been released

uint32_t PixelAt(const IDirectDrawSurface7* pSurface, int x, int y);  // 0x00RRGGBB

}  // namespace directdraw_test
