#include "platform/codec/acm.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <vector>

#include "platform/codec/acm_decoder.h"
#include "platform/codec/ahead.h"
#include "platform/codec/ima.h"
#include "platform/watch.h"

struct AcmStream {
    explicit AcmStream(const AcmFormat& f) : format(f), decoder(f) {}
    AcmFormat format;
    AcmDecoder decoder;
    bool bConverted = false;      // something
    std::vector<BYTE> lastBlock;  // an incomplete block, padded with zeros
    std::vector<int16_t> lastFrames;
};

namespace {

constexpr DWORD kHeaderSize = 84;

bool IsSamePcm(const WAVEFORMATEX& a, const WAVEFORMATEX& b) {
    return a.wFormatTag == b.wFormatTag && a.nChannels == b.nChannels &&
           a.nSamplesPerSec == b.nSamplesPerSec && a.wBitsPerSample == b.wBitsPerSample &&
           a.nBlockAlign == b.nBlockAlign;
}

bool CopyFrames(const AcmFormat& format, ACMSTREAMHEADER* pHeader) {
    DWORD nBytes = std::min(pHeader->cbSrcLength, pHeader->cbDstLength);
    nBytes -= nBytes % format.nBlockBytes;
    if (nBytes > 0) std::memcpy(pHeader->pbDst, pHeader->pbSrc, nBytes);
    pHeader->cbSrcLengthUsed = pHeader->cbDstLengthUsed = nBytes;
    return true;
}

// nBlockBytes: the format's, or what BytesOfFrames returns.
bool DecodeBlocks(AcmStream* pStream, const BYTE* pSource, DWORD nBlocks, DWORD nBlockBytes,
                  int16_t* pSamples) {
    const AcmFormat& format = pStream->format;
    if (format.method != AcmMethod::kIma) return pStream->decoder.Decode(pSource, nBlocks, pSamples);
    DecodeIma(pSource, nBlocks, nBlockBytes, format.wfxPcm.nChannels, pSamples);
    return true;
}

// The bytes to decode for the first nFrames frames of a block. The codec library takes whole blocks only. For
// a loop of a few frames in a block of a hundred thousand, that is most of the work.
DWORD BytesOfFrames(const AcmFormat& format, DWORD nFrames) {
    return format.method == AcmMethod::kIma ? ImaBlockBytes(nFrames, format.wfxPcm.nChannels)
                                            : format.nBlockBytes;
}

bool ConvertBlocks(AcmStream* pStream, ACMSTREAMHEADER* pHeader) {
    const AcmFormat& format = pStream->format;
    const DWORD nBlockPcm = format.nBlockFrames * format.wfxPcm.nBlockAlign;
    const DWORD nBlocks =
        std::min(pHeader->cbSrcLength / format.nBlockBytes, pHeader->cbDstLength / nBlockPcm);
    if (nBlocks == 0) return true;
    if (!DecodeBlocks(pStream, pHeader->pbSrc, nBlocks, format.nBlockBytes,
                      reinterpret_cast<int16_t*>(pHeader->pbDst)))
        return false;
    pHeader->cbSrcLengthUsed = nBlocks * format.nBlockBytes;
    pHeader->cbDstLengthUsed = nBlocks * nBlockPcm;
    return true;
}

// Converts one more block, of which the source or the destination has only a part.
bool ConvertLastBlock(AcmStream* pStream, ACMSTREAMHEADER* pHeader) {
    const AcmFormat& format = pStream->format;
    const DWORD nFrame = format.wfxPcm.nBlockAlign;
    const DWORD nBytes = std::min(pHeader->cbSrcLength - pHeader->cbSrcLengthUsed, format.nBlockBytes);
    const DWORD nInBlock = nBytes == format.nBlockBytes ? format.nBlockFrames : AcmPartFrames(format, nBytes);
    const DWORD nFrames = std::min(nInBlock, (pHeader->cbDstLength - pHeader->cbDstLengthUsed) / nFrame);
    if (nFrames == 0) return true;
    const DWORD nDecoded = BytesOfFrames(format, nFrames);
    pStream->lastBlock.assign(nDecoded, 0);
    pStream->lastFrames.resize(size_t{format.nBlockFrames} * format.wfxPcm.nChannels);
    std::copy_n(pHeader->pbSrc + pHeader->cbSrcLengthUsed, std::min(nBytes, nDecoded),
                pStream->lastBlock.begin());
    if (!DecodeBlocks(pStream, pStream->lastBlock.data(), 1, nDecoded, pStream->lastFrames.data()))
        return false;
    std::memcpy(pHeader->pbDst + pHeader->cbDstLengthUsed, pStream->lastFrames.data(),
                size_t{nFrames} * nFrame);
    pHeader->cbSrcLengthUsed += nBytes;
    pHeader->cbDstLengthUsed += nFrames * nFrame;
    return true;
}

bool ConvertWhole(AcmStream* pStream, ACMSTREAMHEADER* pHeader) {
    const DWORD nFrame = pStream->format.wfxPcm.nBlockAlign;
    const DWORD nMade =
        pStream->decoder.DecodeAll(pHeader->pbSrc, pHeader->cbSrcLength, pHeader->cbDstLength / nFrame,
                                   reinterpret_cast<int16_t*>(pHeader->pbDst));
    pHeader->cbSrcLengthUsed = pHeader->cbSrcLength;
    pHeader->cbDstLengthUsed = nMade * nFrame;
    return nMade > 0 || pHeader->cbSrcLength == 0;
}

bool Convert(AcmStream* pStream, ACMSTREAMHEADER* pHeader, bool bBlocksOnly) {
    if (pStream->format.method == AcmMethod::kCopy) return CopyFrames(pStream->format, pHeader);
    const bool bFirst = !pStream->bConverted;
    pStream->bConverted = true;
    if (bFirst && !bBlocksOnly && TakeDecoded(pStream->format, pHeader)) return true;
    if (pStream->format.nBytesPerSec != 0) return !bBlocksOnly && ConvertWhole(pStream, pHeader);
    return ConvertBlocks(pStream, pHeader) && (bBlocksOnly || ConvertLastBlock(pStream, pHeader));
}

}  // namespace

bool AcmConvertWhole(const AcmFormat& format, ACMSTREAMHEADER* pHeader) {
    AcmStream stream(format);
    return Convert(&stream, pHeader, false);
}

MMRESULT acmFormatSuggest(AcmDriver* hDriver, WAVEFORMATEX* pSource, WAVEFORMATEX* pDest, DWORD cbDest,
                          DWORD dwFlags) {
    if (hDriver != nullptr) return MMSYSERR_INVALHANDLE;
    if (pSource == nullptr || pDest == nullptr || cbDest < sizeof(WAVEFORMATEX)) return MMSYSERR_INVALPARAM;
    if (dwFlags != ACM_FORMATSUGGESTF_WFORMATTAG) return MMSYSERR_INVALFLAG;
    if (MMRESULT nResult; Hooked(&nResult, PlatformCall::kAcmFormatSuggest)) return nResult;
    AcmFormat format;
    if (pDest->wFormatTag != WAVE_FORMAT_PCM || !DescribeAcmFormat(pSource, &format))
        return ACMERR_NOTPOSSIBLE;
    *pDest = format.wfxPcm;
    return MMSYSERR_NOERROR;
}

MMRESULT acmStreamOpen(HACMSTREAM* phStream, AcmDriver* hDriver, WAVEFORMATEX* pSource, WAVEFORMATEX* pDest,
                       WAVEFILTER* pFilter, uintptr_t dwCallback, uintptr_t dwInstance, DWORD dwFlags) {
    if (phStream == nullptr) return MMSYSERR_INVALPARAM;
    *phStream = nullptr;
    if (hDriver != nullptr) return MMSYSERR_INVALHANDLE;
    if (pSource == nullptr || pDest == nullptr || pFilter != nullptr || dwCallback != 0)
        return MMSYSERR_INVALPARAM;
    if ((dwFlags & ~ACM_STREAMOPENF_NONREALTIME) != 0) return MMSYSERR_INVALFLAG;
    AcmFormat format;
    if (!DescribeAcmFormat(pSource, &format) || !IsSamePcm(format.wfxPcm, *pDest)) return ACMERR_NOTPOSSIBLE;
    if (MMRESULT nResult; Hooked(&nResult, PlatformCall::kAcmStreamOpen)) return nResult;
    *phStream = new (std::nothrow) AcmStream(format);
    return *phStream != nullptr ? MMSYSERR_NOERROR : MMSYSERR_NOMEM;
}

MMRESULT acmStreamSize(HACMSTREAM hStream, DWORD cbInput, DWORD* pcbOutput, DWORD dwFlags) {
    if (pcbOutput == nullptr) return MMSYSERR_INVALPARAM;
    *pcbOutput = 0;
    if (hStream == nullptr) return MMSYSERR_INVALHANDLE;
    if (dwFlags > ACM_STREAMSIZEF_DESTINATION) return MMSYSERR_INVALFLAG;
    if (dwFlags == ACM_STREAMSIZEF_DESTINATION && hStream->format.nBytesPerSec != 0)
        return ACMERR_NOTPOSSIBLE;
    if (MMRESULT nResult; Hooked(&nResult, PlatformCall::kAcmStreamSize, hStream)) return nResult;
    *pcbOutput = dwFlags == ACM_STREAMSIZEF_SOURCE ? AcmPcmBytes(hStream->format, cbInput)
                                                   : AcmSourceBytes(hStream->format, cbInput);
    return MMSYSERR_NOERROR;
}

MMRESULT acmStreamPrepareHeader(HACMSTREAM hStream, ACMSTREAMHEADER* pHeader, DWORD dwFlags) {
    if (hStream == nullptr) return MMSYSERR_INVALHANDLE;
    if (pHeader == nullptr || pHeader->cbStruct < kHeaderSize || pHeader->pbSrc == nullptr ||
        pHeader->pbDst == nullptr)
        return MMSYSERR_INVALPARAM;
    if (dwFlags != 0) return MMSYSERR_INVALFLAG;
    if (MMRESULT nResult; Hooked(&nResult, PlatformCall::kAcmPrepare, hStream)) return nResult;
    pHeader->fdwStatus |= ACMSTREAMHEADER_STATUSF_PREPARED;
    return MMSYSERR_NOERROR;
}

MMRESULT acmStreamConvert(HACMSTREAM hStream, ACMSTREAMHEADER* pHeader, DWORD dwFlags) {
    if (hStream == nullptr) return MMSYSERR_INVALHANDLE;
    if (pHeader == nullptr || pHeader->cbStruct < kHeaderSize) return MMSYSERR_INVALPARAM;
    if ((dwFlags & ~ACM_STREAMCONVERTF_BLOCKALIGN) != 0) return MMSYSERR_INVALFLAG;
    if ((pHeader->fdwStatus & ACMSTREAMHEADER_STATUSF_PREPARED) == 0) return ACMERR_UNPREPARED;
    pHeader->cbSrcLengthUsed = pHeader->cbDstLengthUsed = 0;
    if (MMRESULT nResult; Hooked(&nResult, PlatformCall::kAcmConvert, hStream, dwFlags)) return nResult;
    if (!Convert(hStream, pHeader, (dwFlags & ACM_STREAMCONVERTF_BLOCKALIGN) != 0)) return ACMERR_NOTPOSSIBLE;
    pHeader->fdwStatus |= ACMSTREAMHEADER_STATUSF_DONE;
    return MMSYSERR_NOERROR;
}

MMRESULT acmStreamUnprepareHeader(HACMSTREAM hStream, ACMSTREAMHEADER* pHeader, DWORD dwFlags) {
    if (hStream == nullptr) return MMSYSERR_INVALHANDLE;
    if (pHeader == nullptr || pHeader->cbStruct < kHeaderSize) return MMSYSERR_INVALPARAM;
    if (dwFlags != 0) return MMSYSERR_INVALFLAG;
    if ((pHeader->fdwStatus & ACMSTREAMHEADER_STATUSF_PREPARED) == 0) return ACMERR_UNPREPARED;
    if (MMRESULT nResult; Hooked(&nResult, PlatformCall::kAcmUnprepare, hStream)) return nResult;
    pHeader->fdwStatus &= ~ACMSTREAMHEADER_STATUSF_PREPARED;
    return MMSYSERR_NOERROR;
}

MMRESULT acmStreamClose(HACMSTREAM hStream, DWORD dwFlags) {
    if (hStream == nullptr) return MMSYSERR_INVALHANDLE;
    if (dwFlags != 0) return MMSYSERR_INVALFLAG;
    delete hStream;
    return MMSYSERR_NOERROR;
}
