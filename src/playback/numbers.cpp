#include <charconv>
#include <cstdio>

#include "playback/draw.h"

static void DrawDigit(int x, int y, int32_t nDigit) {
    DrawPart(x, y, &SPRITE_DIGIT[static_cast<uint32_t>(nDigit) % 10], PARTS_SPRITES);
}

void DrawBarNumber(int32_t nBar, int32_t nRow) {
    char szText[16];
    std::snprintf(szText, sizeof szText, "%3d", nBar);
    for (int k = 0; k < 3; ++k) {
        if (szText[k] < '0' || szText[k] > '9') continue;
        DrawPartKey(BAR_NUMBER_X + CHAR_STEP * k, nRow, &SPRITE_DIGIT[szText[k] - '0'], PARTS_SPRITES);
    }
}

void DrawPlayTime(int32_t nNow) {
    const int32_t nAll = nNow > 0 ? nNow / 1000 : 0;
    const int32_t nMin = nAll / 60, nSec = nAll % 60;
    if (nMin / 10 > 0) DrawDigit(TIME_X, TIME_Y, nMin / 10);
    DrawDigit(TIME_X + CHAR_STEP, TIME_Y, nMin);
    DrawPart(TIME_X + 2 * CHAR_STEP, TIME_Y, &SPRITE_COLON, PARTS_SPRITES);
    DrawDigit(TIME_X + 3 * CHAR_STEP, TIME_Y, nSec / 10);
    DrawDigit(TIME_X + 4 * CHAR_STEP, TIME_Y, nSec);
}

void DrawBarCounter(int32_t nCurrent, int32_t nTotal) {
    int x = COUNTER_X;
    const auto draw = [&x](int32_t nDigit) { DrawDigit(x, COUNTER_Y, nDigit); };
    // The current number is right-aligned in a field as wide as the total.
    if (nCurrent / 100 != 0) draw(nCurrent / 100);
    if (nTotal > 99) x += CHAR_STEP;
    if ((nCurrent / 10) % 10 != 0 || nCurrent > 9) draw(nCurrent / 10);
    if (nTotal > 9) x += CHAR_STEP;
    draw(nCurrent);
    x += CHAR_STEP;
    DrawPart(x, COUNTER_Y, &SPRITE_SLASH, PARTS_SPRITES);
    x += CHAR_STEP;
    if (nTotal / 100 != 0) draw(nTotal / 100);
    if (nTotal > 99) x += CHAR_STEP;
    if (nTotal > 9) {
        draw(nTotal / 10);
        x += CHAR_STEP;
    }
    draw(nTotal);
}

void DrawTempo(double dBPM) {
    char szText[400];  // the largest double has 309 digits before the point
    const auto [pEnd, nError] =
        std::to_chars(szText, szText + sizeof szText, dBPM, std::chars_format::fixed, 2);
    if (nError != std::errc()) return;
    int x = TEMPO_X;
    for (const char* p = szText; p < pEnd && p < szText + TEMPO_CHARS; ++p, x += CHAR_STEP) {
        if (*p >= '0' && *p <= '9') {
            DrawDigit(x, TEMPO_Y, *p - '0');
        } else if (*p == '.') {
            DrawPart(x, TEMPO_Y, &SPRITE_POINT, PARTS_SPRITES);
        }
    }
}
