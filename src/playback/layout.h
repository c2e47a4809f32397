// The layout of the 452 by 280 screen and the two bitmaps from which it is drawn.
#pragma once

#include <cstdint>

#include "platform/wintypes.h"

constexpr int SCREEN_WIDTH = 452, SCREEN_HEIGHT = 280;

// Parts surfaces.
constexpr int PARTS_SPRITES = 0, PARTS_SKIN = 1, LAYER_BGA = 4, LAYER_POOR = 6, LAYER_OVERLAY = 7;
constexpr int SPRITES_WIDTH = 64, SPRITES_HEIGHT = 48;
// Picture layers. A layer's surface has the number of its channel.
constexpr int LAYERS[] = {LAYER_BGA, LAYER_POOR, LAYER_OVERLAY};
bool IsLayer(int32_t nChannel);
constexpr int LAYER_SIZE = 256;
constexpr int LAYER_X = 195, LAYER_Y = 1;

// Sprites in the atlas.
extern const RECT SPRITE_DIGIT[10];
extern const RECT SPRITE_COLON, SPRITE_SLASH, SPRITE_POINT;
extern const RECT SPRITE_NOTE_WHITE, SPRITE_NOTE_BLUE, SPRITE_NOTE_RED, SPRITE_NOTE_YELLOW, SPRITE_BAR;

struct Lane {
    int nX;
    const RECT* pSprite;
};
// The lane of a note channel, 0x11 to 0x19 and 0x21 to 0x29; null for any other.
const Lane* GetLane(int32_t nChannel);

constexpr int LINE_NOW = 265;      // the line of a record at its chart time
constexpr int LINE_LIMIT = 270;    // marks are drawn on lines 1 to 269
constexpr int NUMBER_LIMIT = 264;  // bar numbers on rows 1 to 263
constexpr int TEMPO_MARK_X = 180, BGM_MARK_X = 85, BGA_MARK_X = 97;
constexpr int BAR_LEFT_X = 20, BAR_RIGHT_X = 114, BAR_NUMBER_X = 1, BAR_NUMBER_UP = 6;
constexpr int CHAR_STEP = 6;
constexpr int TIME_X = 218, TIME_Y = 258;
constexpr int COUNTER_X = 218, COUNTER_Y = 269;
constexpr int TEMPO_X = 285, TEMPO_Y = 259, TEMPO_CHARS = 6;
constexpr int RATE_X = 433, RATE_Y = 270;

// Resource numbers and their drawing functions: pixels 0x00RRGGBB (icon: 0xAARRGGBB), top row first.
constexpr int BITMAP_SPRITES = 111, BITMAP_SKIN = 112, ICON_MAIN = 103;
constexpr int ICON_SIZE = 48;
void DrawSpriteAtlas(uint32_t* pPixels);
void DrawSkin(uint32_t* pPixels);
void DrawIcon(uint32_t* pPixels);

// The module handle for WinMain, which carries these resources.
HINSTANCE GetProgramModule();
