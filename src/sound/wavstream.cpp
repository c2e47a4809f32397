// Streams a WAV file.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "sound/stream.h"
#include "system/diagnostics.h"

namespace {

constexpr DWORD RING_SECONDS = 2;

HMMIO FileOf(const CDSBuffer& sound) {
    return static_cast<HMMIO>(sound.m_hFile);
}

DWORD GetSilentSource(const CDSBuffer& sound) {
    return sound.m_nSrcUsed < sound.m_nDataLen
               ? std::min(sound.m_nSrcSize, sound.m_nDataLen - sound.m_nSrcUsed)
               : 0;
}

// Gets the source of one pass: from the file, or silence once the file is exhausted.
int ReadPiece(CDSBuffer* pSound, StreamUpdate* pUpdate, BYTE nSilence) {
    const DWORD nRead = std::min(pSound->m_nSrcSize, pSound->m_nDataLen - pSound->m_nSrcRead);
    if (pSound->m_nSrcRead == pSound->m_nDataLen) pSound->m_nEndState = STREAM_STARVED;
    if (pSound->m_nEndState == STREAM_READING) {
        const LONG nGot = mmioRead(FileOf(*pSound), pSound->m_pSrc, static_cast<LONG>(nRead));
        if (nGot == -1) {
            DebugLog("CDSBuffer::StreamUpdateWav ReadError\n");
            return 1;
        }
        pUpdate->nSrc = static_cast<DWORD>(nGot);
        if (nGot == 0 || pUpdate->nSrc < nRead) pSound->m_nEndState = STREAM_STARVED;
        pSound->m_nSrcRead += pUpdate->nSrc;
        pUpdate->bSrcSilent = false;
    } else if (!pUpdate->bSrcSilent) {
        std::memset(pSound->m_pSrc, nSilence, pSound->m_nSrcSize);
        pUpdate->bSrcSilent = true;
    }
    return 0;
}

int ConvertPiece(CDSBuffer* pSound, StreamUpdate* pUpdate) {
    HACMSTREAM hAcm = static_cast<HACMSTREAM>(pSound->m_hAcm);
    ACMSTREAMHEADER header = {};
    header.cbStruct = ACM_HEADER_SIZE;
    header.pbSrc = pSound->m_pSrc;
    header.cbSrcLength = pUpdate->nSrc;
    header.pbDst = pSound->m_pDst + pUpdate->nDstPos;
    header.cbDstLength = pUpdate->nDstLen;
    MMRESULT nResult = acmStreamPrepareHeader(hAcm, &header, 0);
    if (nResult != MMSYSERR_NOERROR) {
        DebugLog("CDSBuffer::StreamUpdateWav PrepareError %X\n", nResult);
        return 1;
    }
    nResult = acmStreamConvert(hAcm, &header, pUpdate->bLastPart ? 0 : ACM_STREAMCONVERTF_BLOCKALIGN);
    if (nResult != MMSYSERR_NOERROR) {
        DebugLog("CDSBuffer::StreamUpdateWav ConvertError %X\n", nResult);
        return 1;
    }
    if (acmStreamUnprepareHeader(hAcm, &header, 0) != MMSYSERR_NOERROR) {
        DebugLog("CDSBuffer::StreamUpdateWav UnprepareError\n");
        return 1;
    }
    pUpdate->nUsed = header.cbSrcLengthUsed;
    pUpdate->nMade = header.cbDstLengthUsed;
    return 0;
}

void RestartSource(CDSBuffer* pSound) {
    mmioSeek(FileOf(*pSound), static_cast<LONG>(pSound->m_nDataPos), SEEK_SET);
    pSound->m_nSrcRead = pSound->m_nSrcUsed = 0;
    if (pSound->m_bLoop != 0) pSound->m_nDstDone = 0;
    pSound->m_nEndState = STREAM_READING;
}

// Handles a pass that neither consumed source nor produced PCM. False when this update can do no more.
bool RetryIdlePass(CDSBuffer* pSound, StreamUpdate* pUpdate, BYTE nSilence) {
    const DWORD nBlock = pSound->m_pSrcFormat->nBlockAlign;
    if (pUpdate->nSrc >= nBlock && nBlock > 0) return false;  // no room for a block until the next update
    const DWORD nSilent = GetSilentSource(*pSound);
    if (pSound->m_nEndState == STREAM_STARVED && pUpdate->nSrc < nSilent) {
        pUpdate->nSrc = nSilent;
        return true;
    }
    if (pUpdate->nSrc > 0 && !pUpdate->bLastPart) {
        pUpdate->bLastPart = true;
        return true;
    }
    pUpdate->bLastPart = false;
    if (!EndStreamSource(pSound, pUpdate, nSilence)) return false;
    RestartSource(pSound);
    return true;
}

}  // namespace

int CDSBuffer::StartWavStream() {
    HACMSTREAM hAcm = static_cast<HACMSTREAM>(m_hAcm);
    m_bStream = 1;
    m_nBufSize = m_wfx.wBitsPerSample / 8u * m_wfx.nChannels * m_wfx.nSamplesPerSec * RING_SECONDS;
    const char* pszFailed = nullptr;
    if (acmStreamSize(hAcm, m_nBufSize, &m_nSrcSize, ACM_STREAMSIZEF_DESTINATION) != MMSYSERR_NOERROR) {
        pszFailed = "Size(d2s)Get Error";
    } else if (acmStreamSize(hAcm, m_nSrcSize, &m_nBufSize, ACM_STREAMSIZEF_SOURCE) != MMSYSERR_NOERROR) {
        pszFailed = "Size(s2d)Get Error";
    } else {
        ResetStreamCounters(this);
        // Allocate the blocks after the buffer, so that a ring which no device grants costs no memory.
        if (CreateDSB(m_nBufSize) != 0 || AllocateStreamBlocks() != 0) pszFailed = "DSBCreateError(Stream)";
    }
    if (pszFailed != nullptr) {
        DebugLog("CDSBuffer::LoadWav %s\n", pszFailed);
        CloseWavFile();
        FreeSrcFormat();
        FreeSrc();
        return 1;
    }
    if (StreamUpdateWav(m_nBufSize - 1, m_nBufSize * 3 / 4) != 0) {
        DebugLog("CDSBuffer::LoadWav StreamUpdateError\n");
        return 1;
    }
    m_nHalf = 0;
    return 0;
}

int CDSBuffer::StreamUpdateWav(DWORD nEndPos, DWORD nMinPos) {
    if (m_nEndState == STREAM_FINISHED) return 0;
    if (!CanStream(*this) || m_pSrcFormat == nullptr) return 1;
    const BYTE nSilence = GetSilence();
    StreamUpdate update = BeginStreamUpdate(this, "Wav", nEndPos, nMinPos, nSilence);
    update.nSrc = GetSilentSource(*this);
    while (update.nDstPos < update.nNeed && update.nDstLen > 0) {
        if (ReadPiece(this, &update, nSilence) != 0 || ConvertPiece(this, &update) != 0) return 1;
        const LONG nLeft = CountStreamPass(this, &update);
        if (nLeft > 0) mmioSeek(FileOf(*this), -nLeft, SEEK_CUR);
        const bool bIdle = update.nUsed == 0 && update.nMade == 0;
        if (!bIdle) update.bLastPart = false;
        EndStreamSound(this, &update, nSilence);
        if (m_nSrcUsed >= m_nDataLen) {
            RestartSource(this);
            if (bIdle) break;  // a sound without data
        } else if (bIdle && update.nDstLen > 0 && !RetryIdlePass(this, &update, nSilence)) {
            break;
        }
    }
    return WriteStreamRing(this, update, nSilence);
}

int CDSBuffer::StreamUpdateResetWav() {
    if (m_bStream == 0 && m_pDSB == nullptr) return 0;
    mmioSeek(FileOf(*this), static_cast<LONG>(m_nDataPos), SEEK_SET);
    ResetStreamCounters(this);
    const bool bPlaying = RewindStreamBuffer(this);
    HACMSTREAM hAcm = nullptr;
    acmStreamClose(static_cast<HACMSTREAM>(m_hAcm), 0);
    const MMRESULT nResult =
        acmStreamOpen(&hAcm, nullptr, m_pSrcFormat, &m_wfx, nullptr, 0, 0, ACM_STREAMOPENF_NONREALTIME);
    m_hAcm = hAcm;
    if (nResult != MMSYSERR_NOERROR) {
        DebugLog("CDSBuffer::StreamUpdateResetWav ACM OPEN ERROR\n");
        CloseWavFile();
        FreeSrcFormat();
        return 1;
    }
    if (StreamUpdateWav(m_nBufSize - 1, m_nBufSize * 3 / 4) != 0) {
        DebugLog("CDSBuffer::StreamUpdateResetWav StreamUpdateError\n");
        return 1;
    }
    m_nHalf = 0;
    return bPlaying && m_pDSB->Play(0, 0, DSBPLAY_LOOPING) != DS_OK ? 1 : 0;
}
