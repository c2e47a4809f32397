// Streams an XA file.
#include <algorithm>
#include <cstdio>

#include "sound/stream.h"
#include "sound/xadec.h"
#include "system/diagnostics.h"

namespace {

constexpr DWORD RING_SECONDS = 2;
constexpr DWORD SOURCE_BYTES = 10000;

FileStream* FileOf(const CDSBuffer& sound) {
    return static_cast<FileStream*>(sound.m_hFile);
}

void ReadPiece(CDSBuffer* pSound, StreamUpdate* pUpdate) {
    if (pSound->m_nSrcRead >= pSound->m_nDataLen) pSound->m_nEndState = STREAM_STARVED;
    pUpdate->nSrc = 0;
    if (pSound->m_nEndState != STREAM_READING) return;
    const DWORD nRead = std::min(pSound->m_nSrcSize, pSound->m_nDataLen - pSound->m_nSrcRead);
    pUpdate->nSrc = static_cast<DWORD>(FileRead(pSound->m_pSrc, 1, nRead, FileOf(*pSound)));
    if (pUpdate->nSrc < nRead) pSound->m_nEndState = STREAM_STARVED;
    pSound->m_nSrcRead += pUpdate->nSrc;
}

int ConvertPiece(CDSBuffer* pSound, StreamUpdate* pUpdate) {
    XaConvertBlock convert = {};
    convert.pSrc = pSound->m_pSrc;
    convert.nSrcLen = pUpdate->nSrc;
    convert.pDst = pSound->m_pDst + pUpdate->nDstPos;
    convert.nDstBufLen = pUpdate->nDstLen;
    if (xaDecodeConvert(pSound->m_hAcm, &convert) == 0) {
        DebugLog("CDSBuffer::StreamUpdateXA ConvertError\n");
        return 1;
    }
    pUpdate->nUsed = convert.nSrcUsed;
    pUpdate->nMade = convert.nDstUsed;
    return 0;
}

// The decoder continues with its current state.
void RestartSource(CDSBuffer* pSound) {
    FileSeek(FileOf(*pSound), pSound->m_nDataPos, SEEK_SET);
    pSound->m_nSrcRead = pSound->m_nSrcUsed = pSound->m_nDstDone = 0;
    pSound->m_nEndState = STREAM_READING;
}

// Handles the end of the source. False when this update can do no more.
bool BeginLap(CDSBuffer* pSound, StreamUpdate* pUpdate, BYTE nSilence) {
    if (!EndStreamSource(pSound, pUpdate, nSilence)) return false;
    RestartSource(pSound);
    return true;
}

}  // namespace

int CDSBuffer::StartXAStream(uint64_t nExact) {
    m_bStream = 1;
    m_nBufSize = m_wfx.wBitsPerSample / 8u * m_wfx.nChannels * m_wfx.nSamplesPerSec * RING_SECONDS;
    m_nSrcSize = SOURCE_BYTES;
    m_nPcmLen = static_cast<DWORD>(std::min<uint64_t>(nExact, UINT32_MAX));
    ResetStreamCounters(this);
    if (CreateDSB(m_nBufSize) != 0 || AllocateStreamBlocks() != 0) {
        DebugLog("CDSBuffer::LoadXA DSBCreateError(Stream)\n");
        CloseXAFile();
        FreeSrc();
        return 1;
    }
    if (StreamUpdateXA(m_nBufSize - 1, m_nBufSize * 3 / 4) != 0) {
        DebugLog("CDSBuffer::LoadXA StreamUpdateError\n");
        return 1;
    }
    m_nHalf = 0;
    return 0;
}

int CDSBuffer::StreamUpdateXA(DWORD nEndPos, DWORD nMinPos) {
    if (m_nEndState == STREAM_FINISHED) return 0;
    if (!CanStream(*this)) return 1;
    const BYTE nSilence = GetSilence();
    StreamUpdate update = BeginStreamUpdate(this, "XA", nEndPos, nMinPos, nSilence);
    while (update.nDstPos < update.nNeed && update.nDstLen > 0) {
        ReadPiece(this, &update);
        if (ConvertPiece(this, &update) != 0) return 1;
        const LONG nLeft = CountStreamPass(this, &update);
        if (nLeft > 0) FileSeek(FileOf(*this), -nLeft, SEEK_CUR);
        const bool bIdle = update.nUsed == 0 && update.nMade == 0;
        EndStreamSound(this, &update, nSilence);
        if (bIdle && update.nDstLen > 0 && update.nSrc > 0)
            break;  // too little room for the decoder until the next update
        const bool bAtEnd = bIdle ? update.nDstLen > 0 : m_bLoop != 0 && m_nSrcUsed >= m_nDataLen;
        if (bAtEnd && !BeginLap(this, &update, nSilence)) break;
    }
    return WriteStreamRing(this, update, nSilence);
}

int CDSBuffer::StreamUpdateResetXA() {
    if (m_bStream == 0 && m_pDSB == nullptr) return 0;
    BYTE aHeader[XA_HEADER_SIZE];
    FileStream* pFile = FileOf(*this);
    if (pFile == nullptr || FileSeek(pFile, 0, SEEK_SET) != 0 ||
        FileRead(aHeader, 1, XA_HEADER_SIZE, pFile) != XA_HEADER_SIZE) {
        DebugLog("CDSBuffer::LoadXA HeaderReadError\n");
        CloseXAFile();
        return 1;
    }
    FileSeek(pFile, m_nDataPos, SEEK_SET);
    ResetStreamCounters(this);
    const bool bPlaying = RewindStreamBuffer(this);
    xaDecodeClose(m_hAcm);
    m_hAcm = xaDecodeOpen(aHeader, &m_wfx);
    if (m_hAcm == nullptr) {
        DebugLog("CDSBuffer::StreamUpdateResetXA DecodeOpenError\n");
        CloseXAFile();
        return 1;
    }
    if (StreamUpdateXA(m_nBufSize - 1, m_nBufSize * 3 / 4) != 0) {
        DebugLog("CDSBuffer::StreamUpdateResetXA StreamUpdateError\n");
        return 1;
    }
    m_nHalf = 0;
    return bPlaying && m_pDSB->Play(0, 0, DSBPLAY_LOOPING) != DS_OK ? 1 : 0;
}
