// One hook on the calls that the system makes of the platform: it is told each of these calls and may order
// its result instead. Tracers and tests set it. In the player it is null, which costs a call one comparison.
#pragma once

#include <type_traits>

#include "platform/wintypes.h"

// What a call's object and value are stands behind it. Where nothing is said, the object is what the call is
// made on, and there is no value.
enum class PlatformCall {
    // graphics
    kDirectDrawCreate,  // no object
    kDisplayLevel,      // IDirectDraw7::SetCooperativeLevel
    kCreatePrimary,     // IDirectDraw7::CreateSurface, by kind
    kCreateSurface,
    kDirectDrawRelease,
    kBltFast,  // value: the flags; with pFrom, dest and source
    kFill,     // IDirectDrawSurface7::Blt. value: the colour
    kSurfaceDesc,
    kSurfaceDC,  // IDirectDrawSurface7::GetDC
    kSurfaceRelease,
    kStretchDIBits,  // object: the context; with pFrom, the bits, dest and source
    // sound
    kDirectSoundCreate,  // no object
    kSoundLevel,         // IDirectSound::SetCooperativeLevel
    kCreateSoundBuffer,  // primary buffers too. value: bytes
    kCompact,
    kDirectSoundRelease,
    kGetCaps,
    kGetCurrentPosition,
    kGetStatus,
    kLock,
    kUnlock,  // before the parts are looked at
    kPlay,    // value: 1 when looping
    kStop,
    kSetCurrentPosition,  // value: bytes
    kSetVolume,           // value: hundredths of a decibel
    kSetFormat,
    kRestore,
    kBufferRelease,
    // codecs; the XA decoder stands in the system but has the same published place
    kMmioDescend,
    kMmioAscend,
    kMmioRead,          // value: bytes
    kAcmFormatSuggest,  // no object
    kAcmStreamOpen,     // no object
    kAcmStreamSize,
    kAcmPrepare,
    kAcmConvert,  // value: the flags
    kAcmUnprepare,
    kXaOpen,  // no object
    kXaSize,
    kXaConvert,
    // files
    kFileOpen,  // object: the name, a const char*
    kFileRead,  // value: bytes
    kCount
};

struct CallFacts {
    PlatformCall eCall;
    const void* pObject = nullptr;
    int64_t nValue = 0;
    const void* pFrom = nullptr;
    RECT dest = {}, source = {};
};

// Called when a call has cleared its out-parameters and found its arguments good, before it does anything.
// When it returns true the call does nothing and returns *pnResult. It runs on the thread that makes the
// call.
using CallHook = bool (*)(const CallFacts& facts, int64_t* pnResult);
extern CallHook g_pfnCallHook;

// For the calls themselves: true when the hook has ordered *pResult. `facts` are the members of CallFacts in
// turn.
template <class Result, class... Facts>
[[gnu::always_inline]] inline bool Hooked(Result* pResult, const Facts&... facts) {
    if (!g_pfnCallHook) [[likely]]
        return false;
    int64_t nResult = 0;
    if (!g_pfnCallHook({facts...}, &nResult)) return false;
    if constexpr (std::is_pointer_v<Result>)
        *pResult = reinterpret_cast<Result>(nResult);
    else
        *pResult = static_cast<Result>(nResult);
    return true;
}
