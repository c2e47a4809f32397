// WAV files that are in memory.
#pragma once

#include <cstddef>

#include "platform/codec/waveformat.h"

// Views of a file's bytes.
struct WaveFile {
    // A copy of the format block, zeros after it: the lengths that a block declares may be wrong.
    alignas(8) BYTE aFormat[4096 + 64];
    const BYTE* pData;
    size_t nBytes;    // of the data, as many as the file has
    DWORD nDeclared;  // what the file says
    const WAVEFORMATEX* Format() const { return reinterpret_cast<const WAVEFORMATEX*>(aFormat); }
    WAVEFORMATEX* Format() { return reinterpret_cast<WAVEFORMATEX*>(aFormat); }
};

// False when it is no RIFF WAVE file with a format and data after it.
bool ReadWaveFile(const BYTE* pFile, size_t nFile, WaveFile* pWave);
