// Sound buffers and the device that plays them. README.md in this folder explains the clock and the threads.
#pragma once

#include "platform/codec/waveformat.h"
#include "platform/wintypes.h"

constexpr HRESULT DS_OK = 0;
constexpr HRESULT DSERR_ALLOCATED = static_cast<HRESULT>(0x8878000Au);
constexpr HRESULT DSERR_CONTROLUNAVAIL = static_cast<HRESULT>(0x8878001Eu);
constexpr HRESULT DSERR_INVALIDCALL = static_cast<HRESULT>(0x88780032u);
constexpr HRESULT DSERR_PRIOLEVELNEEDED = static_cast<HRESULT>(0x88780046u);
constexpr HRESULT DSERR_BADFORMAT = static_cast<HRESULT>(0x88780064u);
constexpr HRESULT DSERR_NODRIVER = static_cast<HRESULT>(0x88780078u);
constexpr HRESULT DSERR_BUFFERLOST = static_cast<HRESULT>(0x88780096u);
constexpr HRESULT DSERR_UNINITIALIZED = static_cast<HRESULT>(0x887800AAu);
constexpr HRESULT DSERR_BUFFERTOOSMALL = static_cast<HRESULT>(0x887800B4u);
constexpr HRESULT DSERR_DS8_REQUIRED = static_cast<HRESULT>(0x887800BEu);
constexpr HRESULT DSERR_UNSUPPORTED = E_NOTIMPL;
constexpr HRESULT DSERR_OUTOFMEMORY = E_OUTOFMEMORY;
constexpr HRESULT DSERR_NOAGGREGATION = static_cast<HRESULT>(0x80040110u);
constexpr HRESULT DSERR_INVALIDPARAM = E_INVALIDARG;

constexpr DWORD DSSCL_PRIORITY = 2;
constexpr DWORD DSBCAPS_PRIMARYBUFFER = 0x1, DSBCAPS_STATIC = 0x2, DSBCAPS_LOCSOFTWARE = 0x8;
constexpr DWORD DSBCAPS_CTRLPAN = 0x40, DSBCAPS_CTRLVOLUME = 0x80;
constexpr DWORD DSBCAPS_GLOBALFOCUS = 0x8000, DSBCAPS_GETCURRENTPOSITION2 = 0x10000;
constexpr DWORD DSBPLAY_LOOPING = 1;
constexpr DWORD DSBSTATUS_PLAYING = 1, DSBSTATUS_LOOPING = 4;
constexpr DWORD DSBLOCK_ENTIREBUFFER = 2;
constexpr LONG DSBVOLUME_MIN = -10000, DSBVOLUME_MAX = 0;  // hundredths of a decibel
constexpr DWORD DSBSIZE_MIN = 4, DSBSIZE_MAX = 0x0FFFFFFF;

struct DSBUFFERDESC {
    DWORD dwSize;  // sizeof(DSBUFFERDESC)
    DWORD dwFlags;
    DWORD dwBufferBytes;
    DWORD dwReserved;
    const WAVEFORMATEX* lpwfxFormat;
};

struct DSBCAPS {
    DWORD dwSize;  // 20
    DWORD dwFlags;
    DWORD dwBufferBytes;
    DWORD dwUnlockTransferRate;
    DWORD dwPlayCpuOverhead;
};
static_assert(sizeof(DSBCAPS) == 20);

class IDirectSoundBuffer {
public:
    HRESULT GetCaps(DSBCAPS* pCaps);
    HRESULT GetCurrentPosition(DWORD* pdwPlay, DWORD* pdwWrite);  // bytes; either may be null
    HRESULT GetStatus(DWORD* pdwStatus);
    HRESULT Lock(DWORD dwOffset, DWORD dwBytes, void** ppPart1, DWORD* pdwPart1, void** ppPart2,
                 DWORD* pdwPart2, DWORD dwFlags);
    HRESULT Unlock(void* pPart1, DWORD dwPart1, void* pPart2, DWORD dwPart2);
    HRESULT Play(DWORD dwReserved1, DWORD dwReserved2, DWORD dwFlags);
    HRESULT Stop();
    HRESULT SetCurrentPosition(DWORD dwPosition);
    HRESULT SetVolume(LONG nVolume);
    HRESULT SetFormat(const WAVEFORMATEX* pFormat);  // primary buffer only
    HRESULT Restore();
    DWORD Release();  // stops and frees it; returns 0

    struct State;
    State* m_pState;
};

class IDirectSound {
public:
    HRESULT SetCooperativeLevel(HWND hWnd, DWORD dwLevel);
    HRESULT CreateSoundBuffer(const DSBUFFERDESC* pDesc, IDirectSoundBuffer** ppBuffer, void* pOuter);
    HRESULT Compact();
    DWORD Release();

    struct State;
    State* m_pState;
};

// pDevice null: the default device. Returns DSERR_NODRIVER when the host cannot open any sound output.
HRESULT DirectSoundCreate(const void* pDevice, IDirectSound** ppDS, void* pOuter);

// Beyond the published calls, for tools. Whether the buffer plays and has more than silence ahead: false only
// when nothing more is heard of it unless it is played again or written to.
bool HasSoundAhead(const IDirectSoundBuffer& buffer);
