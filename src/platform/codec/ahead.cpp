#include "platform/codec/ahead.h"

#include <cstring>

#include "platform/codec/wavefile.h"

namespace {

// No owner: the C library registers a destructor under the loader's lock, so the first use on a thread would
// wait until another thread has loaded its library.
thread_local const DecodedSound* g_pOffered = nullptr;

bool IsSame(const AcmFormat& a, const AcmFormat& b) {
    return a.wTag == b.wTag && a.wBits == b.wBits && a.nBlockBytes == b.nBlockBytes &&
           a.nBytesPerSec == b.nBytesPerSec && a.wfxPcm.nChannels == b.wfxPcm.nChannels &&
           a.wfxPcm.nSamplesPerSec == b.wfxPcm.nSamplesPerSec &&
           a.wfxPcm.wBitsPerSample == b.wfxPcm.wBitsPerSample;
}

}  // namespace

bool NeedsDecoding(const BYTE* pHead, size_t nBytes) {
    WaveFile wave;
    AcmFormat format;
    return ReadWaveFile(pHead, nBytes, &wave) && DescribeAcmFormat(wave.Format(), &format) &&
           format.method != AcmMethod::kCopy;
}

DecodedPtr DecodeAhead(const SharedBytes& pFile, const std::function<bool(size_t nBytes)>& mayHold) {
    WaveFile wave;
    auto pDecoded = std::make_shared<DecodedSound>();
    if (!ReadWaveFile(pFile->Data(), pFile->Size(), &wave) || wave.nBytes != wave.nDeclared ||
        !DescribeAcmFormat(wave.Format(), &pDecoded->format))
        return nullptr;
    const DWORD nPcm = AcmPcmBytes(pDecoded->format, wave.nDeclared);
    if (pFile->Size() + nPcm > kMostAhead) return nullptr;
    if ((mayHold && !mayHold(pFile->Size() + nPcm)) || !pDecoded->pcm.Resize(nPcm)) return nullptr;
    ACMSTREAMHEADER header = {};
    header.pbSrc = const_cast<BYTE*>(wave.pData);
    header.cbSrcLength = wave.nDeclared;
    header.pbDst = pDecoded->pcm.Data();
    header.cbDstLength = nPcm;
    if (!AcmConvertWhole(pDecoded->format, &header)) return nullptr;
    pDecoded->pFile = pFile;
    pDecoded->pSource = wave.pData;
    pDecoded->nSource = wave.nDeclared;
    pDecoded->nUsed = header.cbSrcLengthUsed;
    pDecoded->nMade = header.cbDstLengthUsed;
    return pDecoded;
}

void OfferDecoded(const DecodedSound* pDecoded) {
    g_pOffered = pDecoded;
}

bool TakeDecoded(const AcmFormat& format, ACMSTREAMHEADER* pHeader) {
    if (!g_pOffered) return false;
    const DecodedSound& sound = *g_pOffered;
    if (pHeader->cbSrcLength != sound.nSource || pHeader->cbDstLength != sound.pcm.Size() ||
        !IsSame(format, sound.format) || std::memcmp(pHeader->pbSrc, sound.pSource, sound.nSource) != 0)
        return false;
    std::memcpy(pHeader->pbDst, sound.pcm.Data(), sound.nMade);
    pHeader->cbSrcLengthUsed = sound.nUsed;
    pHeader->cbDstLengthUsed = sound.nMade;
    return true;
}
