// The program's pictures, drawn in code: the sprite atlas, the skin and the icon.
#include <initializer_list>

#include "platform/resources.h"
#include "playback/layout.h"

namespace {

constexpr uint32_t kBlack = 0x000000, kDark = 0x2D2D2D, kGrey = 0x808080, kWhite = 0xFFFFFF,
                   kGreen = 0x00FF00;
constexpr uint32_t kMagenta = 0xFF00FF, kBlue = 0x0000FF, kRed = 0xFF0000, kYellow = 0xFFFF00;

struct Canvas {
    uint32_t* pPixels;
    int nWidth;

    void Set(int x, int y, uint32_t nColor) const { pPixels[y * nWidth + x] = nColor; }
    void Fill(const RECT& r, uint32_t nColor) const {
        for (int y = r.top; y < r.bottom; ++y)
            for (int x = r.left; x < r.right; ++x) Set(x, y, nColor);
    }
    void Frame(const RECT& r, uint32_t nColor) const {
        Fill({r.left, r.top, r.right, r.top + 1}, nColor);
        Fill({r.left, r.bottom - 1, r.right, r.bottom}, nColor);
        Fill({r.left, r.top, r.left + 1, r.bottom}, nColor);
        Fill({r.right - 1, r.top, r.right, r.bottom}, nColor);
    }
};

RECT Grow(const RECT& r, int n) {
    return {r.left - n, r.top - n, r.right + n, r.bottom + n};
}

// --- the atlas ---

// Characters are 4 by 7 pixels at offset 1, 1 in their cell: one hexadecimal digit per row, highest bit left.
constexpr int kGlyphRows = 7, kGlyphColumns = 4;
struct Character {
    const RECT* pCell;
    uint32_t nRows;
};
constexpr Character kCharacters[] = {
    {&SPRITE_DIGIT[0], 0x6999996}, {&SPRITE_DIGIT[1], 0x2622222}, {&SPRITE_DIGIT[2], 0x691248F},
    {&SPRITE_DIGIT[3], 0x6912196}, {&SPRITE_DIGIT[4], 0x266AF22}, {&SPRITE_DIGIT[5], 0xF8E9196},
    {&SPRITE_DIGIT[6], 0x698E996}, {&SPRITE_DIGIT[7], 0xF122444}, {&SPRITE_DIGIT[8], 0x6996996},
    {&SPRITE_DIGIT[9], 0x6997196}, {&SPRITE_COLON, 0x0400040},    {&SPRITE_SLASH, 0x1224488},
    {&SPRITE_POINT, 0x0000020},
};

struct Note {
    const RECT* pCell;
    uint32_t nColor;
};
constexpr Note kNotes[] = {
    {&SPRITE_NOTE_WHITE, kWhite},
    {&SPRITE_NOTE_BLUE, kBlue},
    {&SPRITE_NOTE_RED, kRed},
    {&SPRITE_NOTE_YELLOW, kYellow},
};

void DrawCharacter(const Canvas& canvas, const Character& character) {
    const RECT& cell = *character.pCell;
    canvas.Fill(cell, kBlack);
    for (int y = 0; y < kGlyphRows; ++y) {
        const uint32_t nRow = character.nRows >> (4 * (kGlyphRows - 1 - y));
        for (int x = 0; x < kGlyphColumns; ++x)
            if (nRow >> (kGlyphColumns - 1 - x) & 1) canvas.Set(cell.left + 1 + x, cell.top + 1 + y, kWhite);
    }
}

// --- the labels of the skin ---

constexpr int kLabelRows = 8;
struct Letter {
    char cLetter;
    int nWidth;
    const char* aszRow[kLabelRows];
};
constexpr Letter kLetters[] = {
    {'B', 5, {"####.", "#...#", "#...#", "####.", "#...#", "#...#", "#...#", "####."}},
    {'F', 5, {"#####", "#....", "#....", "####.", "#....", "#....", "#....", "#...."}},
    {'M', 7, {"#.....#", "##...##", "#.#.#.#", "#..#..#", "#..#..#", "#.....#", "#.....#", "#.....#"}},
    {'P', 5, {"####.", "#...#", "#...#", "#...#", "####.", "#....", "#....", "#...."}},
    {'S', 5, {".###.", "#...#", "#....", ".###.", "....#", "....#", "#...#", ".###."}},
    {'T', 5, {"#####", "..#..", "..#..", "..#..", "..#..", "..#..", "..#..", "..#.."}},
    {'a', 5, {".....", ".....", ".###.", "....#", ".####", "#...#", "#...#", ".####"}},
    {'e', 5, {".....", ".....", ".###.", "#...#", "#####", "#....", "#...#", ".###."}},
    {'i', 1, {"#", ".", "#", "#", "#", "#", "#", "#"}},
    {'m', 7, {".......", ".......", "######.", "#..#..#", "#..#..#", "#..#..#", "#..#..#", "#..#..#"}},
    {'r', 3, {"...", "...", "#.#", "##.", "#..", "#..", "#..", "#.."}},
};

void DrawLabel(const Canvas& canvas, int x, int y, const char* pszText) {
    for (; *pszText; ++pszText) {
        for (const Letter& letter : kLetters) {
            if (letter.cLetter != *pszText) continue;
            for (int nRow = 0; nRow < kLabelRows; ++nRow)
                for (int nColumn = 0; nColumn < letter.nWidth; ++nColumn)
                    if (letter.aszRow[nRow][nColumn] == '#') canvas.Set(x + nColumn, y + nRow, kWhite);
            x += letter.nWidth + 1;
        }
    }
}

constexpr int kBandTop = 265, kBandBottom = 268;  // rows of the green lines

void DrawLanes(const Canvas& canvas, std::initializer_list<int> borders,
               std::initializer_list<int> darkLanes) {
    constexpr int kLaneWidth = 7;  // excluding the borders
    for (int x : darkLanes) {
        canvas.Fill({x, 0, x + kLaneWidth, kBandTop}, kDark);
        canvas.Fill({x, kBandBottom + 1, x + kLaneWidth, SCREEN_HEIGHT}, kDark);
    }
    for (int x : borders) canvas.Fill({x, 0, x + 1, SCREEN_HEIGHT}, kGrey);
}

// --- the icon ---

constexpr uint32_t kOpaque = 0xFF000000;

void DrawIconNote(const Canvas& canvas, int x, int y, uint32_t nColor) {
    canvas.Fill({x, y, x + 9, y + 5}, kOpaque | nColor);
    canvas.Frame({x, y, x + 9, y + 5}, kOpaque | kGrey);
}

constexpr BitmapResource kBitmaps[] = {
    {BITMAP_SPRITES, SPRITES_WIDTH, SPRITES_HEIGHT, DrawSpriteAtlas},
    {BITMAP_SKIN, SCREEN_WIDTH, SCREEN_HEIGHT, DrawSkin},
};
constexpr BitmapResource kIcons[] = {{ICON_MAIN, ICON_SIZE, ICON_SIZE, DrawIcon}};
constexpr ModuleResources kModule = {kBitmaps, 2, kIcons, 1};

}  // namespace

void DrawSpriteAtlas(uint32_t* pPixels) {
    const Canvas canvas = {pPixels, SPRITES_WIDTH};
    canvas.Fill({0, 0, SPRITES_WIDTH, SPRITES_HEIGHT}, kMagenta);
    for (const Character& character : kCharacters) canvas.Frame(Grow(*character.pCell, 1), kGreen);
    for (const Note& note : kNotes) canvas.Frame(Grow(*note.pCell, 1), kGreen);
    canvas.Frame(Grow(SPRITE_BAR, 1), kGreen);

    for (const Character& character : kCharacters) DrawCharacter(canvas, character);
    for (const Note& note : kNotes) {
        canvas.Fill(*note.pCell, note.nColor);
        canvas.Frame(*note.pCell, kGrey);
    }
    canvas.Fill(SPRITE_BAR, kBlack);
    canvas.Fill({SPRITE_BAR.left, SPRITE_BAR.bottom - 1, SPRITE_BAR.right, SPRITE_BAR.bottom}, kWhite);
}

void DrawSkin(uint32_t* pPixels) {
    const Canvas canvas = {pPixels, SCREEN_WIDTH};
    canvas.Fill({0, 0, SCREEN_WIDTH, SCREEN_HEIGHT}, kBlack);
    DrawLanes(canvas, {20, 28, 36, 43, 51, 58, 66, 73, 81}, {29, 44, 59, 74});
    DrawLanes(canvas, {114, 122, 129, 137, 144, 152, 159, 167, 175}, {115, 130, 145, 160});
    canvas.Fill({20, kBandTop, 176, kBandTop + 1}, kGreen);
    canvas.Fill({20, kBandBottom, 176, kBandBottom + 1}, kGreen);
    canvas.Frame(Grow({LAYER_X, LAYER_Y, LAYER_X + LAYER_SIZE, LAYER_Y + LAYER_SIZE}, 1), kWhite);
    DrawLabel(canvas, 194, 259, "Time");
    DrawLabel(canvas, 265, 259, "BPM");
    DrawLabel(canvas, 200, 269, "Bar");
    DrawLabel(canvas, 415, 270, "FPS");
}

// Four lanes with falling notes above the green band, on a dark plate with cut corners.
void DrawIcon(uint32_t* pPixels) {
    const Canvas canvas = {pPixels, ICON_SIZE};
    canvas.Fill({0, 0, ICON_SIZE, ICON_SIZE}, 0);
    constexpr int kCorner = 4;
    for (int y = 0; y < ICON_SIZE; ++y) {
        const int nEdge = y < ICON_SIZE - 1 - y ? y : ICON_SIZE - 1 - y;
        const int nCut = nEdge < kCorner ? kCorner - nEdge : 0;
        canvas.Fill({nCut, y, ICON_SIZE - nCut, y + 1}, kOpaque | 0x101828);
    }
    constexpr int kLeft = 6, kLane = 9, kTop = 4, kBottom = 44, kBand = 37;
    for (int i = 0; i <= 4; ++i)
        canvas.Fill({kLeft + i * kLane, kTop, kLeft + i * kLane + 1, kBottom}, kOpaque | kGrey);
    for (int i = 0; i < 4; i += 2)
        canvas.Fill({kLeft + i * kLane + 1, kTop, kLeft + (i + 1) * kLane, kBottom}, kOpaque | kDark);
    canvas.Fill({kLeft, kBand, kLeft + 4 * kLane + 1, kBand + 2}, kOpaque | kGreen);
    DrawIconNote(canvas, kLeft, 8, kRed);
    DrawIconNote(canvas, kLeft + kLane, 24, kWhite);
    DrawIconNote(canvas, kLeft + 2 * kLane, 16, kBlue);
    DrawIconNote(canvas, kLeft + 3 * kLane, 30, kYellow);
}

HINSTANCE GetProgramModule() {
    return &kModule;
}
