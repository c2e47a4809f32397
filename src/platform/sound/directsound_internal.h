// State behind the public classes of directsound.h.
#pragma once

#include "platform/sound/directsound.h"
#include "platform/sound/memory.h"
#include "platform/sound/mixer.h"

struct IDirectSound::State {
    bool priority = false;  // the cooperative level has been set
};

struct IDirectSoundBuffer::State {
    DWORD flags = 0;
    DWORD bytes = 0;
    bool primary = false;
    bool may_set_format = false;  // primary: created by a device at priority level
    int locks = 0;                // locked and not yet unlocked
    audio::SampleBlock memory;
    audio::Voice voice;
};

namespace directsound {

// The process has one mixer, shared by all devices. Never destroyed: a buffer may outlive its device.
audio::Mixer& TheMixer();

void Silence(const audio::SampleBlock& memory, const audio::Format& format);

}  // namespace directsound
