#include "host/desktop/sdl.h"

#include <dlfcn.h>

#include <cstdlib>

namespace host::desktop {
namespace {

constexpr char kLibrary[] = "libSDL2-2.0.so.0";

void* g_library = nullptr;
Sdl g_sdl;

template <class Function>
bool Find(const char* name, Function* function) {
    *function = reinterpret_cast<Function>(dlsym(g_library, name));
    return *function != nullptr;
}

void Ignore(const char*, int, const char*, int, const char*, ...) {}

}  // namespace

void StartNoSessionBus() {
    setenv("DBUS_SESSION_BUS_ADDRESS", "disabled:", 0);
}

const Sdl* LoadSdl() {
    if (!g_library) g_library = dlopen(kLibrary, RTLD_LAZY | RTLD_LOCAL);
    const bool complete =
        g_library && Find("SDL_SetMainReady", &g_sdl.SetMainReady) && Find("SDL_SetHint", &g_sdl.SetHint) &&
        Find("SDL_InitSubSystem", &g_sdl.InitSubSystem) && Find("SDL_QuitSubSystem", &g_sdl.QuitSubSystem) &&
        Find("SDL_OpenAudioDevice", &g_sdl.OpenAudioDevice) &&
        Find("SDL_PauseAudioDevice", &g_sdl.PauseAudioDevice) &&
        Find("SDL_CloseAudioDevice", &g_sdl.CloseAudioDevice) &&
        Find("SDL_GetAudioDeviceStatus", &g_sdl.GetAudioDeviceStatus) &&
        Find("SDL_GetCurrentAudioDriver", &g_sdl.GetCurrentAudioDriver) &&
        Find("SDL_GetError", &g_sdl.GetError);
    return complete ? &g_sdl : nullptr;
}

void QuietAlsa() {
    using Handler = void (*)(const char*, int, const char*, int, const char*, ...);
    int (*set)(Handler) = nullptr;
    if (g_library && Find("snd_lib_error_set_handler", &set)) set(Ignore);
}

}  // namespace host::desktop
