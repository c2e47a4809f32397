// The two bitmaps and the tables, against the screen's description written down once more as data.
#include "playback/layout.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "platform/gdi.h"
#include "platform/gdi_object.h"

namespace {

constexpr uint32_t kBlack = 0, kWhite = 0xFFFFFF, kGrey = 0x808080, kGreen = 0x00FF00, kDark = 0x2D2D2D;

class Bitmap {
public:
    explicit Bitmap(int nId) : m_hBitmap(LoadBitmapA(GetProgramModule(), nId)) {}
    ~Bitmap() { DeleteObject(m_hBitmap); }
    int Width() const { return m_hBitmap->nWidth; }
    int Height() const { return m_hBitmap->nHeight; }
    uint32_t At(int x, int y) const { return m_hBitmap->pixels[static_cast<size_t>(y * Width() + x)]; }

private:
    HBITMAP m_hBitmap;
};

bool Same(const RECT& a, const RECT& b) {
    return a.left == b.left && a.top == b.top && a.right == b.right && a.bottom == b.bottom;
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

TEST(Layout, Characters) {
    const Bitmap atlas(BITMAP_SPRITES);
    ASSERT_EQ(atlas.Width(), 64);
    ASSERT_EQ(atlas.Height(), 48);
    for (const Glyph& glyph : kGlyphs) {
        EXPECT_TRUE(Same(*glyph.pSprite, glyph.place)) << glyph.pszName;
        for (int y = 0; y < 9; ++y) {
            for (int x = 0; x < 6; ++x) {
                uint32_t nExpected = kBlack;
                if (x >= 1 && x <= 4 && y >= 1 && y <= 7) {
                    const int nRow = std::stoi(std::string(1, glyph.pszRows[(y - 1) * 2]), nullptr, 16);
                    const int anBit[] = {8, 4, 2, 1};
                    if (nRow & anBit[x - 1]) nExpected = kWhite;
                }
                EXPECT_EQ(atlas.At(glyph.place.left + x, glyph.place.top + y), nExpected)
                    << glyph.pszName << ": " << x << " " << y;
            }
        }
    }
}

TEST(Layout, NotesAndBar) {
    const Bitmap atlas(BITMAP_SPRITES);
    for (const Mark& mark : kMarks) {
        EXPECT_TRUE(Same(*mark.pSprite, mark.place)) << mark.pszName;
        for (int y = mark.place.top; y < mark.place.bottom; ++y) {
            for (int x = mark.place.left; x < mark.place.right; ++x) {
                const bool bEdge = x == mark.place.left || x == mark.place.right - 1 || y == mark.place.top ||
                                   y == mark.place.bottom - 1;
                EXPECT_EQ(atlas.At(x, y), bEdge ? kGrey : mark.nInside)
                    << mark.pszName << ": " << x << " " << y;
            }
        }
    }
    EXPECT_TRUE(Same(SPRITE_BAR, {1, 21, 63, 25}));
    for (int x = 1; x < 63; ++x)
        for (int y = 21; y < 25; ++y) EXPECT_EQ(atlas.At(x, y), y == 24 ? kWhite : kBlack);
}

TEST(Layout, BetweenTheSpritesAreGridAndNothing) {
    const Bitmap atlas(BITMAP_SPRITES);
    std::vector<RECT> cells = {SPRITE_BAR};
    for (const Glyph& glyph : kGlyphs) cells.push_back(glyph.place);
    for (const Mark& mark : kMarks) cells.push_back(mark.place);
    const auto isNear = [&](int x, int y, int n) {
        return std::any_of(cells.begin(), cells.end(), [&](const RECT& r) {
            return x >= r.left - n && x < r.right + n && y >= r.top - n && y < r.bottom + n;
        });
    };
    for (int y = 0; y < 48; ++y) {
        for (int x = 0; x < 64; ++x) {
            if (isNear(x, y, 0)) continue;
            EXPECT_EQ(atlas.At(x, y), isNear(x, y, 1) ? kGreen : 0xFF00FFu) << x << " " << y;
        }
    }
}

const RECT kLabels[] = {
    {194, 259, 215, 267}, {265, 259, 284, 267}, {200, 269, 215, 277}, {415, 270, 432, 278}};

bool Within(int x, int y, const RECT& r) {
    return x >= r.left && x < r.right && y >= r.top && y < r.bottom;
}

// The skin without its labels.
uint32_t SkinAt(int x, int y) {
    const std::set<int> borders = {20,  28,  36,  43,  51,  58,  66,  73,  81,
                                   114, 122, 129, 137, 144, 152, 159, 167, 175};
    if ((y == 265 || y == 268) && x >= 20 && x <= 175) return kGreen;
    if (borders.count(x)) return kGrey;
    if (y < 265 || y > 268) {
        for (int nFirst : {29, 44, 59, 74, 115, 130, 145, 160})
            if (x >= nFirst && x <= nFirst + 6) return kDark;
    }
    if ((y == 0 || y == 257) && x >= 194 && x <= 451) return kWhite;
    if ((x == 194 || x == 451) && y <= 257) return kWhite;
    return kBlack;
}

TEST(Layout, Skin) {
    const Bitmap skin(BITMAP_SKIN);
    ASSERT_EQ(skin.Width(), 452);
    ASSERT_EQ(skin.Height(), 280);
    for (int y = 0; y < 280; ++y) {
        for (int x = 0; x < 452; ++x) {
            if (std::any_of(std::begin(kLabels), std::end(kLabels),
                            [&](const RECT& r) { return Within(x, y, r); }))
                continue;
            ASSERT_EQ(skin.At(x, y), SkinAt(x, y)) << x << " " << y;
        }
    }
}

TEST(Layout, LabelsFillTheirBoxes) {
    const Bitmap skin(BITMAP_SKIN);
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

TEST(Layout, Lanes) {
    const struct {
        int nChannel, x;
        const RECT* pSprite;
    } rows[] = {
        {0x11, 28, &SPRITE_NOTE_WHITE},  {0x12, 36, &SPRITE_NOTE_BLUE},   {0x13, 43, &SPRITE_NOTE_WHITE},
        {0x14, 51, &SPRITE_NOTE_BLUE},   {0x15, 58, &SPRITE_NOTE_WHITE},  {0x16, 20, &SPRITE_NOTE_RED},
        {0x17, 20, &SPRITE_NOTE_RED},    {0x18, 66, &SPRITE_NOTE_BLUE},   {0x19, 73, &SPRITE_NOTE_WHITE},
        {0x21, 114, &SPRITE_NOTE_WHITE}, {0x22, 122, &SPRITE_NOTE_BLUE},  {0x23, 129, &SPRITE_NOTE_WHITE},
        {0x24, 137, &SPRITE_NOTE_BLUE},  {0x25, 144, &SPRITE_NOTE_WHITE}, {0x26, 167, &SPRITE_NOTE_RED},
        {0x27, 167, &SPRITE_NOTE_RED},   {0x28, 152, &SPRITE_NOTE_BLUE},  {0x29, 159, &SPRITE_NOTE_WHITE},
    };
    for (const auto& row : rows) {
        const Lane* pLane = GetLane(row.nChannel);
        ASSERT_NE(pLane, nullptr) << std::hex << row.nChannel;
        EXPECT_EQ(pLane->nX, row.x) << std::hex << row.nChannel;
        EXPECT_EQ(pLane->pSprite, row.pSprite) << std::hex << row.nChannel;
        // A note spans from lane border to lane border.
        EXPECT_EQ(SkinAt(pLane->nX, 100), kGrey);
        EXPECT_EQ(SkinAt(pLane->nX + row.pSprite->right - row.pSprite->left - 1, 100), kGrey);
    }
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
