// For tests alone: makes calls of the sound stand-in fail, loses buffers, and counts what is alive.
#pragma once

#include "platform/sound/directsound.h"

namespace directsound_test {

enum class Call {
    kCreate,  // DirectSoundCreate
    kSetCooperativeLevel,
    kCreateSoundBuffer,  // primary buffers count too
    kCompact,
    kGetCaps,
    kGetCurrentPosition,
    kGetStatus,
    kLock,
    kUnlock,
    kPlay,
    kStop,
    kSetCurrentPosition,
    kSetVolume,
    kSetFormat,
    kRestore,
    kCount
};

// After `skip` more calls that go their way, the next `times` calls give `result` and do nothing else, except
// that out-parameters are cleared. One order for each kind of call; a new one replaces it.
void FailNext(Call call, HRESULT result, int skip = 0, int times = 1);
void FailNothing();    // forgets every order
int Calls(Call call);  // made since the process began, failed ones included

// As if the device had taken the buffer's memory away: stopped, its content gone, until Restore.
void Lose(IDirectSoundBuffer* pBuffer);

int LiveDevices();
int LiveBuffers();     // primary ones included
size_t SampleBytes();  // memory that buffers hold at present

}  // namespace directsound_test
