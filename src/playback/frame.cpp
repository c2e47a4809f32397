// One frame: reads the clock, computes the line of every measure, fires what is due and draws what is
// visible. Firing and scrolling share one walk per list: a record's line ends the walk, and its time decides
// when it fires.
#include <initializer_list>

#include "chart/charttime.h"
#include "display/ddraw.h"
#include "platform/timer.h"
#include "playback/draw.h"
#include "playback/layout.h"
#include "playback/playback.h"
#include "sound/dsbuffer.h"
#include "system/globals.h"

static int IsOnScreen(int32_t y) {
    return y >= 1 && y < LINE_LIMIT;
}

// Reads the clock and draws the skin. dSpeed: pixels per unit of measure length. Returns the chart time.
static int32_t BeginFrame(double dSpeed) {
    if (!g_bPaused) g_dwNowTime = timeGetTime();
    const int32_t nNow =
        static_cast<int32_t>(static_cast<uint32_t>(g_dwSeekTime) - g_dwStartTime + g_dwNowTime);
    DrawPart(0, 0, nullptr, PARTS_SKIN);
    g_dPixelsPerSec = (dSpeed * 1000.0) / (BMS_MEASURE_MS / g_dBPM);
    return nNow;
}

// Computes the line of the anchor and of its measure's bar, where the bar walk starts.
static void PlaceAnchor(int32_t nNow, double dSpeed) {
    const double dAhead = static_cast<double>(int64_t{g_pAnchor->nTime} - nNow);
    g_pAnchor->nChannel = ClampToInt(int64_t{LINE_NOW} - TruncToInt(dAhead * g_dPixelsPerSec * 0.001));
    g_nBarCursor = g_pAnchor->nMeasure;
    BmsEvent& bar = g_pBarList[g_nBarCursor];
    bar.nChannel =
        ClampToInt(int64_t{TruncToInt(dSpeed * bar.dValue * g_pAnchor->dPos)} + g_pAnchor->nChannel);
}

static void DrawBar(int32_t nBar, int32_t y) {
    if (IsOnScreen(y)) {
        DrawPartKey(BAR_LEFT_X, y, &SPRITE_BAR, PARTS_SPRITES);
        if (g_nPlayers > 1) DrawPartKey(BAR_RIGHT_X, y, &SPRITE_BAR, PARTS_SPRITES);
    }
    const int32_t nRow = y - BAR_NUMBER_UP;
    if (nRow >= 1 && nRow < NUMBER_LIMIT) DrawBarNumber(nBar, nRow);
}

// An anchor set by this walk takes effect in the next frame. Bars after the one that ends the walk keep their
// old lines.
static void WalkBars(int32_t nNow, double dSpeed) {
    int32_t i = g_nBarCursor;
    int32_t y = g_pBarList[i].nChannel;
    for (; i < g_nBarCount; ++i) {
        BmsEvent& bar = g_pBarList[i];
        bar.nChannel = y;
        if (y < 0) break;
        if (!bar.bDone) {
            DrawBar(i, y);
            if (nNow > bar.nTime) {  // strictly greater, unlike all other records
                bar.bDone = 1;
                g_nBarCursor = i;
                g_pAnchor = &bar;
            }
        }
        y = ClampToInt(int64_t{y} - TruncToInt(dSpeed * bar.dValue));
    }
}

// Walks one list from its cursor to the top of the screen. fnDraw(record, line) draws a mark. fnFire(record)
// fires the record and returns 0 for one that never fires. The cursor stays on the last fired record.
template <class Draw, class Fire>
static void WalkEvents(BmsEvent* pList, int32_t nCount, int32_t* pnCursor, int32_t nNow, double dSpeed,
                       Draw fnDraw, Fire fnFire) {
    for (int32_t i = *pnCursor; i < nCount; ++i) {
        BmsEvent& event = pList[i];
        const BmsEvent& bar = g_pBarList[event.nMeasure];
        const int32_t y = ClampToInt(int64_t{bar.nChannel} - TruncToInt(dSpeed * bar.dValue * event.dPos));
        if (y < 0) return;
        if (event.bDone) continue;
        if (IsOnScreen(y)) fnDraw(event, y);
        if (nNow >= event.nTime && fnFire(event)) {
            event.bDone = 1;
            *pnCursor = i;
        }
    }
}

static void DrawNote(const BmsEvent& event, int32_t y) {
    const Lane* pLane = GetLane(event.nChannel);
    if (pLane) DrawPart(pLane->nX, y, pLane->pSprite, PARTS_SPRITES);
}

static int FireTempo(BmsEvent& event) {
    g_dBPM = TempoAfter(g_dBPM, event.dValue);
    g_pAnchor = &event;
    return 1;
}

static int FireSound(const BmsEvent& event) {
    if (event.pObject) static_cast<CDSBuffer*>(event.pObject)->Play();
    return 1;
}

// Invisible channels beyond these neither sound nor end.
static int FireNote(const BmsEvent& event) {
    return event.nChannel >= 0x11 && event.nChannel <= 0x29 ? FireSound(event) : 0;
}

static int FirePicture(const BmsEvent& event) {
    const int32_t n =
        event.nChannel >= BGADEF_CHANNEL_BASE ? event.nChannel - BGADEF_CHANNEL_BASE : event.nChannel;
    if (!IsLayer(n)) return 0;
    if (g_pDDraw) FireBga(&event);
    return 1;
}

static void WalkLists(int32_t nNow, double dSpeed) {
    const auto drawMark = [](int nX, const RECT* pSprite) {
        return [=](const BmsEvent&, int32_t y) { DrawPart(nX, y, pSprite, PARTS_SPRITES); };
    };
    WalkEvents(g_pTempoList, g_nTempoCount, &g_nTempoCursor, nNow, dSpeed,
               drawMark(TEMPO_MARK_X, &SPRITE_NOTE_YELLOW), FireTempo);
    WalkEvents(g_pBgmList, g_nBgmCount, &g_nBgmCursor, nNow, dSpeed, drawMark(BGM_MARK_X, &SPRITE_NOTE_WHITE),
               FireSound);
    WalkEvents(g_pNoteList, g_nNoteCount, &g_nNoteCursor, nNow, dSpeed, DrawNote, FireNote);
    WalkEvents(g_pBgaList, g_nBgaCount, &g_nBgaCursor, nNow, dSpeed, drawMark(BGA_MARK_X, &SPRITE_NOTE_RED),
               FirePicture);
}

// After its last measure the chart returns to the start measure and stops; sounds ring out. The layers have
// already been drawn, so they turn black in the next frame.
static void EndChart(int32_t nNow) {
    const int32_t nEnd = TruncTime(g_pBMS->m_pMeasure[g_pBMS->m_nMeasure - 1].dStart);
    if (nNow <= nEnd) return;
    g_bPaused = 1;
    g_dwStartTime = g_dwNowTime;
    SeekMeasure(g_nStartMeasure, &g_dwSeekTime);
    if (!g_pDDraw) return;
    for (int nLayer : LAYERS) g_pDDraw->ClearParts(nLayer, 0);
}

void PlayFrame() {
    if (!g_pAnchor || !g_pBMS || !g_pBMS->m_pMeasure) return;  // no chart, or no memory for its lists
    const double dSpeed = static_cast<double>(g_fSpeed) * 64.0;
    const int32_t nNow = BeginFrame(dSpeed);
    PlaceAnchor(nNow, dSpeed);
    WalkBars(nNow, dSpeed);
    WalkLists(nNow, dSpeed);
    DrawPart(LAYER_X, LAYER_Y, nullptr, LAYER_BGA);
    DrawPartKey(LAYER_X, LAYER_Y, nullptr, LAYER_OVERLAY);
    DrawPlayTime(nNow);
    DrawBarCounter(g_nBarCursor, g_nBarCount);
    DrawTempo(g_dBPM);
    EndChart(nNow);
}
