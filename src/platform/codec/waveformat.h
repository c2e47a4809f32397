// WAVEFORMATEX, the format block of RIFF WAVE files and of sound buffers.
#pragma once

#include "platform/wintypes.h"

#pragma pack(push, 1)
struct WAVEFORMATEX {
    WORD wFormatTag;
    WORD nChannels;
    DWORD nSamplesPerSec;
    DWORD nAvgBytesPerSec;
    WORD nBlockAlign;  // bytes per frame, or per block of a block format
    WORD wBitsPerSample;
    WORD cbSize;  // bytes that follow this structure
};
#pragma pack(pop)
static_assert(sizeof(WAVEFORMATEX) == 18);

constexpr WORD WAVE_FORMAT_PCM = 1;
constexpr WORD WAVE_FORMAT_ADPCM = 2;
constexpr WORD WAVE_FORMAT_IEEE_FLOAT = 3;
constexpr WORD WAVE_FORMAT_ALAW = 6;
constexpr WORD WAVE_FORMAT_MULAW = 7;
constexpr WORD WAVE_FORMAT_IMA_ADPCM = 17;
constexpr WORD WAVE_FORMAT_GSM610 = 49;
constexpr WORD WAVE_FORMAT_MPEGLAYER3 = 85;
constexpr WORD WAVE_FORMAT_EXTENSIBLE = 0xFFFE;
