// What the loads and the two kinds of stream share.
#pragma once

#include <cstddef>

#include "sound/dsbuffer.h"

constexpr DWORD ACM_HEADER_SIZE = 84;  // cbStruct, the published size

// m_nEndState: how far the end of a stream's sound has come.
constexpr int STREAM_READING = 0;   // from the file
constexpr int STREAM_STARVED = 1;   // the file has given out
constexpr int STREAM_ENDED = 3;     // the last byte has been written, silence behind it
constexpr int STREAM_SILENT = 4;    // a stretch of pure silence has been written, in the half m_nEndHalf
constexpr int STREAM_FINISHED = 5;  // the buffer has been stopped

// Silences a block. Pages that are silent already are only read: a sound that declares far more than its file
// holds must not cost that much memory.
void FillSilence(BYTE* p, size_t nBytes, BYTE nSilence);

// One update of a stream: converted data is staged in m_pDst and goes into the ring at the end.
struct StreamUpdate {
    const char* pszKind;  // "Wav" or "XA", for the log
    DWORD nLen;           // room in the ring, up to the last position that may be filled
    DWORD nNeed;          // the least to produce
    DWORD nDstPos;        // staged so far
    DWORD nDstLen;        // room left in staging
    DWORD nSrc;           // source bytes of this pass
    DWORD nUsed;          // of these, consumed
    DWORD nMade;          // PCM bytes of this pass
    bool bSrcSilent;      // m_pSrc holds silence already
    bool bLastPart;       // WAV: the part of a block at the source's end is wanted, too
    DWORD nLapStart;      // nDstPos when the source was last started over
    bool bLapped;         // it has been, in this update
};

// False for a stream that has nothing to read from or to write to: one whose load or reset failed.
bool CanStream(const CDSBuffer& sound);
// The ranges of an update; behind the last byte of a sound all of it is silence, staged here.
StreamUpdate BeginStreamUpdate(CDSBuffer* pSound, const char* pszKind, DWORD nEndPos, DWORD nMinPos,
                               BYTE nSilence);
// Enters what a pass consumed and made into the counters. The source bytes left over, to be handed back.
LONG CountStreamPass(CDSBuffer* pSound, StreamUpdate* pUpdate);
// At the last PCM byte of a sound that does not repeat: silence for what is beyond it and for the room left.
void EndStreamSound(CDSBuffer* pSound, StreamUpdate* pUpdate, BYTE nSilence);
// The source has nothing more: ends the sound, or notes that it starts over (true) when it repeats.
bool EndStreamSource(CDSBuffer* pSound, StreamUpdate* pUpdate, BYTE nSilence);
int WriteStreamRing(CDSBuffer* pSound, const StreamUpdate& update, BYTE nSilence);

void ResetStreamCounters(CDSBuffer* pSound);
// Stops the buffer and takes its cursor to 0. Whether it was playing.
bool RewindStreamBuffer(CDSBuffer* pSound);
