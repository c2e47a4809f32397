// Conversion of sound data of any known WAV format to PCM.
#pragma once

#include "platform/waveformat.h"
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
constexpr MMRESULT MMSYSERR_INVALHANDLE = 5, MMSYSERR_NOMEM = 7, MMSYSERR_NOTSUPPORTED = 8, MMSYSERR_INVALFLAG = 10,
                   MMSYSERR_INVALPARAM = 11;
constexpr MMRESULT ACMERR_NOTPOSSIBLE = 512, ACMERR_UNPREPARED = 514;

MMRESULT acmFormatSuggest(AcmDriver* hDriver, WAVEFORMATEX* pSource, WAVEFORMATEX* pDest, DWORD cbDest, DWORD dwFlags);
MMRESULT acmStreamOpen(HACMSTREAM* phStream, AcmDriver* hDriver, WAVEFORMATEX* pSource, WAVEFORMATEX* pDest,
                       WAVEFILTER* pFilter, uintptr_t dwCallback, uintptr_t dwInstance, DWORD dwFlags);
MMRESULT acmStreamSize(HACMSTREAM hStream, DWORD cbInput, DWORD* pcbOutput, DWORD dwFlags);
MMRESULT acmStreamPrepareHeader(HACMSTREAM hStream, ACMSTREAMHEADER* pHeader, DWORD dwFlags);
MMRESULT acmStreamConvert(HACMSTREAM hStream, ACMSTREAMHEADER* pHeader, DWORD dwFlags);
MMRESULT acmStreamUnprepareHeader(HACMSTREAM hStream, ACMSTREAMHEADER* pHeader, DWORD dwFlags);
MMRESULT acmStreamClose(HACMSTREAM hStream, DWORD dwFlags);
