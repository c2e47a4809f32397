// What a WAV format block says about its data, checked: the part of the conversion that is plain arithmetic.
#pragma once

#include "platform/codec/waveformat.h"

enum class AcmMethod {
    kCopy,     // the data is PCM that sound buffers take
    kSamples,  // the codec library gives 16-bit samples
    kFloats,   // the codec library gives floats, which are rounded and limited here
};

struct AcmFormat {
    AcmMethod method;
    WORD wTag;            // WAVE_FORMAT_EXTENSIBLE resolved
    WORD wBits;           // container, per sample
    WAVEFORMATEX wfxPcm;  // what the data becomes
    DWORD nBlockBytes;    // a block of the source: one frame where the format has no blocks
    DWORD nBlockFrames;
    DWORD nBlockHead;  // ADPCM: bytes of a block in front of its codes, and the frames that stand in them
    DWORD nHeadFrames;
    DWORD nBytesPerSec;  // of MP3 data, which can be decoded only in one piece; otherwise 0
};

// Reads 18 bytes at pSource, and 40 when its tag is WAVE_FORMAT_EXTENSIBLE. False for what cannot be
// converted.
bool DescribeAcmFormat(const WAVEFORMATEX* pSource, AcmFormat* pFormat);

// PCM bytes that so many source bytes give: whole blocks, and what a part of an ADPCM block holds. Limited to
// 32 bits.
// Of MP3 data: about as many.
DWORD AcmPcmBytes(const AcmFormat& format, DWORD nSourceBytes);
// Source bytes of the whole blocks whose PCM fits, at least one block.
DWORD AcmSourceBytes(const AcmFormat& format, DWORD nPcmBytes);
// Frames of a block of which only the first bytes are there.
DWORD AcmPartFrames(const AcmFormat& format, DWORD nBytes);

// The front of a WAV file with this format, up to its data, for the codec library. Returns its length.
constexpr DWORD kAcmHeaderMax = 128;
DWORD WriteAcmHeader(const AcmFormat& format, DWORD nDataBytes, BYTE* pHeader);
