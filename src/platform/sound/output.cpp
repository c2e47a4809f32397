#include "platform/sound/output.h"

#include "host/host.h"

bool SoundOutputIsPending() {
    return host::SoundIsPending();
}

void WaitForSoundOutput(DWORD dwMilliseconds) {
    host::AwaitSound(static_cast<int>(dwMilliseconds));
}
