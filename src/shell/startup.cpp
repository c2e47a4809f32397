#include "shell/startup.h"

#include <new>

#include "chart/bms.h"
#include "display/ddraw.h"
#include "platform/graphics/gdi.h"
#include "platform/sound/output.h"
#include "platform/window/dialog.h"
#include "playback/layout.h"
#include "playback/playback.h"
#include "shell/shell.h"
#include "sound/dsound.h"
#include "system/diagnostics.h"

namespace {

constexpr int EXIT_FAILED = -1;
constexpr int32_t FIRST_SOUND_MS = 200;
constexpr DWORD OUTPUT_WAIT_MS = 150;
constexpr char WINDOW_TITLE[] = "Lumetra 0.04";

int FailWithBox(const char* pszText, const char* pszCaption) {
    MessageBoxA(g_hWnd, pszText, pszCaption, MB_ICONEXCLAMATION);
    return EXIT_FAILED;
}

int FailForMemory() {
    return FailWithBox("OutOfMemoryError", "Error!");
}

int StartSound() {
    g_pDSound = new (std::nothrow) CDSound;
    if (!g_pDSound) return FailForMemory();
    if (g_pDSound->Init(g_hWnd, 1)) return FailWithBox("DirectSoundInitError", "Error!");
    return START_PLAY;
}

void LoadSurface(int nBitmap, bool bLogged, int nParts, int nWidth, int nHeight) {
    const HBITMAP hBitmap = LoadBitmapA(g_hInstance, nBitmap);
    if (!hBitmap && bLogged) DebugLog("LoadBitmap Error\n");
    // A failed creation shows a box, which delivers messages; the window may be closed in there.
    g_pDDraw->CreateParts(nParts, nWidth, nHeight);
    if (g_pDDraw) g_pDDraw->LoadParts(hBitmap, nWidth, nHeight, nParts);
    DeleteObject(hBitmap);
}

void MakeLayer(int nParts) {
    if (g_pDDraw) g_pDDraw->CreateParts(nParts, LAYER_SIZE, LAYER_SIZE);
    if (g_pDDraw) g_pDDraw->ClearParts(nParts, 0);
}

int StartDisplay(int32_t nWindowX, int32_t nWindowY) {
    g_pDDraw = new (std::nothrow) CDDraw;
    if (!g_pDDraw) return FailForMemory();
    if (g_pDDraw->Init(g_hWnd, nWindowX, nWindowY, SCREEN_WIDTH, SCREEN_HEIGHT)) return EXIT_FAILED;
    LoadSurface(BITMAP_SPRITES, true, PARTS_SPRITES, SPRITES_WIDTH, SPRITES_HEIGHT);
    if (g_pDDraw) LoadSurface(BITMAP_SKIN, false, PARTS_SKIN, SCREEN_WIDTH, SCREEN_HEIGHT);
    for (int nLayer : LAYERS) MakeLayer(nLayer);
    return g_pDDraw ? START_PLAY : 0;
}

int StartChart(const char* szFile) {
    g_pBMS = new (std::nothrow) CBMS(g_pDDraw, g_pDSound);
    if (!g_pBMS) return FailForMemory();
    if (!g_pBMS->Load(szFile, 0)) return FailWithBox(szFile, "FileLoadError!");
    if (g_pBMS->Compile()) return FailWithBox(szFile, "CompileError!");
    RememberOpenedFile(szFile);
    FreePlayLists();
    InitPlayLists();
    g_pDSound->Compact();
    ShowChartTitle();
    SeekMeasure(g_nStartMeasure, &g_dwSeekTime);
    return START_PLAY;
}

bool IsSoundDue(const BmsEvent* pList, int32_t nCount, int32_t nUntil) {
    for (int32_t i = 0; i < nCount; ++i) {
        if (!pList[i].bDone && pList[i].pObject && pList[i].nTime <= nUntil) return true;
    }
    return false;
}

// The device is opened beside the start-up and may still be filling its buffer: without the wait the first
// beat would lose its attack. The picture stands at the start position meanwhile.
void AwaitFirstSound() {
    const int32_t nUntil = g_dwSeekTime + FIRST_SOUND_MS;
    if (!SoundOutputIsPending()) return;
    if (!IsSoundDue(g_pBgmList, g_nBgmCount, nUntil) && !IsSoundDue(g_pNoteList, g_nNoteCount, nUntil))
        return;
    g_bPaused = 1;
    g_dwNowTime = g_dwStartTime;
    PlayFrame();
    g_pDDraw->Present();
    g_bPaused = 0;
    WaitForSoundOutput(OUTPUT_WAIT_MS);
}

void StartClock() {
    g_TimeCaps = {};
    timeGetDevCaps(&g_TimeCaps, sizeof(g_TimeCaps));
    timeBeginPeriod(g_TimeCaps.wPeriodMin);
    if (g_bPlaying) {
        g_dwPauseTime = 0;
        g_bPaused = 0;
        AwaitFirstSound();
    }
    g_dwNowTime = g_dwStartTime = timeGetTime();
}

}  // namespace

int StartUp(const char* szFile, int32_t nWindowX, int32_t nWindowY) {
    if (!CreateMainWindow(g_hInstance, ICON_MAIN, WINDOW_TITLE, WINDOW_CLASS, nWindowX, nWindowY)) return 0;
    ShowLoadingTitle();
    int nResult = StartSound();
    if (nResult == START_PLAY) nResult = StartDisplay(nWindowX, nWindowY);
    if (nResult == START_PLAY) nResult = StartChart(szFile);
    if (nResult == START_PLAY) StartClock();
    return nResult;
}

void FreeChart() {
    FreePlayLists();
    delete g_pBMS;
    g_pBMS = nullptr;
}

void Shutdown() {
    FreeChart();
    delete g_pDSound;
    g_pDSound = nullptr;
    delete g_pDDraw;
    g_pDDraw = nullptr;
    if (g_TimeCaps.wPeriodMin || g_TimeCaps.wPeriodMax) {
        timeEndPeriod(g_TimeCaps.wPeriodMin);
        g_TimeCaps = {};
    }
}
