// The one sound device and its 576 slots.
#pragma once

#include "platform/sound/directsound.h"

class CDSBuffer;

constexpr int SOUND_SLOTS = 576;

class CDSound {
public:
    CDSound();
    ~CDSound();  // Term
    CDSound(const CDSound&) = delete;
    CDSound& operator=(const CDSound&) = delete;

    // 0, or the number of the failed step, 1 to 6: device, cooperative level, primary buffer, its format,
    // silent buffer, starting it.
    int Init(HWND hWnd, int bHighQuality);
    int CreateSilentBuffer(DWORD nSeconds);  // 0, or 1 (logged)
    int PlaySilentBuffer();                  // 0, or 1
    int StopSilentBuffer();                  // 0, or 1
    int Compact();                           // 0, or 1
    int Term();                              // also destroys the sounds in the slots; 0

    HWND m_hWnd;
    IDirectSound* m_pDS;
    IDirectSoundBuffer* m_pPrimary;
    IDirectSoundBuffer* m_pSilent;  // loops for the lifetime of the device
    IDirectSoundBuffer* m_pSilentCreated;
    WAVEFORMATEX m_wfxPrimary;
    int m_bHighQuality;
    CDSBuffer* m_pSlot[SOUND_SLOTS];  // owned; null when empty
};
