// Interprets and checks a WAV format block: the arithmetic part of the conversion.
#pragma once

#include "platform/codec/waveformat.h"

enum class AcmMethod {
    kCopy,     // PCM that sound buffers accept
    kIma,      // decoded here to 16-bit samples
    kSamples,  // the codec library decodes to 16-bit samples
    kFloats,   // the codec library decodes to floats, which are rounded and clamped here
};

struct AcmFormat {
    AcmMethod method;
    WORD wTag;            // WAVE_FORMAT_EXTENSIBLE resolved
    WORD wBits;           // container, per sample
    WAVEFORMATEX wfxPcm;  // the result of the conversion
    DWORD nBlockBytes;    // one source block; one frame for formats without blocks
    DWORD nBlockFrames;
    DWORD nBlockHead;  // ADPCM: bytes in a block before its codes, and the frames stored in them
    DWORD nHeadFrames;
    DWORD nBytesPerSec;  // MP3 only, which must be decoded in one piece; otherwise 0
};

// Reads 18 bytes at pSource, or 40 when its tag is WAVE_FORMAT_EXTENSIBLE. False when the format cannot be
// converted.
bool DescribeAcmFormat(const WAVEFORMATEX* pSource, AcmFormat* pFormat);

// PCM bytes for that many source bytes: whole blocks, plus the content of a partial ADPCM block. Saturates at
// 32 bits. An estimate for MP3.
DWORD AcmPcmBytes(const AcmFormat& format, DWORD nSourceBytes);
// Source bytes of the whole blocks whose PCM fits, at least one block.
DWORD AcmSourceBytes(const AcmFormat& format, DWORD nPcmBytes);
// Frames in a block that is truncated after nBytes bytes.
DWORD AcmPartFrames(const AcmFormat& format, DWORD nBytes);

// Writes the start of a WAV file with this format, up to its data, for the codec library. Returns its length.
constexpr DWORD kAcmHeaderMax = 128;
DWORD WriteAcmHeader(const AcmFormat& format, DWORD nDataBytes, BYTE* pHeader);
