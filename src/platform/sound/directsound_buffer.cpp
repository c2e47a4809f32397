#include <algorithm>
#include <cmath>

#include "platform/sound/directsound_internal.h"
#include "platform/watch.h"

using directsound::TheMixer;

namespace {

constexpr int kMinPrimaryRate = 8000, kMaxPrimaryRate = 192000;  // Hz
constexpr DWORD kPrimaryBytes = 32768;                           // reported by GetCaps only
constexpr int kWriteLeadMilliseconds = 10;    // minimum distance from the play to the write cursor
constexpr DWORD kTransferRate = 1024 * 1024;  // KB/s: plain memory

// Far enough ahead of the mixer and its longest common filter.
DWORD WriteCursor(const IDirectSoundBuffer::State& state, const audio::Cursor& cursor) {
    const audio::Voice& voice = state.voice;
    const int64_t lead = cursor.playing ? int64_t{voice.format.rate} * kWriteLeadMilliseconds / 1000 : 0;
    return static_cast<DWORD>((cursor.frame + lead) % voice.frames * voice.format.frame_bytes);
}

bool Inside(const IDirectSoundBuffer::State& state, const void* part, DWORD bytes) {
    if (part == nullptr) return bytes == 0;
    const auto* p = static_cast<const unsigned char*>(part);
    const unsigned char* data = state.memory.data;
    return p >= data && p < data + state.bytes && bytes <= static_cast<size_t>(data + state.bytes - p);
}

// While anything is locked, everything up to there may be written to at any time. Once nothing is, the
// samples tell from where on they are silent.
void NoteLock(IDirectSoundBuffer::State* state, DWORD end) {
    const int64_t align = state->voice.format.frame_bytes, frame = (end + align - 1) / align;
    ++state->locks;
    state->voice.silent_from = std::max(state->voice.silent_from.load(), frame);
}

void NoteUnlock(IDirectSoundBuffer::State* state) {
    if (state->locks == 0 || --state->locks > 0) return;
    audio::Voice& voice = state->voice;
    const int64_t from = audio::SilentFrom(voice.format, voice.data, voice.silent_from);
    voice.silent_from = from;
    const size_t at = static_cast<size_t>(from) * static_cast<size_t>(voice.format.frame_bytes);
    if (state->bytes - at < audio::kLargeFill) return;
    audio::FillSamples(state->memory.data + at, state->bytes - at, audio::SilenceByte(voice.format));
}

}  // namespace

void directsound::Silence(const audio::SampleBlock& memory, const audio::Format& format) {
    const unsigned char silence = audio::SilenceByte(format);
    if (silence != 0 || !memory.zeroed) audio::FillSamples(memory.data, memory.bytes, silence);
}

HRESULT IDirectSoundBuffer::GetCaps(DSBCAPS* pCaps) {
    if (pCaps == nullptr || pCaps->dwSize != sizeof(DSBCAPS)) return DSERR_INVALIDPARAM;
    if (HRESULT hr; Hooked(&hr, PlatformCall::kGetCaps, this)) return hr;
    pCaps->dwFlags = m_pState->flags;
    pCaps->dwBufferBytes = m_pState->primary ? kPrimaryBytes : m_pState->bytes;
    pCaps->dwUnlockTransferRate = m_pState->primary ? 0 : kTransferRate;
    pCaps->dwPlayCpuOverhead = 0;
    return DS_OK;
}

HRESULT IDirectSoundBuffer::GetCurrentPosition(DWORD* pdwPlay, DWORD* pdwWrite) {
    if (pdwPlay != nullptr) *pdwPlay = 0;
    if (pdwWrite != nullptr) *pdwWrite = 0;
    if (pdwPlay == nullptr && pdwWrite == nullptr) return DSERR_INVALIDPARAM;
    if (m_pState->primary) return DSERR_PRIOLEVELNEEDED;
    if (HRESULT hr; Hooked(&hr, PlatformCall::kGetCurrentPosition, this)) return hr;
    const audio::Cursor cursor = TheMixer().Where(&m_pState->voice);
    if (pdwPlay != nullptr) *pdwPlay = static_cast<DWORD>(cursor.frame * m_pState->voice.format.frame_bytes);
    if (pdwWrite != nullptr) *pdwWrite = WriteCursor(*m_pState, cursor);
    return DS_OK;
}

HRESULT IDirectSoundBuffer::GetStatus(DWORD* pdwStatus) {
    if (pdwStatus != nullptr) *pdwStatus = 0;
    if (pdwStatus == nullptr) return DSERR_INVALIDPARAM;
    if (HRESULT hr; Hooked(&hr, PlatformCall::kGetStatus, this)) return hr;
    if (m_pState->primary) {
        *pdwStatus = DSBSTATUS_PLAYING | DSBSTATUS_LOOPING;
        return DS_OK;
    }
    const audio::Cursor cursor = TheMixer().Where(&m_pState->voice);
    *pdwStatus = (cursor.playing ? DSBSTATUS_PLAYING : 0) | (cursor.looping ? DSBSTATUS_LOOPING : 0);
    return DS_OK;
}

HRESULT IDirectSoundBuffer::Lock(DWORD dwOffset, DWORD dwBytes, void** ppPart1, DWORD* pdwPart1,
                                 void** ppPart2, DWORD* pdwPart2, DWORD dwFlags) {
    if (ppPart1 != nullptr) *ppPart1 = nullptr;
    if (pdwPart1 != nullptr) *pdwPart1 = 0;
    if (ppPart2 != nullptr) *ppPart2 = nullptr;
    if (pdwPart2 != nullptr) *pdwPart2 = 0;
    if (ppPart1 == nullptr || pdwPart1 == nullptr || (ppPart2 == nullptr) != (pdwPart2 == nullptr))
        return DSERR_INVALIDPARAM;
    if ((dwFlags & ~DSBLOCK_ENTIREBUFFER) != 0) return DSERR_INVALIDPARAM;
    if (m_pState->primary) return DSERR_PRIOLEVELNEEDED;
    const DWORD size = m_pState->bytes;
    if ((dwFlags & DSBLOCK_ENTIREBUFFER) != 0) dwBytes = size;
    if (dwOffset >= size || dwBytes == 0 || dwBytes > size) return DSERR_INVALIDPARAM;
    if (HRESULT hr; Hooked(&hr, PlatformCall::kLock, this)) return hr;
    *ppPart1 = m_pState->memory.data + dwOffset;
    *pdwPart1 = std::min(dwBytes, size - dwOffset);
    NoteLock(m_pState, dwOffset + *pdwPart1);
    if (ppPart2 == nullptr || *pdwPart1 == dwBytes) return DS_OK;
    *ppPart2 = m_pState->memory.data;
    *pdwPart2 = dwBytes - *pdwPart1;
    return DS_OK;
}

// Nothing to copy: the locked parts are the buffer itself.
HRESULT IDirectSoundBuffer::Unlock(void* pPart1, DWORD dwPart1, void* pPart2, DWORD dwPart2) {
    if (HRESULT hr; Hooked(&hr, PlatformCall::kUnlock, this)) return hr;
    if (m_pState->primary) return DSERR_PRIOLEVELNEEDED;
    if (pPart1 == nullptr || !Inside(*m_pState, pPart1, dwPart1)) return DSERR_INVALIDPARAM;
    if (!Inside(*m_pState, pPart2, dwPart2)) return DSERR_INVALIDPARAM;
    NoteUnlock(m_pState);
    return DS_OK;
}

HRESULT IDirectSoundBuffer::Play(DWORD dwReserved1, DWORD dwReserved2, DWORD dwFlags) {
    if (dwReserved1 != 0 || dwReserved2 != 0 || (dwFlags & ~DSBPLAY_LOOPING) != 0) return DSERR_INVALIDPARAM;
    const bool looping = (dwFlags & DSBPLAY_LOOPING) != 0;
    if (HRESULT hr; Hooked(&hr, PlatformCall::kPlay, this, looping)) return hr;
    if (m_pState->primary) return looping ? DS_OK : DSERR_INVALIDPARAM;
    TheMixer().Play(&m_pState->voice, looping);
    return DS_OK;
}

HRESULT IDirectSoundBuffer::Stop() {
    if (HRESULT hr; Hooked(&hr, PlatformCall::kStop, this)) return hr;
    if (!m_pState->primary) TheMixer().Stop(&m_pState->voice);
    return DS_OK;
}

HRESULT IDirectSoundBuffer::SetCurrentPosition(DWORD dwPosition) {
    if (m_pState->primary) return DSERR_INVALIDCALL;
    if (dwPosition >= m_pState->bytes) return DSERR_INVALIDPARAM;
    if (HRESULT hr; Hooked(&hr, PlatformCall::kSetCurrentPosition, this, dwPosition)) return hr;
    TheMixer().Seek(&m_pState->voice, dwPosition / static_cast<DWORD>(m_pState->voice.format.frame_bytes));
    return DS_OK;
}

HRESULT IDirectSoundBuffer::SetVolume(LONG nVolume) {
    if ((m_pState->flags & DSBCAPS_CTRLVOLUME) == 0) return DSERR_CONTROLUNAVAIL;
    if (nVolume < DSBVOLUME_MIN || nVolume > DSBVOLUME_MAX) return DSERR_INVALIDPARAM;
    if (HRESULT hr; Hooked(&hr, PlatformCall::kSetVolume, this, nVolume)) return hr;
    const double gain = nVolume == DSBVOLUME_MIN ? 0 : std::pow(10.0, nVolume / 2000.0);
    TheMixer().SetGain(&m_pState->voice, static_cast<float>(gain));
    return DS_OK;
}

HRESULT IDirectSoundBuffer::SetFormat(const WAVEFORMATEX* pFormat) {
    if (!m_pState->primary) return DSERR_INVALIDCALL;
    if (pFormat == nullptr) return DSERR_INVALIDPARAM;
    if (!m_pState->may_set_format) return DSERR_PRIOLEVELNEEDED;
    audio::Format format;
    if (!audio::ParseFormat(*pFormat, &format) || format.channels > 2) return DSERR_BADFORMAT;
    if (format.rate < kMinPrimaryRate || format.rate > kMaxPrimaryRate) return DSERR_BADFORMAT;
    if (HRESULT hr; Hooked(&hr, PlatformCall::kSetFormat, this)) return hr;
    return TheMixer().Open(format.rate, format.channels == 1) ? DS_OK : DSERR_BADFORMAT;
}

HRESULT IDirectSoundBuffer::Restore() {
    if (HRESULT hr; Hooked(&hr, PlatformCall::kRestore, this)) return hr;
    return DS_OK;
}

DWORD IDirectSoundBuffer::Release() {
    if (DWORD left; Hooked(&left, PlatformCall::kBufferRelease, this)) return left;
    if (!m_pState->primary) {
        TheMixer().Remove(&m_pState->voice);
        audio::FreeSamples(m_pState->memory);
    }
    delete m_pState;
    delete this;
    return 0;
}

bool HasSoundAhead(const IDirectSoundBuffer& buffer) {
    return !buffer.m_pState->primary && TheMixer().HasSoundAhead(buffer.m_pState->voice);
}
