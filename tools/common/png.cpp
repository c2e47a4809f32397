#include "common/png.h"

#include <png.h>

namespace tools {

std::string EncodePng(const std::vector<uint32_t>& pixels, int width, int height) {
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(width);
    image.height = static_cast<png_uint_32>(height);
    image.format = PNG_FORMAT_RGB;
    std::vector<uint8_t> rgb;
    rgb.reserve(pixels.size() * 3);
    for (uint32_t pixel : pixels) {
        for (int shift : {16, 8, 0}) rgb.push_back(static_cast<uint8_t>(pixel >> shift));
    }
    png_alloc_size_t bytes = PNG_IMAGE_PNG_SIZE_MAX(image);
    std::string png(bytes, '\0');
    if (!png_image_write_to_memory(&image, png.data(), &bytes, 0, rgb.data(), 0, nullptr)) return {};
    png.resize(bytes);
    return png;
}

}  // namespace tools
