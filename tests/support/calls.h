// The hook of platform/watch.h in the tests: counts the system's calls, orders their results, knows what is
// alive. Installed as long as the process runs.
#pragma once

#include "platform/graphics/directdraw.h"
#include "platform/graphics/gdi_object.h"
#include "platform/sound/directsound.h"
#include "platform/watch.h"

namespace test {

using Call = PlatformCall;

// Of the calls of that kind `skip` more go their way; the next `times` return `result` and do nothing. A new
// order for a kind replaces the old one.
void Order(Call call, int64_t result, int skip = 0, int times = 1);

// As if the device had taken the buffer's memory away: it stops, its content is gone, and it can neither be
// locked nor played until Restore.
void Lose(IDirectSoundBuffer* buffer);

int Calls(Call call);  // since ForgetCalls, ordered ones included
int Calls();           // of all kinds

// Ends all orders, what Lose did, and the hook of ThenAsk; counts begin anew.
void ForgetCalls();

// A hook that is asked about every call without an order.
void ThenAsk(CallHook hook);

// Made and not yet released. A creation that runs out of memory counts, too.
int LiveSurfaces();  // IDirectDraw7 included
int LiveBuffers();   // primary ones included

PixelView Pixels(IDirectDrawSurface7* surface);  // until the surface is released
uint32_t PixelAt(IDirectDrawSurface7* surface, int x, int y);

}  // namespace test
