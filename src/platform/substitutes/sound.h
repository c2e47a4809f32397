// Converts sounds of other kinds to WAV files.
#pragma once

#include <functional>

#include "platform/byteblock.h"

// Limits. Longer sounds are cut at the first, the size of a sound buffer: 25 minutes of 44.1 kHz stereo.
constexpr size_t kMaxSoundPcm = 0x0FFFFFFF;          // bytes of samples
constexpr size_t kMaxSoundFile = size_t{256} << 20;  // bytes of the encoded sound
constexpr int kMaxSoundChannels = 8;
constexpr int kMaxSoundRate = 200'000;

// Called before memory is allocated, with the total number of bytes then in use; false aborts the conversion.
// May block. Empty: no limit.
using MayHold = std::function<bool(size_t nBytes)>;

// Converts Ogg Vorbis, Ogg Opus, FLAC or MP3 to a RIFF WAVE file of 16-bit PCM at the sound's own rate and
// channel count. The first bytes tell the kind. Clamps values beyond full scale. Cuts a damaged sound at the
// damage; false when nothing can be decoded, for other kinds, and beyond the limits. Accepts arbitrary bytes.
// Thread-safe.
bool SoundToWav(const BYTE* pFile, size_t nBytes, const MayHold& mayHold, ByteBlock* pWav);
