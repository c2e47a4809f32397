// The five playback lists: flat copies of a compiled chart.
#include "playback/playback.h"
#include "system/globals.h"

BmsEvent* g_pBgmList;
int32_t g_nBgmCount, g_nBgmCursor;
BmsEvent* g_pBgaList;
int32_t g_nBgaCount, g_nBgaCursor;
BmsEvent* g_pTempoList;
int32_t g_nTempoCount, g_nTempoCursor;
BmsEvent* g_pNoteList;
int32_t g_nNoteCount, g_nNoteCursor;
BmsEvent* g_pBarList;
int32_t g_nBarCount, g_nBarCursor;

BmsEvent* g_pAnchor;
double g_dBPM;
int32_t g_nPlayers;
double g_dPixelsPerSec;

uint32_t g_dwStartTime;
uint32_t g_dwNowTime;
int32_t g_dwSeekTime;

static void ComputePixelsPerSec() {
    g_dPixelsPerSec = static_cast<double>(g_fSpeed) * 64000.0 / (BMS_MEASURE_MS / g_dBPM);
}

void InitPlayLists() {
    if (!g_pBMS) return;
    g_pBMS->GetBgmList(&g_pBgmList, &g_nBgmCount);
    g_pBMS->GetBgaList(&g_pBgaList, &g_nBgaCount);
    g_pBMS->GetTempoList(&g_pTempoList, &g_nTempoCount);
    g_pBMS->GetNoteList(&g_pNoteList, &g_nNoteCount);
    g_pBMS->GetBarList(&g_pBarList, &g_nBarCount);
    g_nPlayers = g_pBMS->m_nPlayer;
    g_dBPM = TempoAfter(BMS_DEFAULT_BPM, g_pBMS->m_dBPM);
    ComputePixelsPerSec();
    g_pAnchor = g_pBarList;
}

void FreePlayLists() {
    CBMS::FreeList(&g_pBgmList, &g_nBgmCount);
    CBMS::FreeList(&g_pBgaList, &g_nBgaCount);
    CBMS::FreeList(&g_pTempoList, &g_nTempoCount);
    CBMS::FreeList(&g_pNoteList, &g_nNoteCount);
    CBMS::FreeList(&g_pBarList, &g_nBarCount);
    g_nBgmCursor = g_nBgaCursor = g_nTempoCursor = g_nNoteCursor = g_nBarCursor = 0;
    g_pAnchor = nullptr;
}

// Marks records before the target measure as done and all others as not done. Returns the cursor: the first
// record not done.
static int32_t SeekList(BmsEvent* pList, int32_t nCount, int32_t nTarget) {
    int32_t nCursor = nCount;
    for (int32_t i = 0; i < nCount; ++i) {
        pList[i].bDone = pList[i].nMeasure < nTarget;
        if (!pList[i].bDone && i < nCursor) nCursor = i;
    }
    return nCursor;
}

int32_t SeekMeasure(int32_t nMeasure, int32_t* pnTime) {
    const int32_t nTarget = nMeasure < 0 ? 0 : nMeasure;
    if (nTarget >= g_nBarCount) return 1;
    g_pAnchor = &g_pBarList[nTarget];
    g_dBPM = TempoAfter(BMS_DEFAULT_BPM, g_pBMS->m_dBPM);
    g_nTempoCursor = SeekList(g_pTempoList, g_nTempoCount, nTarget);
    for (int32_t i = 0; i < g_nTempoCount; ++i) {
        if (!g_pTempoList[i].bDone) continue;
        g_dBPM = TempoAfter(g_dBPM, g_pTempoList[i].dValue);
        g_pAnchor = &g_pTempoList[i];
    }
    ComputePixelsPerSec();
    g_nBgmCursor = SeekList(g_pBgmList, g_nBgmCount, nTarget);
    g_nBarCursor = SeekList(g_pBarList, g_nBarCount, nTarget);
    for (int32_t i = 0; i < g_nBarCount; ++i) g_pBarList[i].nChannel = 0;
    g_nNoteCursor = SeekList(g_pNoteList, g_nNoteCount, nTarget);
    g_nBgaCursor = SeekList(g_pBgaList, g_nBgaCount, nTarget);
    *pnTime = nMeasure < 0 ? 0 : g_pBarList[nTarget].nTime - 1;
    return 0;
}
