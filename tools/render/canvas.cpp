#include "render/canvas.h"

#include <algorithm>

#include "playback/layout.h"

namespace render {
namespace {

constexpr int kLaneRow = 100;  // of the skin: lanes and nothing else

const std::vector<uint32_t>& Atlas() {
    static const std::vector<uint32_t> atlas = [] {
        std::vector<uint32_t> pixels(SPRITES_WIDTH * SPRITES_HEIGHT);
        DrawSpriteAtlas(pixels.data());
        return pixels;
    }();
    return atlas;
}

const std::vector<uint32_t>& TheSkin() {
    static const std::vector<uint32_t> skin = [] {
        std::vector<uint32_t> pixels(SCREEN_WIDTH * SCREEN_HEIGHT);
        DrawSkin(pixels.data());
        return pixels;
    }();
    return skin;
}

const RECT* SpriteOf(char c) {
    if (c >= '0' && c <= '9') return &SPRITE_DIGIT[c - '0'];
    return c == ':' ? &SPRITE_COLON : c == '/' ? &SPRITE_SLASH : c == '.' ? &SPRITE_POINT : nullptr;
}

}  // namespace

Canvas::Canvas(int width, int height)
    : width_(width), height_(height), pixels_(static_cast<size_t>(width) * static_cast<size_t>(height)) {}

void Canvas::Fill(int x, int y, int width, int height, uint32_t color) {
    Copy(x, y, &color, 0, width, height, 0);
}

// step: from one source pixel to the next in a row; 0 repeats the first.
void Canvas::Copy(int x, int y, const uint32_t* from, int stride, int width, int height, int step) {
    for (int row = std::max(0, -y); row < height && y + row < height_; ++row) {
        uint32_t* to = pixels_.data() + static_cast<ptrdiff_t>(y + row) * width_;
        for (int i = std::max(0, -x); i < width && x + i < width_; ++i)
            to[x + i] = from[static_cast<ptrdiff_t>(row) * stride + static_cast<ptrdiff_t>(i) * step];
    }
}

void Canvas::Sprite(int x, int y, const RECT& sprite) {
    Copy(x, y, Atlas().data() + sprite.top * SPRITES_WIDTH + sprite.left, SPRITES_WIDTH,
         sprite.right - sprite.left, sprite.bottom - sprite.top, 1);
}

void Canvas::Skin(int x, int y, int height, int left, int right) {
    Copy(x, y, TheSkin().data() + kLaneRow * SCREEN_WIDTH + left, 0, right - left, height, 1);
}

void Canvas::Text(int x, int y, const std::string& text) {
    for (const char c : text) {
        const RECT* sprite = SpriteOf(c);
        if (sprite) Sprite(x, y, *sprite);
        x += CHAR_STEP;
    }
}

uint32_t Canvas::ColorOf(const RECT& sprite) {
    return Atlas()[static_cast<size_t>((sprite.top + sprite.bottom) / 2 * SPRITES_WIDTH +
                                       (sprite.left + sprite.right) / 2)];
}

}  // namespace render
