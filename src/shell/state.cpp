#include "shell/state.h"

#include "display/ddraw.h"
#include "playback/layout.h"
#include "playback/playback.h"
#include "sound/dsbuffer.h"
#include "sound/dsound.h"
#include "system/globals.h"

bool HasChart() {
    return g_pDSound && g_pDDraw && g_pBMS && g_pBarList;
}

void ClearLayers() {
    for (int nLayer : LAYERS) g_pDDraw->ClearParts(nLayer, 0);
}

void PauseChart(int bUser) {
    if (!g_bPlaying) return;
    if (bUser) {
        if (g_bPaused) return;
        g_bPaused = 1;
    }
    // 0 means no pause. The clock reads 0 for one millisecond in 49 days.
    const uint32_t dwNow = timeGetTime();
    g_dwPauseTime = dwNow ? dwNow : 1;
    g_bPlaying = 0;
    if (!g_pDSound) return;
    for (CDSBuffer* pSound : g_pDSound->m_pSlot) {
        if (pSound) pSound->Pause();
    }
}

void ResumeChart(int bUser) {
    if (g_bPlaying) return;
    if (bUser) {
        if (!g_bPaused || !g_dwPauseTime) return;
        g_bPaused = 0;
    }
    g_bPlaying = 1;
    g_dwStartTime += timeGetTime() - g_dwPauseTime;
    g_dwPauseTime = 0;
    if (!g_pDSound) return;
    for (CDSBuffer* pSound : g_pDSound->m_pSlot) {
        if (!pSound) continue;
        pSound->Resume();
        pSound->ClearPaused();
    }
}

void RestartChart() {
    if (!HasChart()) return;
    for (CDSBuffer* pSound : g_pDSound->m_pSlot) {
        if (!pSound) continue;
        pSound->Stop();
        pSound->ClearPaused();
    }
    ClearLayers();
    g_dwStartTime = timeGetTime();
    g_bPlaying = 1;
    SeekMeasure(g_nStartMeasure, &g_dwSeekTime);
    g_dwPauseTime = 0;
    g_bPaused = 0;
}
