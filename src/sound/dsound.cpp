#include "sound/dsound.h"

#include <cstring>

#include "sound/dsbuffer.h"
#include "system/diagnostics.h"

namespace {

constexpr DWORD SILENT_SECONDS = 2;

void FillPrimaryFormat(int bHighQuality, WAVEFORMATEX* pFormat) {
    *pFormat = {};
    pFormat->wFormatTag = WAVE_FORMAT_PCM;
    pFormat->nChannels = bHighQuality ? 2 : 1;
    pFormat->nSamplesPerSec = bHighQuality ? 44100 : 22050;
    pFormat->wBitsPerSample = bHighQuality ? 16 : 8;
    pFormat->nBlockAlign = static_cast<WORD>(pFormat->nChannels * pFormat->wBitsPerSample / 8);
    pFormat->nAvgBytesPerSec = pFormat->nSamplesPerSec * pFormat->nBlockAlign;
}

void ReleaseBuffer(IDirectSoundBuffer** ppBuffer) {
    if (*ppBuffer != nullptr) (*ppBuffer)->Release();
    *ppBuffer = nullptr;
}

}  // namespace

CDSound::CDSound()
    : m_hWnd(nullptr),
      m_pDS(nullptr),
      m_pPrimary(nullptr),
      m_pSilent(nullptr),
      m_pSilentCreated(nullptr),
      m_wfxPrimary(),
      m_bHighQuality(0),
      m_pSlot() {}

CDSound::~CDSound() {
    Term();
}

int CDSound::Init(HWND hWnd, int bHighQuality) {
    m_hWnd = hWnd;
    m_bHighQuality = bHighQuality;
    if (DirectSoundCreate(nullptr, &m_pDS, nullptr) < 0) return 1;
    if (m_pDS->SetCooperativeLevel(m_hWnd, DSSCL_PRIORITY) < 0) return 2;
    FillPrimaryFormat(m_bHighQuality, &m_wfxPrimary);
    DSBUFFERDESC desc = {};
    desc.dwSize = sizeof(desc);
    desc.dwFlags = DSBCAPS_PRIMARYBUFFER;
    if (m_pDS->CreateSoundBuffer(&desc, &m_pPrimary, nullptr) < 0) return 3;
    if (m_pPrimary->SetFormat(&m_wfxPrimary) < 0) return 4;
    if (CreateSilentBuffer(SILENT_SECONDS) != 0) return 5;
    if (PlaySilentBuffer() != 0) return 6;
    return 0;
}

int CDSound::CreateSilentBuffer(DWORD nSeconds) {
    if (m_pDS == nullptr || m_pPrimary == nullptr) return 1;
    ReleaseBuffer(&m_pSilent);
    m_pSilentCreated = nullptr;
    WAVEFORMATEX wfx = m_wfxPrimary;
    DSBUFFERDESC desc = {};
    desc.dwSize = sizeof(desc);
    desc.dwFlags = DSBCAPS_GETCURRENTPOSITION2 | DSBCAPS_GLOBALFOCUS | DSBCAPS_CTRLVOLUME | DSBCAPS_CTRLPAN |
                   DSBCAPS_LOCSOFTWARE | DSBCAPS_STATIC;
    desc.dwBufferBytes = m_wfxPrimary.nAvgBytesPerSec * nSeconds;
    desc.lpwfxFormat = &wfx;
    const HRESULT hr = m_pDS->CreateSoundBuffer(&desc, &m_pSilentCreated, nullptr);
    if (hr < 0) {
        LogDSoundResult(hr);
        DebugLog("CDSound::CreateSilentBuffer CreateDSBError\n");
        return 1;
    }
    m_pSilent = m_pSilentCreated;
    void* pBlock = nullptr;
    DWORD nBlock = 0;
    if (m_pSilent->Lock(0, desc.dwBufferBytes, &pBlock, &nBlock, nullptr, nullptr, DSBLOCK_ENTIREBUFFER) <
        0) {
        DebugLog("CDSound::CreateSilentBuffer LockError\n");
        return 1;
    }
    std::memset(pBlock, wfx.wBitsPerSample == 8 ? 0x80 : 0x00, nBlock);
    if (m_pSilent->Unlock(pBlock, nBlock, nullptr, 0) < 0) {
        DebugLog("CDSound::CreateSilentBuffer UnlockError\n");
        return 1;
    }
    return 0;
}

int CDSound::PlaySilentBuffer() {
    if (m_pSilent == nullptr) return 1;
    return m_pSilent->Play(0, 0, DSBPLAY_LOOPING) < 0 ? 1 : 0;
}

int CDSound::StopSilentBuffer() {
    if (m_pSilent == nullptr) return 1;
    return m_pSilent->Stop() < 0 ? 1 : 0;
}

int CDSound::Compact() {
    if (m_pDS == nullptr) return 1;
    return m_pDS->Compact() < 0 ? 1 : 0;
}

int CDSound::Term() {
    StopSilentBuffer();
    ReleaseBuffer(&m_pSilent);
    m_pSilentCreated = nullptr;
    for (CDSBuffer*& pSound : m_pSlot) {
        delete pSound;
        pSound = nullptr;
    }
    ReleaseBuffer(&m_pPrimary);
    if (m_pDS != nullptr) m_pDS->Release();
    m_pDS = nullptr;
    return 0;
}
