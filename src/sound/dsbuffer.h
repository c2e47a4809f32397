// One sound: a sound buffer, and what it needs to be filled from a WAV or XA file.
#pragma once

#include "platform/codec/acm.h"
#include "platform/codec/mmio.h"
#include "platform/files/files.h"
#include "platform/sound/directsound.h"

// m_nKind: tells how to close m_hFile and m_hAcm.
constexpr int SOUND_KIND_NONE = 0, SOUND_KIND_WAV = 1, SOUND_KIND_XA = 2;

// Order of use: construct, SetFileName, Load, then the play operations, then destroy. Methods return 0 for
// success and 1 for failure. A sound has one voice: playing it again restarts it. Owned by a slot of CDSound,
// so it lives until the chart changes.
class CDSBuffer {
public:
    explicit CDSBuffer(IDirectSound* pDS);
    CDSBuffer();
    ~CDSBuffer();  // Term
    CDSBuffer(const CDSBuffer&) = delete;
    CDSBuffer& operator=(const CDSBuffer&) = delete;

    void SetFileName(const char* pszName);  // truncated to 259 bytes
    void SetStreamSeconds(DWORD nSeconds);
    IDirectSoundBuffer* GetDSBuffer();

    // Loads the whole file, or streams it when bStream is set and it lasts at least m_nStreamSeconds. The
    // content tells XA from WAV. Failures are logged; Term frees what they leave.
    int Load(int bStream);
    int LoadWav(int bStream);
    int LoadXA(int bStream);
    int CreateDSB(DWORD nBytes);
    int Term();

    int Play();  // from the beginning; restarts an active sound
    int PlayCurrent(int bLoop, int nPlayParam);
    int Stop();
    int Rewind();
    int IsPlaying();
    int Pause();
    void Resume();
    void ClearPaused();
    int FadeStart();
    int FadeStep();

    // Services a stream. Call it at least every half second.
    int StreamPlay();
    int StreamUpdateWav(DWORD nEndPos, DWORD nMinPos);
    int StreamUpdateResetWav();
    int StreamUpdateXA(DWORD nEndPos, DWORD nMinPos);
    int StreamUpdateResetXA();

    char m_szName[260];
    IDirectSoundBuffer* m_pDSB;
    IDirectSoundBuffer* m_pDSBCreated;
    IDirectSound* m_pDS;  // borrowed
    int m_nPlayParam;
    int m_bWasPlaying;
    DWORD m_nStreamSeconds;
    DWORD m_nSeconds;
    int m_bStream;
    int m_bLoop;
    BYTE* m_pSrc;
    DWORD m_nSrcSize;
    DWORD m_nSrcRead;
    DWORD m_nSrcUsed;
    BYTE* m_pDst;
    DWORD m_nDstSize;
    DWORD m_nDstDone;
    int m_nHalf;
    DWORD m_nWritePos;
    DWORD m_nBufSize;
    int m_nEndState;
    int m_nEndHalf;
    void* m_hFile;  // HMMIO or FileStream*, by m_nKind
    void* m_hAcm;   // HACMSTREAM or the XA decoder, by m_nKind
    WAVEFORMATEX* m_pSrcFormat;
    WAVEFORMATEX m_wfx;
    DWORD m_nDataLen;
    DWORD m_nDataPos;
    DWORD m_nPcmLen;
    int m_nKind;
    int m_nFade;
    int m_nFadeSteps;

private:
    // Steps of the loads. Each returns 1 when the load ends there.
    int OpenWav();
    int ReadWavFormat();
    int FindWavData();
    int OpenWavConverter();
    int LoadWholeWav();
    int ConvertWholeWav(BYTE* pBlock, DWORD nBlock, DWORD nRead);
    int StartWavStream();
    int OpenXA(BYTE* pHeader);
    int LoadWholeXA(uint64_t nExact);
    int ConvertWholeXA(BYTE* pBlock, DWORD nBlock, DWORD nRead, uint64_t nExact);
    int StartXAStream(uint64_t nExact);

    int AllocateStreamBlocks();
    int RefillStream(DWORD nEndPos, DWORD nMinPos, char cHalf, int nNextHalf);

    void InitFields();
    void CloseFile();  // depends on m_nKind, like Term
    void CloseConverter();
    void CloseWavFile();
    void CloseXAFile();
    void FreeSrc();
    void FreeSrcFormat();
    BYTE GetSilence();
    int IsStreamWanted(int bStream);
    HRESULT LockWhole(void** ppBlock, DWORD* pnBlock);
};
