// State behind the public classes of directsound.h.
#pragma once

#include "platform/sound/directsound.h"
#include "platform/sound/memory.h"
#include "platform/sound/mixer.h"

struct IDirectSound::State {
    DWORD references = 1;
    DWORD level = 0;  // no cooperative level yet
};

struct IDirectSoundBuffer::State {
    DWORD references = 1;
    DWORD flags = 0;
    DWORD bytes = 0;
    bool primary = false;
    bool may_set_format = false;  // primary: made by a device of priority level
    audio::SampleBlock memory;
    audio::Voice voice;
};

namespace directsound {

// The process has one mixer; devices share it. Never destroyed: a buffer may outlive its device.
audio::Mixer& TheMixer();

void Silence(const audio::SampleBlock& memory, const audio::Format& format);

}  // namespace directsound
