// Converts sound data of any known WAV format to PCM.
#pragma once

#include "platform/codec/waveformat.h"
#include "platform/wintypes.h"

struct AcmStream;
using HACMSTREAM = AcmStream*;

struct AcmDriver;
struct WAVEFILTER;

struct ACMSTREAMHEADER {
    DWORD cbStruct;  // 84, the published size
    DWORD fdwStatus;
    uintptr_t dwUser;
    BYTE* pbSrc;
    DWORD cbSrcLength;
    DWORD cbSrcLengthUsed;
    uintptr_t dwSrcUser;
    BYTE* pbDst;
    DWORD cbDstLength;
    DWORD cbDstLengthUsed;
    uintptr_t dwDstUser;
    DWORD dwReservedDriver[10];
};

constexpr DWORD ACM_FORMATSUGGESTF_WFORMATTAG = 0x10000;
constexpr DWORD ACM_STREAMOPENF_NONREALTIME = 4;
constexpr DWORD ACM_STREAMSIZEF_SOURCE = 0, ACM_STREAMSIZEF_DESTINATION = 1;
constexpr DWORD ACM_STREAMCONVERTF_BLOCKALIGN = 4;
constexpr DWORD ACMSTREAMHEADER_STATUSF_DONE = 0x10000, ACMSTREAMHEADER_STATUSF_PREPARED = 0x20000;
constexpr MMRESULT MMSYSERR_INVALHANDLE = 5, MMSYSERR_NOMEM = 7, MMSYSERR_NOTSUPPORTED = 8,
                   MMSYSERR_INVALFLAG = 10, MMSYSERR_INVALPARAM = 11;
constexpr MMRESULT ACMERR_NOTPOSSIBLE = 512, ACMERR_UNPREPARED = 514;

// Each call checks in this order: MMSYSERR_INVALPARAM for a missing out-pointer (the others are cleared
// first), MMSYSERR_INVALHANDLE, MMSYSERR_INVALPARAM, MMSYSERR_INVALFLAG, and then as described below.

// Fills *pDest (its wFormatTag must be PCM) with the PCM format to which the source is converted: 8 and
// 16-bit PCM unchanged, everything else to 16 bits at the same rate and channel count. Supports PCM of 8 to
// 32 bits, float, A-law, mu-law, IMA and Microsoft ADPCM, GSM 6.10, MP3, and the extensible tag over these,
// with up to 8 channels (ADPCM and MP3: 2). Otherwise ACMERR_NOTPOSSIBLE. pSource: 40 readable bytes,
// whatever its cbSize says.
MMRESULT acmFormatSuggest(AcmDriver* hDriver, WAVEFORMATEX* pSource, WAVEFORMATEX* pDest, DWORD cbDest,
                          DWORD dwFlags);
// Opens a converter to exactly that format; ACMERR_NOTPOSSIBLE for any other. Copies both formats. pFilter
// and dwCallback must be null.
MMRESULT acmStreamOpen(HACMSTREAM* phStream, AcmDriver* hDriver, WAVEFORMATEX* pSource, WAVEFORMATEX* pDest,
                       WAVEFILTER* pFilter, uintptr_t dwCallback, uintptr_t dwInstance, DWORD dwFlags);
// SOURCE: the exact PCM bytes for that much source, including a partial ADPCM block at the end; saturates at
// 32 bits. DESTINATION: the source bytes of the whole blocks whose PCM fits, at least one block.
//
// MP3 is converted whole or not at all: SOURCE is an estimate, DESTINATION and ACM_STREAMCONVERTF_BLOCKALIGN
// return ACMERR_NOTPOSSIBLE.
MMRESULT acmStreamSize(HACMSTREAM hStream, DWORD cbInput, DWORD* pcbOutput, DWORD dwFlags);
MMRESULT acmStreamPrepareHeader(HACMSTREAM hStream, ACMSTREAMHEADER* pHeader, DWORD dwFlags);
// Converts until source or destination has no room for another block, and reports the bytes used of both.
// Without ACM_STREAMCONVERTF_BLOCKALIGN it also converts the remaining part of a block, which ends the
// source. The codec keeps its state between calls. ACMERR_UNPREPARED; ACMERR_NOTPOSSIBLE when the codec
// fails.
MMRESULT acmStreamConvert(HACMSTREAM hStream, ACMSTREAMHEADER* pHeader, DWORD dwFlags);
MMRESULT acmStreamUnprepareHeader(HACMSTREAM hStream, ACMSTREAMHEADER* pHeader, DWORD dwFlags);
MMRESULT acmStreamClose(HACMSTREAM hStream, DWORD dwFlags);

// Not a published call: what the first conversion of a new stream does, without the call hook. Safe on any
// thread.
struct AcmFormat;
bool AcmConvertWhole(const AcmFormat& format, ACMSTREAMHEADER* pHeader);
