// The sound output before anything is heard of it. Our own, beside the published calls.
#pragma once

#include "platform/wintypes.h"

// Whether the device has been opened and has not asked for its first sound yet: what starts now loses its
// attack.
bool SoundOutputIsPending();
void WaitForSoundOutput(DWORD dwMilliseconds);  // at most so long
