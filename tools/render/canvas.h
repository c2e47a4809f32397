// A picture drawn with the player's own sprites.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/wintypes.h"

namespace render {

// Pixels are 0x00RRGGBB. What lies outside is left out.
class Canvas {
public:
    Canvas(int width, int height);
    void Fill(int x, int y, int width, int height, uint32_t color);
    void Sprite(int x, int y, const RECT& sprite);  // of the atlas
    void Skin(int x, int y, int height, int left,
              int right);                              // the empty lanes between these columns of the skin
    void Text(int x, int y, const std::string& text);  // digits, `:`, `/`, `.` and blanks
    static uint32_t ColorOf(const RECT& sprite);       // of its middle
    int width() const { return width_; }
    int height() const { return height_; }
    const std::vector<uint32_t>& pixels() const { return pixels_; }

private:
    void Copy(int x, int y, const uint32_t* from, int stride, int width, int height, int step);

    int width_, height_;
    std::vector<uint32_t> pixels_;
};

}  // namespace render
