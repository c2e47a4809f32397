#include <memory>
#include <new>

#include "platform/sound/directsound_internal.h"
#include "platform/watch.h"

namespace {

constexpr int kDefaultRate = 44100;
constexpr DWORD kKnownFlags = DSBCAPS_PRIMARYBUFFER | DSBCAPS_STATIC | DSBCAPS_LOCSOFTWARE | DSBCAPS_CTRLPAN |
                              DSBCAPS_CTRLVOLUME | DSBCAPS_GLOBALFOCUS | DSBCAPS_GETCURRENTPOSITION2;

int g_devices = 0;

HRESULT CheckDescription(const DSBUFFERDESC& desc, audio::Format* format) {
    if (desc.dwSize != sizeof(DSBUFFERDESC) || desc.dwReserved != 0) return DSERR_INVALIDPARAM;
    if ((desc.dwFlags & ~kKnownFlags) != 0) return DSERR_INVALIDPARAM;
    if ((desc.dwFlags & DSBCAPS_PRIMARYBUFFER) != 0) {
        const bool bare = desc.dwFlags == DSBCAPS_PRIMARYBUFFER;
        return bare && desc.dwBufferBytes == 0 && desc.lpwfxFormat == nullptr ? DS_OK : DSERR_INVALIDPARAM;
    }
    if (desc.lpwfxFormat == nullptr) return DSERR_INVALIDPARAM;
    if (!audio::ParseFormat(*desc.lpwfxFormat, format)) return DSERR_BADFORMAT;
    if (desc.dwBufferBytes < DSBSIZE_MIN) return DSERR_BUFFERTOOSMALL;
    if (desc.dwBufferBytes > DSBSIZE_MAX) return DSERR_INVALIDPARAM;
    return DS_OK;
}

// Allocates a secondary buffer: a whole number of frames, silent.
bool FillState(const DSBUFFERDESC& desc, const audio::Format& format, IDirectSoundBuffer::State* state) {
    const auto align = static_cast<DWORD>(format.frame_bytes);
    state->bytes = (desc.dwBufferBytes + align - 1) / align * align;
    state->memory = audio::AllocateSamples(state->bytes);
    if (state->memory.data == nullptr) return false;
    directsound::Silence(state->memory, format);
    state->voice.data = state->memory.data;
    state->voice.frames = state->bytes / align;
    state->voice.format = format;
    state->voice.silent_from = 0;
    directsound::TheMixer().Add(&state->voice);
    return true;
}

}  // namespace

audio::Mixer& directsound::TheMixer() {
    static audio::Mixer* const mixer = new audio::Mixer;
    return *mixer;
}

HRESULT DirectSoundCreate(const void* pDevice, IDirectSound** ppDS, void* pOuter) {
    if (ppDS == nullptr) return DSERR_INVALIDPARAM;
    *ppDS = nullptr;
    if (pOuter != nullptr) return DSERR_NOAGGREGATION;
    if (pDevice != nullptr) return DSERR_NODRIVER;
    if (HRESULT hr; Hooked(&hr, PlatformCall::kDirectSoundCreate)) return hr;
    std::unique_ptr<IDirectSound> device(new (std::nothrow) IDirectSound);
    if (device == nullptr) return DSERR_OUTOFMEMORY;
    std::unique_ptr<IDirectSound::State> state(new (std::nothrow) IDirectSound::State);
    if (state == nullptr) return DSERR_OUTOFMEMORY;
    if (g_devices == 0 && !directsound::TheMixer().Open(kDefaultRate, false)) return DSERR_NODRIVER;
    ++g_devices;
    device->m_pState = state.release();
    *ppDS = device.release();
    return DS_OK;
}

HRESULT IDirectSound::SetCooperativeLevel(HWND hWnd, DWORD dwLevel) {
    if (dwLevel != DSSCL_PRIORITY) return DSERR_INVALIDPARAM;
    if (HRESULT hr; Hooked(&hr, PlatformCall::kSoundLevel, this)) return hr;
    m_pState->priority = true;
    return DS_OK;
}

HRESULT IDirectSound::CreateSoundBuffer(const DSBUFFERDESC* pDesc, IDirectSoundBuffer** ppBuffer,
                                        void* pOuter) {
    if (ppBuffer == nullptr) return DSERR_INVALIDPARAM;
    *ppBuffer = nullptr;
    if (pDesc == nullptr) return DSERR_INVALIDPARAM;
    if (pOuter != nullptr) return DSERR_NOAGGREGATION;
    audio::Format format;
    if (const HRESULT wrong = CheckDescription(*pDesc, &format); wrong != DS_OK) return wrong;
    if (HRESULT hr; Hooked(&hr, PlatformCall::kCreateSoundBuffer, this, pDesc->dwBufferBytes)) return hr;
    std::unique_ptr<IDirectSoundBuffer> buffer(new (std::nothrow) IDirectSoundBuffer);
    if (buffer == nullptr) return DSERR_OUTOFMEMORY;
    std::unique_ptr<IDirectSoundBuffer::State> state(new (std::nothrow) IDirectSoundBuffer::State);
    if (state == nullptr) return DSERR_OUTOFMEMORY;
    state->flags = pDesc->dwFlags;
    state->primary = (pDesc->dwFlags & DSBCAPS_PRIMARYBUFFER) != 0;
    state->may_set_format = m_pState->priority;
    if (!state->primary && !FillState(*pDesc, format, state.get())) return DSERR_OUTOFMEMORY;
    buffer->m_pState = state.release();
    *ppBuffer = buffer.release();
    return DS_OK;
}

// Nothing to do: freed memory is returned at once.
HRESULT IDirectSound::Compact() {
    if (HRESULT hr; Hooked(&hr, PlatformCall::kCompact, this)) return hr;
    return m_pState->priority ? DS_OK : DSERR_PRIOLEVELNEEDED;
}

DWORD IDirectSound::Release() {
    if (DWORD left; Hooked(&left, PlatformCall::kDirectSoundRelease, this)) return left;
    if (--g_devices == 0) directsound::TheMixer().Close();
    delete m_pState;
    delete this;
    return 0;
}
