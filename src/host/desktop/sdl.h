// SDL's audio calls, loaded when the sound device is opened. Linked in, SDL and the forty libraries that it
// needs would cost every start 5 ms, and an instance that only hands on a command opens no device.
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
    decltype(&SDL_GetAudioDeviceStatus) GetAudioDeviceStatus;
    decltype(&SDL_GetCurrentAudioDriver) GetCurrentAudioDriver;
    decltype(&SDL_GetError) GetError;
};

// SDL asks the session bus for a thread of higher priority. Without a bus that would start one in a child
// process and leave it running. Call before the thread that loads SDL starts.
void StartNoSessionBus();

const Sdl* LoadSdl();  // null when SDL is not installed; stays loaded. One thread at a time.

// Silences ALSA's complaints on standard error about a machine without a sound card: we log one line
// ourselves. Call after LoadSdl.
void QuietAlsa();

}  // namespace host::desktop
