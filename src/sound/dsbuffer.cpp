// The lifetime of a sound: construction, its buffer, and Term. The loaders are in wav.cpp and xa.cpp.
#include "sound/dsbuffer.h"

#include <cstdlib>
#include <cstring>

#include "sound/xadec.h"
#include "system/diagnostics.h"

namespace {

constexpr DWORD STREAM_SECONDS = 20;
constexpr int FADE_STEPS = 5;
constexpr DWORD MIN_MILLISECONDS = 150;

constexpr DWORD FULL_FLAGS = DSBCAPS_GETCURRENTPOSITION2 | DSBCAPS_GLOBALFOCUS | DSBCAPS_CTRLVOLUME |
                             DSBCAPS_CTRLPAN | DSBCAPS_LOCSOFTWARE | DSBCAPS_STATIC;
constexpr DWORD PLAIN_FLAGS = DSBCAPS_GETCURRENTPOSITION2 | DSBCAPS_CTRLVOLUME;
static_assert(FULL_FLAGS == 0x180CA && PLAIN_FLAGS == 0x10080);

// At least 150 ms, in whole frames. Saturates at 32 bits, which is more than any device grants.
DWORD GetBufferBytes(DWORD nBytes, const WAVEFORMATEX& wfx) {
    uint64_t nSize = nBytes;
    if (wfx.nAvgBytesPerSec != 0 && nSize * 1000 / wfx.nAvgBytesPerSec < MIN_MILLISECONDS)
        nSize = uint64_t{wfx.nAvgBytesPerSec} * MIN_MILLISECONDS / 1000;
    if (wfx.nBlockAlign != 0 && nSize % wfx.nBlockAlign != 0)
        nSize += wfx.nBlockAlign - nSize % wfx.nBlockAlign;
    return nSize > UINT32_MAX ? UINT32_MAX : static_cast<DWORD>(nSize);
}

}  // namespace

CDSBuffer::CDSBuffer(IDirectSound* pDS) {
    InitFields();
    m_pDS = pDS;
}

CDSBuffer::CDSBuffer() {
    InitFields();
}

CDSBuffer::~CDSBuffer() {
    Term();
}

void CDSBuffer::InitFields() {
    std::memset(m_szName, 0, sizeof(m_szName));
    m_pDSB = m_pDSBCreated = nullptr;
    m_pDS = nullptr;
    m_nPlayParam = m_bWasPlaying = 0;
    m_nStreamSeconds = STREAM_SECONDS;
    m_nSeconds = 0;
    m_bStream = m_bLoop = 0;
    m_pSrc = m_pDst = nullptr;
    m_nSrcSize = m_nSrcRead = m_nSrcUsed = 0;
    m_nDstSize = m_nDstDone = 0;
    m_nHalf = 0;
    m_nWritePos = m_nBufSize = 0;
    m_nEndState = m_nEndHalf = 0;
    m_hFile = m_hAcm = nullptr;
    m_pSrcFormat = nullptr;
    m_wfx = {};
    m_nDataLen = m_nDataPos = m_nPcmLen = 0;
    m_nKind = SOUND_KIND_NONE;
    m_nFade = -1;
    m_nFadeSteps = FADE_STEPS;
}

void CDSBuffer::SetFileName(const char* pszName) {
    std::strncpy(m_szName, pszName, sizeof(m_szName) - 1);
    m_szName[sizeof(m_szName) - 1] = '\0';
}

void CDSBuffer::SetStreamSeconds(DWORD nSeconds) {
    m_nStreamSeconds = nSeconds;
}

IDirectSoundBuffer* CDSBuffer::GetDSBuffer() {
    return m_pDSB;
}

int CDSBuffer::Load(int bStream) {
    if (LoadXA(bStream) == 0) return 0;
    return LoadWav(bStream);
}

int CDSBuffer::CreateDSB(DWORD nBytes) {
    if (m_pDS == nullptr) {
        DebugLog("CDSBuffer::CreateDSB DSobj==NULL\n");
        return 1;
    }
    m_nBufSize = GetBufferBytes(nBytes, m_wfx);
    DSBUFFERDESC desc = {};
    desc.dwSize = sizeof(desc);
    desc.dwFlags = FULL_FLAGS;
    desc.dwBufferBytes = m_nBufSize;
    desc.lpwfxFormat = &m_wfx;
    HRESULT hr = m_pDS->CreateSoundBuffer(&desc, &m_pDSBCreated, nullptr);
    if (hr != DS_OK) {
        LogDSoundResult(hr);
        DebugLog("CDSBuffer::CreateDSB 1stCreateFailed\n");
        desc.dwFlags = PLAIN_FLAGS;
        hr = m_pDS->CreateSoundBuffer(&desc, &m_pDSBCreated, nullptr);
        if (hr != DS_OK) {
            LogDSoundResult(hr);
            DebugLog("CDSBuffer::CreateDSB CreateDSBError\n");
            return 1;
        }
    }
    m_pDSB = m_pDSBCreated;
    DSBCAPS caps = {};
    caps.dwSize = sizeof(caps);
    hr = m_pDSB->GetCaps(&caps);
    if (hr != DS_OK) {
        DebugLog("CDSBuffer::CreateDSB GetCapsError\n");
        return 1;
    }
    m_nBufSize = caps.dwBufferBytes;
    return 0;
}

// Keeps flags and numbers: the next load still needs m_nKind to close an open converter.
int CDSBuffer::Term() {
    if (m_pDSB != nullptr) {
        m_pDSB->Stop();
        m_pDSB->Release();
    }
    m_pDSB = m_pDSBCreated = nullptr;
    FreeSrc();
    FreeSrcFormat();
    std::free(m_pDst);
    m_pDst = nullptr;
    CloseFile();
    CloseConverter();
    return 0;
}

void CDSBuffer::CloseFile() {
    if (m_hFile != nullptr) {
        if (m_nKind == SOUND_KIND_WAV) {
            mmioClose(static_cast<HMMIO>(m_hFile), 0);
        } else if (m_nKind == SOUND_KIND_XA) {
            FileClose(static_cast<FileStream*>(m_hFile));
        } else {
            DebugLog("CDSBuffer::Term hFile Error?\n");
        }
    }
    m_hFile = nullptr;
}

void CDSBuffer::CloseConverter() {
    if (m_hAcm != nullptr) {
        if (m_nKind == SOUND_KIND_WAV) {
            acmStreamClose(static_cast<HACMSTREAM>(m_hAcm), 0);
        } else if (m_nKind == SOUND_KIND_XA) {
            xaDecodeClose(m_hAcm);
        } else {
            DebugLog("CDSBuffer::Term hAcm Error?\n");
        }
    }
    m_hAcm = nullptr;
}

void CDSBuffer::FreeSrc() {
    std::free(m_pSrc);
    m_pSrc = nullptr;
}

void CDSBuffer::FreeSrcFormat() {
    std::free(m_pSrcFormat);
    m_pSrcFormat = nullptr;
}

BYTE CDSBuffer::GetSilence() {
    return m_wfx.wBitsPerSample == 8 ? 0x80 : 0x00;
}

int CDSBuffer::IsStreamWanted(int bStream) {
    m_nSeconds = m_wfx.nAvgBytesPerSec != 0 ? m_nPcmLen / m_wfx.nAvgBytesPerSec : 0;
    m_bStream = bStream != 0 && m_nSeconds >= m_nStreamSeconds ? 1 : 0;
    return m_bStream;
}

HRESULT CDSBuffer::LockWhole(void** ppBlock, DWORD* pnBlock) {
    HRESULT hr = m_pDSB->Lock(0, m_nBufSize, ppBlock, pnBlock, nullptr, nullptr, DSBLOCK_ENTIREBUFFER);
    if (hr == DSERR_BUFFERLOST) {
        m_pDSB->Restore();
        hr = m_pDSB->Lock(0, m_nBufSize, ppBlock, pnBlock, nullptr, nullptr, DSBLOCK_ENTIREBUFFER);
    }
    return hr;
}
