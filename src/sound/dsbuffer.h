// One sound: a sound buffer with what is needed to fill it from a WAV or an XA file.
#pragma once

#include "platform/codec/acm.h"
#include "platform/codec/mmio.h"
#include "platform/files/files.h"
#include "platform/sound/directsound.h"

// m_nKind: how m_hFile and m_hAcm are closed.
constexpr int SOUND_KIND_NONE = 0, SOUND_KIND_WAV = 1, SOUND_KIND_XA = 2;

// Order of use: construct, SetFileName, Load, then the play operations, then destroy. Results are 0 for
// success, 1 for failure. One voice: firing it while it plays starts it again.
class CDSBuffer {
public:
    explicit CDSBuffer(IDirectSound* pDS);
    CDSBuffer();
    ~CDSBuffer();  // Term
    CDSBuffer(const CDSBuffer&) = delete;
    CDSBuffer& operator=(const CDSBuffer&) = delete;

    void SetFileName(const char* pszName);  // at most 259 bytes of it
    void SetStreamSeconds(DWORD nSeconds);
    IDirectSoundBuffer* GetDSBuffer();

    // Loads the file whole, or as a stream when bStream is set and it lasts m_nStreamSeconds; XA or WAV by
    // content. Failures are logged; Term clears what they leave.
    int Load(int bStream);
    int LoadWav(int bStream);
    int LoadXA(int bStream);
    int CreateDSB(DWORD nBytes);
    int Term();

    int Play();  // from the beginning, restarting it
    int PlayCurrent(int bLoop, int nPlayParam);
    int Stop();
    int Rewind();
    int IsPlaying();
    int Pause();
    void Resume();
    void ClearPaused();
    int FadeStart();
    int FadeStep();

    // A stream's regular service; at least every half second.
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
    // The steps of the loads; each gives 1 when the load ends there.
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
    void CloseFile();  // by kind, as Term does
    void CloseConverter();
    void CloseWavFile();
    void CloseXAFile();
    void FreeSrc();
    void FreeSrcFormat();
    BYTE GetSilence();
    int IsStreamWanted(int bStream);
    HRESULT LockWhole(void** ppBlock, DWORD* pnBlock);
};
