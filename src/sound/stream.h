// Shared by the loaders and both kinds of streams.
#pragma once

#include <cstddef>

#include "sound/dsbuffer.h"

constexpr DWORD ACM_HEADER_SIZE = 84;  // cbStruct, the published size

// m_nEndState: how far a stream has progressed towards its end.
constexpr int STREAM_READING = 0;   // reads from the file
constexpr int STREAM_STARVED = 1;   // the file has no more data
constexpr int STREAM_ENDED = 3;     // the last byte has been written, followed by silence
constexpr int STREAM_SILENT = 4;    // a range of pure silence has been written, in half m_nEndHalf
constexpr int STREAM_FINISHED = 5;  // the buffer has been stopped

// One update of a stream. Converted data is staged in m_pDst and written to the ring at the end.
struct StreamUpdate {
    const char* pszKind;  // "Wav" or "XA", for the log
    DWORD nLen;           // free bytes in the ring, up to the last position to fill
    DWORD nNeed;          // minimum to produce
    DWORD nDstPos;        // staged so far
    DWORD nDstLen;        // bytes left in the staging area
    DWORD nSrc;           // source bytes of this pass
    DWORD nUsed;          // consumed of these
    DWORD nMade;          // PCM bytes of this pass
    bool bSrcSilent;      // m_pSrc already holds silence
    bool bLastPart;       // WAV: also convert the partial block at the source's end
    DWORD nLapStart;      // nDstPos when the source last restarted
    bool bLapped;         // the source has restarted in this update
};

// False for a stream whose load or reset failed, so that it has no source or no destination.
bool CanStream(const CDSBuffer& sound);
// The ranges of an update. After the end of a sound, stages silence for all of it.
StreamUpdate BeginStreamUpdate(CDSBuffer* pSound, const char* pszKind, DWORD nEndPos, DWORD nMinPos,
                               BYTE nSilence);
// Adds what a pass consumed and produced to the counters. Returns the source bytes left over, which must be
// returned to the source.
LONG CountStreamPass(CDSBuffer* pSound, StreamUpdate* pUpdate);
// At the last PCM byte of a sound that does not loop, replaces everything after it by silence.
void EndStreamSound(CDSBuffer* pSound, StreamUpdate* pUpdate, BYTE nSilence);
// Call it when the source is exhausted. Ends the sound, or returns true when it loops and the source must
// restart.
bool EndStreamSource(CDSBuffer* pSound, StreamUpdate* pUpdate, BYTE nSilence);
int WriteStreamRing(CDSBuffer* pSound, const StreamUpdate& update, BYTE nSilence);

void ResetStreamCounters(CDSBuffer* pSound);
// Stops the buffer and rewinds its cursor to 0. Returns whether it was playing.
bool RewindStreamBuffer(CDSBuffer* pSound);
