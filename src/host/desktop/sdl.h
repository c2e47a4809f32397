// SDL's audio calls, loaded when the sound device is opened: linked in, SDL and the forty libraries behind it
// would cost every start of the program 5 ms, and a copy that only hands on a command opens no device.
#pragma once

#define SDL_MAIN_HANDLED
#include <SDL.h>

namespace host::desktop {

struct Sdl {
    decltype(&SDL_SetMainReady) SetMainReady;
    decltype(&SDL_SetHint) SetHint;
    decltype(&SDL_InitSubSystem) InitSubSystem;
    decltype(&SDL_QuitSubSystem) QuitSubSystem;
    decltype(&SDL_OpenAudioDevice) OpenAudioDevice;
    decltype(&SDL_PauseAudioDevice) PauseAudioDevice;
    decltype(&SDL_CloseAudioDevice) CloseAudioDevice;
    decltype(&SDL_GetCurrentAudioDriver) GetCurrentAudioDriver;
    decltype(&SDL_GetError) GetError;
};

// SDL asks the session bus for a faster thread; without a bus that would start one, in a child process, and
// leave it behind. To be called before the thread that loads SDL begins.
void StartNoSessionBus();

const Sdl* LoadSdl();  // null when SDL is not installed; stays loaded. One thread at a time.

// ALSA complains on standard error about a machine without a sound card; one line of ours says it. After
// LoadSdl.
void QuietAlsa();

}  // namespace host::desktop
