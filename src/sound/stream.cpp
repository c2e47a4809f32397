// The ring of a streamed sound, its end, and its periodic service.
#include "sound/stream.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "system/diagnostics.h"

namespace {

// Bytes from the write position to nPos, wrapping if nPos comes before it. nPos itself counts only without a
// wrap.
DWORD GetRoom(const CDSBuffer& sound, DWORD nPos) {
    if (nPos < sound.m_nWritePos) return sound.m_nBufSize - sound.m_nWritePos + nPos;
    return nPos - sound.m_nWritePos + 1;
}

void StageSilence(CDSBuffer* pSound, StreamUpdate* pUpdate, DWORD nFrom, BYTE nSilence) {
    std::memset(pSound->m_pDst + nFrom, nSilence, pUpdate->nLen - nFrom);
    pUpdate->nDstPos = pUpdate->nLen;
    pUpdate->nDstLen = 0;
}

struct LockedRing {
    void* pPart1;
    DWORD nPart1;
    void* pPart2;
    DWORD nPart2;
};

int LockRing(CDSBuffer* pSound, const StreamUpdate& update, LockedRing* pRing) {
    const auto lock = [&] {
        *pRing = {};
        return pSound->m_pDSB->Lock(pSound->m_nWritePos, update.nLen, &pRing->pPart1, &pRing->nPart1,
                                    &pRing->pPart2, &pRing->nPart2, 0);
    };
    HRESULT hr = lock();
    if (hr == DSERR_BUFFERLOST) {
        if (pSound->m_pDSB->Restore() != DS_OK) {
            DebugLog("CDSBuffer::StreamUpdate%s BufferLost(Lock)\n", update.pszKind);
            return 1;
        }
        hr = lock();
    }
    if (hr == DS_OK) return 0;
    DebugLog("CDSBuffer::StreamUpdate%s LockError %d %d ", update.pszKind,
             static_cast<int>(pSound->m_nWritePos), static_cast<int>(update.nLen));
    LogDSoundResult(hr);
    return 1;
}

// Copies the staged bytes and fills the rest of the range with silence. False when they do not fit.
bool CopyToRing(const CDSBuffer& sound, const StreamUpdate& update, const LockedRing& ring, BYTE nSilence) {
    if (ring.pPart1 != nullptr) std::memset(ring.pPart1, nSilence, ring.nPart1);
    if (ring.pPart2 != nullptr) std::memset(ring.pPart2, nSilence, ring.nPart2);
    const DWORD nFirst = ring.pPart1 != nullptr ? std::min(update.nDstPos, ring.nPart1) : 0;
    const DWORD nRest = update.nDstPos - nFirst;
    if (nFirst > 0) std::memcpy(ring.pPart1, sound.m_pDst, nFirst);
    if (nRest == 0) return true;
    if (ring.pPart2 == nullptr || nRest > ring.nPart2) return false;
    std::memcpy(ring.pPart2, sound.m_pDst + nFirst, nRest);
    return true;
}

}  // namespace

bool CanStream(const CDSBuffer& sound) {
    return sound.m_pDSB != nullptr && sound.m_hFile != nullptr && sound.m_hAcm != nullptr &&
           sound.m_pSrc != nullptr && sound.m_pDst != nullptr;
}

StreamUpdate BeginStreamUpdate(CDSBuffer* pSound, const char* pszKind, DWORD nEndPos, DWORD nMinPos,
                               BYTE nSilence) {
    StreamUpdate update = {};
    update.pszKind = pszKind;
    update.nLen = std::min(GetRoom(*pSound, nEndPos), pSound->m_nDstSize);
    update.nNeed = GetRoom(*pSound, nMinPos);
    update.nDstLen = update.nLen;
    if (pSound->m_nEndState == STREAM_ENDED) {
        StageSilence(pSound, &update, 0, nSilence);
        pSound->m_nEndState = STREAM_SILENT;
        pSound->m_nEndHalf = pSound->m_nHalf;
    }
    return update;
}

LONG CountStreamPass(CDSBuffer* pSound, StreamUpdate* pUpdate) {
    pSound->m_nSrcUsed += pUpdate->nUsed;
    const LONG nLeft = static_cast<LONG>(pUpdate->nSrc - pUpdate->nUsed);
    if (nLeft > 0) pSound->m_nSrcRead -= static_cast<DWORD>(nLeft);
    pUpdate->nDstPos += pUpdate->nMade;
    pUpdate->nDstLen -= pUpdate->nMade;
    pSound->m_nDstDone += pUpdate->nMade;
    return nLeft;
}

void EndStreamSound(CDSBuffer* pSound, StreamUpdate* pUpdate, BYTE nSilence) {
    if (pSound->m_nDstDone < pSound->m_nPcmLen || pSound->m_bLoop != 0) return;
    DWORD nOver = pSound->m_nDstDone - pSound->m_nPcmLen;
    if (nOver > pUpdate->nDstPos) {
        if (pSound->m_nKind == SOUND_KIND_XA) {
            DebugLog("隊長！！大変です(号泣 Over=%d nDstLen=%d nDstPos=%d\n", static_cast<int>(nOver),
                     static_cast<int>(pUpdate->nDstLen), static_cast<int>(pUpdate->nDstPos));
        } else {
            DebugLog("隊長！！大変です(号泣 Over=%d nDstLen=%d\n", static_cast<int>(nOver),
                     static_cast<int>(pUpdate->nDstLen));
        }
        nOver = 0;
    }
    StageSilence(pSound, pUpdate, pUpdate->nDstPos - nOver, nSilence);
    pSound->m_nEndState = STREAM_ENDED;
}

bool EndStreamSource(CDSBuffer* pSound, StreamUpdate* pUpdate, BYTE nSilence) {
    // A source that produced nothing from start to end would otherwise restart for ever.
    const bool bEmptyLap = pUpdate->bLapped && pUpdate->nLapStart == pUpdate->nDstPos;
    if (pSound->m_bLoop != 0 && !bEmptyLap) {
        pUpdate->bLapped = true;
        pUpdate->nLapStart = pUpdate->nDstPos;
        return true;
    }
    StageSilence(pSound, pUpdate, pUpdate->nDstPos, nSilence);
    if (pSound->m_bLoop == 0) pSound->m_nEndState = STREAM_ENDED;
    return false;
}

int WriteStreamRing(CDSBuffer* pSound, const StreamUpdate& update, BYTE nSilence) {
    LockedRing ring;
    if (LockRing(pSound, update, &ring) != 0) return 1;
    const bool bFits = CopyToRing(*pSound, update, ring, nSilence);
    if (bFits) {
        pSound->m_nWritePos += update.nDstPos;
        if (pSound->m_nWritePos >= pSound->m_nBufSize) pSound->m_nWritePos -= pSound->m_nBufSize;
    } else {
        DebugLog("CDSBuffer::StreamUpdate%s BufSizeCalcError\n", update.pszKind);
    }
    if (pSound->m_pDSB->Unlock(ring.pPart1, ring.nPart1, ring.pPart2, ring.nPart2) != DS_OK) {
        DebugLog("CDSBuffer::StreamUpdate%s UnlockError\n", update.pszKind);
        return 1;
    }
    return bFits ? 0 : 1;
}

void ResetStreamCounters(CDSBuffer* pSound) {
    pSound->m_nSrcRead = pSound->m_nSrcUsed = pSound->m_nDstDone = 0;
    pSound->m_nEndState = STREAM_READING;
    pSound->m_nWritePos = 0;
    pSound->m_nHalf = pSound->m_nEndHalf = 0;
}

bool RewindStreamBuffer(CDSBuffer* pSound) {
    if (pSound->m_pDSB == nullptr) return false;
    const bool bPlaying = pSound->IsPlaying() != 0;
    if (bPlaying) pSound->m_pDSB->Stop();
    pSound->m_pDSB->SetCurrentPosition(0);
    return bPlaying;
}

int CDSBuffer::AllocateStreamBlocks() {
    m_nDstSize = m_nBufSize;
    m_nDstDone = 0;
    m_pSrc = static_cast<BYTE*>(std::malloc(m_nSrcSize));
    m_pDst = static_cast<BYTE*>(std::malloc(m_nDstSize));
    return m_pSrc != nullptr && m_pDst != nullptr ? 0 : 1;
}

int CDSBuffer::StreamPlay() {
    if (m_bStream == 0 || m_pDSB == nullptr || m_nEndState == STREAM_FINISHED) return 0;
    DWORD nPlay = 0, nWrite = 0;
    if (m_pDSB->GetCurrentPosition(&nPlay, &nWrite) != DS_OK) {
        DebugLog("CDSBuffer::StreamPlay GetCurrentPosError\n");
        return 1;
    }
    const DWORD nMiddle = m_nBufSize / 2, nThird = m_nBufSize * 3 / 4;
    const bool bFirstHalf = nPlay > 0 && nPlay < nMiddle;
    if (m_bLoop == 0 && m_nEndState >= STREAM_SILENT) {
        const bool bSecondHalf = nPlay > nMiddle && nPlay < m_nBufSize - 1;
        if ((m_nEndHalf == 0 && bFirstHalf) || (m_nEndHalf == 1 && bSecondHalf)) {
            m_pDSB->Stop();
            m_nEndState = STREAM_FINISHED;
        }
        return 0;
    }
    // The half behind the cursor is free.
    if (m_nHalf == 0 && nPlay > nMiddle && nPlay < nThird)
        return RefillStream(nMiddle - 1, m_nBufSize / 4, 'A', 1);
    if (m_nHalf == 1 && bFirstHalf) return RefillStream(m_nBufSize - 1, nThird, 'B', 0);
    return 0;
}

int CDSBuffer::RefillStream(DWORD nEndPos, DWORD nMinPos, char cHalf, int nNextHalf) {
    const bool bXA = m_nKind == SOUND_KIND_XA;
    if ((bXA ? StreamUpdateXA(nEndPos, nMinPos) : StreamUpdateWav(nEndPos, nMinPos)) != 0) {
        DebugLog("CDSBuffer::StreamPlay%s [%c]StreamUpdateError\n", bXA ? "XA" : "Wav", cHalf);
        return 1;
    }
    m_nHalf = nNextHalf;
    return 0;
}
