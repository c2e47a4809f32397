// Sounds of other kinds made into WAV files.
#pragma once

#include <functional>

#include "platform/byteblock.h"

// Bounds. Sounds are cut where they reach the first, which is what a sound buffer holds: 25 minutes of 44.1
// kHz, stereo.
constexpr size_t kMaxSoundPcm = 0x0FFFFFFF;          // bytes of samples
constexpr size_t kMaxSoundFile = size_t{256} << 20;  // bytes of the encoded sound
constexpr int kMaxSoundChannels = 8;
constexpr int kMaxSoundRate = 200'000;

// Asked before memory is taken, with the bytes that will then be held in all; false ends the conversion. May
// wait. Empty: never refused.
using MayHold = std::function<bool(size_t nBytes)>;

// A RIFF WAVE file of 16-bit PCM, with the rate and channels of the sound, from Ogg Vorbis, Ogg Opus, FLAC or
// MP3. Which kind it is is told by its first bytes. What is beyond full scale is limited. A sound that breaks
// off is cut there; false for one of which nothing can be decoded, for other kinds, and beyond the bounds.
// Any bytes may be given. Safe on any thread.
bool SoundToWav(const BYTE* pFile, size_t nBytes, const MayHold& mayHold, ByteBlock* pWav);
