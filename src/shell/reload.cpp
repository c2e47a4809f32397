#include "shell/reload.h"

#include <cstring>
#include <new>

#include "chart/bms.h"
#include "display/ddraw.h"
#include "platform/window/dialog.h"
#include "playback/playback.h"
#include "shell/options.h"
#include "shell/shell.h"
#include "sound/dsbuffer.h"
#include "sound/dsound.h"

namespace {

// An instance that is told to load while its dialog is open opens another one on top. Each costs stack.
constexpr int kMaxDialogs = 4;
int g_nDialogs = 0;

BOOL AskFile(HWND hWnd, char* szFile) {
    ++g_nDialogs;
    const BOOL bChosen = AskChartFile(hWnd, g_hInstance, szFile);
    --g_nDialogs;
    return bChosen;
}

void FreeSlots() {
    for (CDSBuffer*& pSound : g_pDSound->m_pSlot) {
        if (!pSound) continue;
        pSound->Stop();
        delete pSound;
        pSound = nullptr;
    }
    for (int i = 0; i < DDRAW_SLOTS; ++i) g_pDDraw->FreeDib(i);
}

// No further frame runs: the quit is processed before the next one.
void FailAndQuit(HWND hWnd, const char* pszText, const char* pszCaption) {
    MessageBoxA(hWnd, pszText, pszCaption, MB_ICONEXCLAMATION);
    PostQuitMessage(0);
}

bool LoadChart(HWND hWnd, const char* szFile) {
    g_pBMS = new (std::nothrow) CBMS(g_pDDraw, g_pDSound);
    if (!g_pBMS) {
        FailAndQuit(hWnd, "OutOfMemoryError", "Error!");
        return false;
    }
    if (!g_pBMS->Load(szFile, 0)) {
        FailAndQuit(hWnd, szFile, "FileLoadError!");
        return false;
    }
    if (g_pBMS->Compile()) {
        FailAndQuit(hWnd, szFile, "FileCompileError!");
        return false;
    }
    return true;
}

void ReplaceChart(HWND hWnd, const char* szFile) {
    ShowLoadingTitle();
    FreeSlots();
    ClearLayers();
    FreeChart();
    if (!LoadChart(hWnd, szFile)) return;
    InitPlayLists();
    SeekMeasure(g_nStartMeasure, &g_dwSeekTime);
    g_pDSound->Compact();
    g_bPlaying = 1;
    g_dwStartTime = timeGetTime();
    g_dwPauseTime = 0;
    g_bPaused = 0;
    ShowChartTitle();
}

}  // namespace

void ReloadChart(HWND hWnd) {
    if (!HasChart() || g_nDialogs == kMaxDialogs) return;
    if (g_bPlaying && !g_bPaused && !g_dwPauseTime) PauseChart(0);
    char szFile[FILE_NAME_SIZE] = "";
    if (!AskFile(hWnd, szFile)) {
        if (!g_bPlaying && !g_bPaused && g_dwPauseTime) ResumeChart(0);
        return;
    }
    StripQuotes(szFile);
    // Commands were served while the dialog was open: another load may have failed, or the window may be
    // closed.
    if (HasChart()) ReplaceChart(hWnd, szFile);
}
