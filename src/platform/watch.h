// What a program that traces the system sees of its calls. Both are null in the player.
#pragma once

#include "platform/wintypes.h"

class IDirectDrawSurface7;
class IDirectSoundBuffer;

struct PlatformWatch {
    // A rectangle of pFrom was copied to x, y of pTo, a surface in memory.
    void (*pfnCopied)(const IDirectDrawSurface7* pTo, int x, int y, const IDirectDrawSurface7* pFrom,
                      const RECT& rect, bool bKeyed);
    void (*pfnStarted)(const IDirectSoundBuffer* pBuffer, bool bLooping);
};

extern PlatformWatch g_Watch;
