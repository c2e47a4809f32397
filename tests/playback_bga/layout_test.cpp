// The two bitmaps and the tables, against the screen's description written down once more as data.
#include "playback/layout.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "platform/graphics/gdi.h"
#include "platform/graphics/gdi_object.h"

namespace {

constexpr uint32_t kBlack = 0, kWhite = 0xFFFFFF, kGrey = 0x808080, kGreen = 0x00FF00, kDark = 0x2D2D2D;
constexpr uint32_t kAnything = 0xFFFFFFFF;  // not compared

// A picture to compare with, painted rectangle over rectangle.
struct Canvas {
    Canvas(int nAcross, int nDown, uint32_t nColor)
        : nWidth(nAcross), pixels(static_cast<size_t>(nAcross * nDown), nColor) {}
    uint32_t& At(int x, int y) { return pixels[static_cast<size_t>(y * nWidth + x)]; }
    void Fill(const RECT& r, uint32_t nColor) {
        for (int y = r.top; y < r.bottom; ++y)
            for (int x = r.left; x < r.right; ++x) At(x, y) = nColor;
    }
    int nWidth;
    std::vector<uint32_t> pixels;
};

Canvas Bitmap(int nId) {
    const HBITMAP hBitmap = LoadBitmapA(GetProgramModule(), nId);
    Canvas shown(hBitmap->nWidth, hBitmap->nHeight, kBlack);
    std::copy_n(&hBitmap->pixels[0], shown.pixels.size(), shown.pixels.begin());
    DeleteObject(hBitmap);
    return shown;
}

void ExpectBitmap(int nId, const Canvas& expected) {
    const Canvas shown = Bitmap(nId);
    ASSERT_EQ(shown.nWidth, expected.nWidth);
    ASSERT_EQ(shown.pixels.size(), expected.pixels.size());
    for (size_t i = 0; i < shown.pixels.size(); ++i) {
        const size_t nWidth = static_cast<size_t>(shown.nWidth);
        if (expected.pixels[i] == kAnything) continue;
        ASSERT_EQ(shown.pixels[i], expected.pixels[i]) << i % nWidth << " " << i / nWidth;
    }
}

bool Same(const RECT& a, const RECT& b) {
    return a.left == b.left && a.top == b.top && a.right == b.right && a.bottom == b.bottom;
}

RECT Grown(const RECT& r, int n) {
    return {r.left - n, r.top - n, r.right + n, r.bottom + n};
}

struct Glyph {
    const char* pszName;
    const RECT* pSprite;
    RECT place;
    const char* pszRows;  // seven hexadecimal digits, the highest bit to the left
};
const Glyph kGlyphs[] = {
    {"0", &SPRITE_DIGIT[0], {1, 1, 7, 10}, "6 9 9 9 9 9 6"},
    {"1", &SPRITE_DIGIT[1], {8, 1, 14, 10}, "2 6 2 2 2 2 2"},
    {"2", &SPRITE_DIGIT[2], {15, 1, 21, 10}, "6 9 1 2 4 8 F"},
    {"3", &SPRITE_DIGIT[3], {22, 1, 28, 10}, "6 9 1 2 1 9 6"},
    {"4", &SPRITE_DIGIT[4], {29, 1, 35, 10}, "2 6 6 A F 2 2"},
    {"5", &SPRITE_DIGIT[5], {1, 11, 7, 20}, "F 8 E 9 1 9 6"},
    {"6", &SPRITE_DIGIT[6], {8, 11, 14, 20}, "6 9 8 E 9 9 6"},
    {"7", &SPRITE_DIGIT[7], {15, 11, 21, 20}, "F 1 2 2 4 4 4"},
    {"8", &SPRITE_DIGIT[8], {22, 11, 28, 20}, "6 9 9 6 9 9 6"},
    {"9", &SPRITE_DIGIT[9], {29, 11, 35, 20}, "6 9 9 7 1 9 6"},
    {"colon", &SPRITE_COLON, {36, 11, 42, 20}, "0 4 0 0 0 4 0"},
    {"slash", &SPRITE_SLASH, {43, 1, 49, 10}, "1 2 2 4 4 8 8"},
    {"point", &SPRITE_POINT, {36, 1, 42, 10}, "0 0 0 0 0 2 0"},
};

struct Mark {
    const char* pszName;
    const RECT* pSprite;
    RECT place;
    uint32_t nInside;
};
const Mark kMarks[] = {
    {"white", &SPRITE_NOTE_WHITE, {1, 26, 10, 30}, 0xFFFFFF},
    {"blue", &SPRITE_NOTE_BLUE, {1, 36, 9, 40}, 0x0000FF},
    {"red", &SPRITE_NOTE_RED, {1, 31, 10, 35}, 0xFF0000},
    {"yellow", &SPRITE_NOTE_YELLOW, {11, 26, 20, 30}, 0xFFFF00},
};

constexpr RECT kBar = {1, 21, 63, 25};

TEST(Layout, Sprites) {
    Canvas atlas(64, 48, 0xFF00FF);
    // A green line around each sprite, and nothing between.
    atlas.Fill(Grown(kBar, 1), kGreen);
    for (const Glyph& glyph : kGlyphs) atlas.Fill(Grown(glyph.place, 1), kGreen);
    for (const Mark& mark : kMarks) atlas.Fill(Grown(mark.place, 1), kGreen);
    for (const Glyph& glyph : kGlyphs) {
        EXPECT_TRUE(Same(*glyph.pSprite, glyph.place)) << glyph.pszName;
        atlas.Fill(glyph.place, kBlack);
        for (int i = 0; i < 7 * 4; ++i) {
            const int nRow = std::stoi(std::string(1, glyph.pszRows[i / 4 * 2]), nullptr, 16);
            if (nRow >> (3 - i % 4) & 1)
                atlas.At(glyph.place.left + 1 + i % 4, glyph.place.top + 1 + i / 4) = kWhite;
        }
    }
    for (const Mark& mark : kMarks) {
        EXPECT_TRUE(Same(*mark.pSprite, mark.place)) << mark.pszName;
        atlas.Fill(mark.place, kGrey);
        atlas.Fill(Grown(mark.place, -1), mark.nInside);
    }
    EXPECT_TRUE(Same(SPRITE_BAR, kBar));
    atlas.Fill(kBar, kBlack);
    atlas.Fill({1, 24, 63, 25}, kWhite);
    ExpectBitmap(BITMAP_SPRITES, atlas);
}

const RECT kLabels[] = {
    {194, 259, 215, 267}, {265, 259, 284, 267}, {200, 269, 215, 277}, {415, 270, 432, 278}};

TEST(Layout, Skin) {
    Canvas skin(452, 280, kBlack);
    skin.Fill({194, 0, 452, 258}, kWhite);
    skin.Fill({195, 1, 451, 257}, kBlack);
    for (int x : {29, 44, 59, 74, 115, 130, 145, 160}) {
        skin.Fill({x, 0, x + 7, 265}, kDark);
        skin.Fill({x, 269, x + 7, 280}, kDark);
    }
    for (int x : {20, 28, 36, 43, 51, 58, 66, 73, 81, 114, 122, 129, 137, 144, 152, 159, 167, 175})
        skin.Fill({x, 0, x + 1, 280}, kGrey);
    for (int y : {265, 268}) skin.Fill({20, y, 176, y + 1}, kGreen);
    for (const RECT& label : kLabels) skin.Fill(label, kAnything);
    ExpectBitmap(BITMAP_SKIN, skin);
}

TEST(Layout, LabelsFillTheirBoxes) {
    Canvas skin = Bitmap(BITMAP_SKIN);
    for (const RECT& box : kLabels) {
        RECT found = {9999, 9999, -1, -1};
        for (int y = box.top; y < box.bottom; ++y) {
            for (int x = box.left; x < box.right; ++x) {
                if (skin.At(x, y) == kBlack) continue;
                EXPECT_EQ(skin.At(x, y), kWhite);
                found = {std::min(found.left, x), std::min(found.top, y), std::max(found.right, x + 1),
                         std::max(found.bottom, y + 1)};
            }
        }
        EXPECT_TRUE(Same(found, box)) << box.left;
    }
}

TEST(Layout, OtherChannelsHaveNoLane) {
    for (int nChannel : {0, 1, 4, 0x10, 0x1A, 0x20, 0x2A, 0x31, 0x39, 0x41, -1, INT32_MIN, INT32_MAX})
        EXPECT_EQ(GetLane(nChannel), nullptr) << nChannel;
}

TEST(Layout, TheIconHasTransparentCornersAndAPicture) {
    const ModuleResources& module = *GetProgramModule();
    ASSERT_EQ(module.nIcons, 1);
    EXPECT_EQ(module.pIcons[0].nId, 103);
    std::vector<uint32_t> pixels(48 * 48, 0x12345678);
    ASSERT_EQ(module.pIcons[0].nWidth * module.pIcons[0].nHeight, 48 * 48);
    module.pIcons[0].pfnDraw(pixels.data());
    EXPECT_EQ(pixels[0], 0u);
    EXPECT_EQ(pixels.back(), 0u);
    const std::set<uint32_t> colours(pixels.begin(), pixels.end());
    EXPECT_GE(colours.size(), 7u);
    EXPECT_EQ(colours.count(0x12345678), 0u);
    for (uint32_t nPixel : pixels) EXPECT_TRUE(nPixel >> 24 == 0xFF || nPixel == 0);
}

}  // namespace
