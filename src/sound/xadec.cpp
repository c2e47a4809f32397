#include "sound/xadec.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "platform/bytes.h"
#include "platform/watch.h"
#include "sound/xaformat.h"

namespace {

// The last two samples of a channel, after clamping. The next prediction uses them.
struct XaHistory {
    int32_t nLast;
    int32_t nBefore;
};

// A decoder, alive from xaDecodeOpen to xaDecodeClose. It buffers at most one block on each side: source
// bytes of an incomplete block, and PCM of a block that did not fit the destination.
struct CXaDecoder {
    int m_nChannels;
    int m_nBits;
    int m_nFrameBytes;  // bytes of a PCM frame
    int m_nBlockBytes;  // bytes of a full block
    DWORD m_nDataLen;   // encoded bytes in one pass through the sound
    bool m_bPadded;     // the last byte of a pass has one unused code
    DWORD m_nConsumed;  // bytes consumed in this pass, including pending ones
    XaHistory m_aHistory[XA_MAX_CHANNELS];
    int m_nPending;  // buffered source bytes
    BYTE m_aPending[XA_MAX_BLOCK_BYTES];
    int m_nReadyAt;  // buffered PCM: from here ...
    int m_nReady;    // ... to here
    BYTE m_aReady[XA_BLOCK_FRAMES * XA_MAX_CHANNELS * 2];
};

// What is left of the caller's source and destination.
struct XaSpans {
    const BYTE* pSrc;
    DWORD nSrc;
    BYTE* pDst;
    DWORD nDst;
};

// Frames in a block that is cut after nBytes bytes, 0 to XA_BLOCK_FRAMES.
int FramesOfBlock(const CXaDecoder& xa, int nBytes) {
    int nCodes = nBytes - xa.m_nChannels * XA_PARAM_BYTES;
    return nCodes <= 0 ? 0 : nCodes * 8 / (xa.m_nBits * xa.m_nChannels);
}

// Frames in nLength bytes of data, including the padding in its last byte.
uint64_t FramesOfData(const CXaDecoder& xa, DWORD nLength) {
    DWORD nBlock = static_cast<DWORD>(xa.m_nBlockBytes);
    return static_cast<uint64_t>(nLength / nBlock) * XA_BLOCK_FRAMES +
           static_cast<uint64_t>(FramesOfBlock(xa, static_cast<int>(nLength % nBlock)));
}

void BeginPass(CXaDecoder* pXa) {
    pXa->m_nConsumed = 0;
    memset(pXa->m_aHistory, 0, sizeof pXa->m_aHistory);
}

// The sign-extended code number nIndex in a block.
template <int BITS>
int32_t CodeAt(const BYTE* pCodes, int nIndex) {
    if constexpr (BITS == XA_BITS_FINE) {
        int nBit = nIndex * XA_BITS_FINE;  // 0, 2, 4 or 6 within its byte, so a code always spans two bytes
        const BYTE* p = pCodes + (nBit >> 3);
        return static_cast<int16_t>((p[0] | p[1] << 8) << (16 - XA_BITS_FINE - (nBit & 7))) >>
               (16 - XA_BITS_FINE);
    } else {
        int nShifted = pCodes[nIndex >> 1] << (nIndex & 1 ? 0 : 4);
        return static_cast<int8_t>(nShifted) >> 4;
    }
}

// Decoding parameters and state of one channel in a block.
struct XaChannel {
    XaFilter filter;
    int32_t nScale;
    XaHistory history;

    int32_t Next(int32_t nResidual) {
        int32_t nSample = XaPredict(filter, history.nLast, history.nBefore) + nResidual;
        // Each sample depends on the one before it, and music hardly ever leaves the range. A predicted
        // branch does not lengthen that dependency chain.
        if (nSample != static_cast<int16_t>(nSample)) [[unlikely]]
            nSample = XaClamp(nSample);
        history = {nSample, history.nLast};
        return nSample;
    }
};

XaChannel BeginChannel(const BYTE* pParam, const XaHistory& history) {
    return {XA_FILTER[pParam[0]], XaScale(pParam[1]), history};
}

BYTE* PutSample(BYTE* pDst, int32_t nSample) {
    pDst[0] = static_cast<BYTE>(nSample);
    pDst[1] = static_cast<BYTE>(nSample >> 8);
    return pDst + 2;
}

template <int BITS>
void DecodeMono(const BYTE* pBlock, int nFrames, XaHistory* pHistory, BYTE* pDst) {
    const BYTE* pCodes = pBlock + XA_PARAM_BYTES;
    XaChannel mono = BeginChannel(pBlock, pHistory[0]);
    for (int i = 0; i < nFrames; ++i)
        pDst = PutSample(pDst, mono.Next(XaResidual(CodeAt<BITS>(pCodes, i), mono.nScale)));
    pHistory[0] = mono.history;
}

// The two sides are independent, so interleaving them overlaps their dependency chains.
template <int BITS>
void DecodeStereo(const BYTE* pBlock, int nFrames, XaHistory* pHistory, BYTE* pDst) {
    const BYTE* pCodes = pBlock + 2 * XA_PARAM_BYTES;
    XaChannel left = BeginChannel(pBlock, pHistory[0]);
    XaChannel right = BeginChannel(pBlock + XA_PARAM_BYTES, pHistory[1]);
    for (int i = 0; i < nFrames; ++i) {
        pDst = PutSample(pDst, left.Next(XaResidual(CodeAt<BITS>(pCodes, 2 * i), left.nScale)));
        pDst = PutSample(pDst, right.Next(XaResidual(CodeAt<BITS>(pCodes, 2 * i + 1), right.nScale)));
    }
    pHistory[0] = left.history;
    pHistory[1] = right.history;
}

// False when the block is damaged: its filter or range does not exist.
bool DecodeBlock(CXaDecoder* pXa, const BYTE* pBlock, int nFrames, BYTE* pDst) {
    if (nFrames <= 0) return true;
    for (int c = 0; c < pXa->m_nChannels; ++c) {
        const BYTE* pParam = pBlock + c * XA_PARAM_BYTES;
        if (pParam[0] >= XA_FILTERS || pParam[1] >= XA_RANGES) return false;
    }
    bool bFine = pXa->m_nBits == XA_BITS_FINE;
    auto pfnDecode = pXa->m_nChannels == 1
                         ? (bFine ? DecodeMono<XA_BITS_FINE> : DecodeMono<XA_BITS_FAST>)
                         : (bFine ? DecodeStereo<XA_BITS_FINE> : DecodeStereo<XA_BITS_FAST>);
    pfnDecode(pBlock, nFrames, pXa->m_aHistory, pDst);
    return true;
}

// Copies buffered PCM to the destination, in whole frames. True when none is left.
bool DrainReady(CXaDecoder* pXa, XaSpans* pSpans) {
    DWORD nWaiting = static_cast<DWORD>(pXa->m_nReady - pXa->m_nReadyAt);
    DWORD nFit = pSpans->nDst - pSpans->nDst % static_cast<DWORD>(pXa->m_nFrameBytes);
    DWORD nCopy = std::min(nWaiting, nFit);
    if (nCopy > 0) memcpy(pSpans->pDst, pXa->m_aReady + pXa->m_nReadyAt, nCopy);
    pSpans->pDst += nCopy;
    pSpans->nDst -= nCopy;
    pXa->m_nReadyAt += static_cast<int>(nCopy);
    return nCopy == nWaiting;
}

// Decodes a block of nBytes bytes to the destination, or to the buffer when that is too small. bLast: it is
// the last block of its pass.
bool DecodeNextBlock(CXaDecoder* pXa, const BYTE* pBlock, int nBytes, bool bLast, XaSpans* pSpans) {
    int nFrames = FramesOfBlock(*pXa, nBytes);
    if (bLast && pXa->m_bPadded && nFrames > 0) --nFrames;
    int nPcm = nFrames * pXa->m_nFrameBytes;
    bool bFits = static_cast<DWORD>(nPcm) <= pSpans->nDst;
    if (!DecodeBlock(pXa, pBlock, nFrames, bFits ? pSpans->pDst : pXa->m_aReady)) return false;
    if (bFits) {
        pSpans->pDst += nPcm;
        pSpans->nDst -= static_cast<DWORD>(nPcm);
    } else {
        pXa->m_nReadyAt = 0;
        pXa->m_nReady = nPcm;
    }
    return true;
}

// Buffers source bytes until a block of nWant bytes is complete.
void BufferSource(CXaDecoder* pXa, int nWant, XaSpans* pSpans) {
    DWORD nCopy = std::min(static_cast<DWORD>(nWant - pXa->m_nPending), pSpans->nSrc);
    if (nCopy > 0) memcpy(pXa->m_aPending + pXa->m_nPending, pSpans->pSrc, nCopy);
    pXa->m_nPending += static_cast<int>(nCopy);
    pXa->m_nConsumed += nCopy;
    pSpans->pSrc += nCopy;
    pSpans->nSrc -= nCopy;
}

// Decodes until source or destination is exhausted. False on a damaged block.
bool ConvertBlocks(CXaDecoder* pXa, XaSpans* pSpans) {
    while (DrainReady(pXa, pSpans) && pSpans->nDst >= static_cast<DWORD>(pXa->m_nFrameBytes) &&
           pSpans->nSrc > 0) {
        DWORD nBlockAt = pXa->m_nConsumed - static_cast<DWORD>(pXa->m_nPending);
        DWORD nLeft = pXa->m_nDataLen - nBlockAt;
        int nWant = static_cast<int>(std::min(nLeft, static_cast<DWORD>(pXa->m_nBlockBytes)));
        if (nWant == 0) return true;  // a sound without data
        const BYTE* pBlock = pXa->m_aPending;
        if (pXa->m_nPending == 0 && pSpans->nSrc >= static_cast<DWORD>(nWant)) {
            pBlock = pSpans->pSrc;
            if (!DecodeNextBlock(pXa, pBlock, nWant, static_cast<DWORD>(nWant) == nLeft, pSpans))
                return false;
            pXa->m_nConsumed += static_cast<DWORD>(nWant);
            pSpans->pSrc += nWant;
            pSpans->nSrc -= static_cast<DWORD>(nWant);
        } else {
            BufferSource(pXa, nWant, pSpans);
            if (pXa->m_nPending < nWant) return true;
            if (!DecodeNextBlock(pXa, pBlock, nWant, static_cast<DWORD>(nWant) == nLeft, pSpans))
                return false;
            pXa->m_nPending = 0;
        }
        if (pXa->m_nConsumed == pXa->m_nDataLen) BeginPass(pXa);
    }
    return true;
}

// The data has ended early: decodes the incomplete block. The next byte starts a new pass.
bool Flush(CXaDecoder* pXa, XaSpans* pSpans) {
    if (!DrainReady(pXa, pSpans) || pXa->m_nPending == 0) return true;
    if (pSpans->nDst < static_cast<DWORD>(pXa->m_nFrameBytes)) return true;
    if (!DecodeNextBlock(pXa, pXa->m_aPending, pXa->m_nPending, false, pSpans)) return false;
    pXa->m_nPending = 0;
    BeginPass(pXa);
    DrainReady(pXa, pSpans);
    return true;
}

bool IsValidHeader(const BYTE* pHeader) {
    int nBits = pHeader[XA_AT_BITS];
    int nChannels = pHeader[XA_AT_CHANNELS];
    DWORD nRate = ReadLe32(pHeader + XA_AT_RATE);
    return memcmp(pHeader, XA_MAGIC, sizeof XA_MAGIC) == 0 && pHeader[XA_AT_VERSION] == XA_VERSION &&
           (nBits == XA_BITS_FAST || nBits == XA_BITS_FINE) &&
           pHeader[XA_AT_BLOCK_FRAMES] == XA_BLOCK_FRAMES && nChannels >= 1 && nChannels <= XA_MAX_CHANNELS &&
           nRate >= XA_MIN_RATE && nRate <= XA_MAX_RATE;
}

}  // namespace

void* xaDecodeOpen(const BYTE* pHeader, WAVEFORMATEX* pFormat) {
    if (!pHeader || !pFormat || !IsValidHeader(pHeader)) return nullptr;
    if (void* hXa; Hooked(&hXa, PlatformCall::kXaOpen)) return hXa;
    auto* pXa = new (std::nothrow) CXaDecoder();
    if (!pXa) return nullptr;
    pXa->m_nChannels = pHeader[XA_AT_CHANNELS];
    pXa->m_nBits = pHeader[XA_AT_BITS];
    pXa->m_nFrameBytes = pXa->m_nChannels * 2;
    pXa->m_nBlockBytes = XaBlockBytes(pXa->m_nChannels, pXa->m_nBits, XA_BLOCK_FRAMES);
    pXa->m_nDataLen = ReadLe32(pHeader + XA_AT_DATA_BYTES);
    uint64_t nFrames = ReadLe32(pHeader + XA_AT_FRAMES);
    bool bHalfBytes = pXa->m_nBits * pXa->m_nChannels == 4;
    pXa->m_bPadded = bHalfBytes && FramesOfData(*pXa, pXa->m_nDataLen) == nFrames + 1;

    DWORD nRate = ReadLe32(pHeader + XA_AT_RATE);
    pFormat->wFormatTag = WAVE_FORMAT_PCM;
    pFormat->nChannels = static_cast<WORD>(pXa->m_nChannels);
    pFormat->nSamplesPerSec = nRate;
    pFormat->nAvgBytesPerSec = nRate * static_cast<DWORD>(pXa->m_nFrameBytes);
    pFormat->nBlockAlign = static_cast<WORD>(pXa->m_nFrameBytes);
    pFormat->wBitsPerSample = 16;
    pFormat->cbSize = 0;
    return pXa;
}

int xaDecodeSize(void* hXa, DWORD nLength, DWORD* pnPcm) {
    if (pnPcm) *pnPcm = 0;
    if (!hXa || !pnPcm) return 0;
    if (int nResult; Hooked(&nResult, PlatformCall::kXaSize, hXa)) return nResult;
    const auto* pXa = static_cast<const CXaDecoder*>(hXa);
    uint64_t nFrames = FramesOfData(*pXa, nLength);
    if (nLength == pXa->m_nDataLen && pXa->m_bPadded) --nFrames;
    uint64_t nPcm = nFrames * static_cast<uint64_t>(pXa->m_nFrameBytes);
    if (nPcm > XA_MAX_PCM) return 0;
    *pnPcm = static_cast<DWORD>(nPcm);
    return 1;
}

void xaDecodeEndAt(void* hXa, DWORD nLength) {
    auto* pXa = static_cast<CXaDecoder*>(hXa);
    if (!pXa || nLength >= pXa->m_nDataLen) return;
    pXa->m_nDataLen = nLength;
    pXa->m_bPadded = false;
}

int xaDecodeConvert(void* hXa, XaConvertBlock* pBlock) {
    if (!hXa || !pBlock) return 0;
    pBlock->nSrcUsed = 0;
    pBlock->nDstUsed = 0;
    if ((!pBlock->pSrc && pBlock->nSrcLen > 0) || (!pBlock->pDst && pBlock->nDstBufLen > 0)) return 0;
    if (int nResult; Hooked(&nResult, PlatformCall::kXaConvert, hXa)) return nResult;
    auto* pXa = static_cast<CXaDecoder*>(hXa);
    XaSpans spans = {pBlock->pSrc, pBlock->nSrcLen, pBlock->pDst, pBlock->nDstBufLen};
    bool bGood = pBlock->nSrcLen > 0 ? ConvertBlocks(pXa, &spans) : Flush(pXa, &spans);
    pBlock->nSrcUsed = pBlock->nSrcLen - spans.nSrc;
    pBlock->nDstUsed = pBlock->nDstBufLen - spans.nDst;
    return bGood ? 1 : 0;
}

int xaDecodeClose(void* hXa) {
    delete static_cast<CXaDecoder*>(hXa);
    return 1;
}
