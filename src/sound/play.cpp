// Plays, stops, pauses and fades a loaded sound.
#include "sound/dsbuffer.h"

namespace {

constexpr LONG FADE_RANGE = 10000;  // hundredths of a decibel

}  // namespace

int CDSBuffer::Play() {
    if (m_pDSB == nullptr) return 1;
    if (m_bStream == 1) {
        if (Rewind() != 0) return 1;
        return m_pDSB->Play(0, 0, DSBPLAY_LOOPING) < 0 ? 1 : 0;
    }
    if (IsPlaying() && Stop() != 0) return 1;
    if (m_pDSB->SetCurrentPosition(0) < 0) return 1;
    return m_pDSB->Play(0, 0, 0) < 0 ? 1 : 0;
}

int CDSBuffer::PlayCurrent(int bLoop, int nPlayParam) {
    if (m_pDSB == nullptr) return 1;
    m_nPlayParam = nPlayParam;
    m_bLoop = bLoop;
    m_nFade = -1;
    if (m_pDSB->SetVolume(DSBVOLUME_MAX) < 0) return 1;
    // A stream's buffer is a ring, whether the sound loops or not.
    const DWORD dwFlags = m_bStream == 1 || bLoop == 1 ? DSBPLAY_LOOPING : 0;
    return m_pDSB->Play(0, 0, dwFlags) != DS_OK ? 1 : 0;
}

int CDSBuffer::Stop() {
    if (m_pDSB == nullptr) return 1;
    return m_pDSB->Stop() != DS_OK ? 1 : 0;
}

int CDSBuffer::Rewind() {
    if (m_pDSB == nullptr) return 1;
    if (m_bStream == 1) {
        if (m_nKind == SOUND_KIND_XA) return StreamUpdateResetXA();
        if (m_nKind == SOUND_KIND_WAV) return StreamUpdateResetWav();
    }
    if (m_pDSB->Stop() != DS_OK) return 1;
    return m_pDSB->SetCurrentPosition(0) != DS_OK ? 1 : 0;
}

int CDSBuffer::IsPlaying() {
    if (m_pDSB == nullptr) return 0;
    DWORD dwStatus = 0;
    m_pDSB->GetStatus(&dwStatus);
    return (dwStatus & DSBSTATUS_PLAYING) != 0 ? 1 : 0;
}

int CDSBuffer::Pause() {
    m_bWasPlaying = IsPlaying();
    return Stop();
}

// A sound that was paused while fading out stays stopped.
void CDSBuffer::Resume() {
    if (m_bWasPlaying && m_nFade < 0) PlayCurrent(0, m_nPlayParam);
    m_bWasPlaying = 0;
}

void CDSBuffer::ClearPaused() {
    m_bWasPlaying = 0;
}

int CDSBuffer::FadeStart() {
    if (m_pDSB == nullptr) return 1;
    m_nFade = m_nFadeSteps;
    return 0;
}

int CDSBuffer::FadeStep() {
    if (m_nFade < 0) return 0;
    if (m_pDSB == nullptr) return 1;
    const LONG nVolume =
        m_nFadeSteps != 0 ? (m_nFade - m_nFadeSteps) * FADE_RANGE / m_nFadeSteps : DSBVOLUME_MAX;
    if (m_pDSB->SetVolume(nVolume) < 0) return 1;
    --m_nFade;
    if (m_nFade < 0 && m_pDSB->Stop() < 0) return 1;
    return 0;
}
