#include <algorithm>

#include "host/desktop/native/x11.h"

namespace host::desktop::native {

namespace {

bool FitsDirectly() {
    const XVisualInfo* visual = fl_visual;
    return visual && visual->c_class == TrueColor && (visual->depth == 24 || visual->depth == 32) &&
           visual->red_mask == 0xFF0000 && visual->green_mask == 0xFF00 && visual->blue_mask == 0xFF;
}

// An image header for pixels that the caller keeps.
XImage ImageOver(const uint32_t* pixels, int width, int height) {
    XImage image = {};
    image.width = width, image.height = height;
    image.format = ZPixmap;
    image.data = reinterpret_cast<char*>(const_cast<uint32_t*>(pixels));
    const uint32_t one = 1;
    image.byte_order = *reinterpret_cast<const char*>(&one) ? LSBFirst : MSBFirst;
    image.bitmap_bit_order = image.byte_order;
    image.bitmap_unit = image.bitmap_pad = 32;
    image.depth = fl_visual->depth;
    image.bits_per_pixel = 32;
    image.bytes_per_line = width * 4;
    image.red_mask = fl_visual->red_mask;
    image.green_mask = fl_visual->green_mask;
    image.blue_mask = fl_visual->blue_mask;
    XInitImage(&image);
    return image;
}

void PutEnlarged(Window id, const Picture& picture, int x, int y, int width, int height) {
    static std::vector<uint32_t> rows;
    const int s = picture.scale;
    rows.resize(static_cast<size_t>(width) * s * height * s);
    for (int row = 0; row < height; ++row) {
        const uint32_t* from = &picture.pixels[static_cast<size_t>(y + row) * picture.width + x];
        uint32_t* to = &rows[static_cast<size_t>(row) * s * width * s];
        for (int column = 0; column < width; ++column) std::fill_n(to + column * s, s, from[column]);
        for (int line = 1; line < s; ++line) {
            std::copy_n(to, static_cast<size_t>(width) * s, to + static_cast<size_t>(line) * width * s);
        }
    }
    XImage image = ImageOver(rows.data(), width * s, height * s);
    XPutImage(fl_display, id, g_main.gc, &image, 0, 0, x * s, y * s, width * s, height * s);
}

}  // namespace

bool PutPicture(Fl_Window*, const Picture& picture, int x, int y, int width, int height) {
    if (g_main.destroyed) return true;
    if (!FitsDirectly() || !g_main.gc) return false;
    const Window id = g_main.id;
    if (picture.scale == 1) {
        XImage image = ImageOver(picture.pixels.data(), picture.width, picture.height);
        XPutImage(fl_display, id, g_main.gc, &image, x, y, x, y, width, height);
    } else {
        PutEnlarged(id, picture, x, y, width, height);
    }
    if (g_main.background) {
        // From now on exposed parts are redrawn by us, without a black flash first.
        XSetWindowBackgroundPixmap(fl_display, id, None);
        g_main.background = false;
    }
    XFlush(fl_display);
    return true;
}

}  // namespace host::desktop::native
