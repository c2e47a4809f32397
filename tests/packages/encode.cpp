#include "packages/encode.h"

#include <gif_lib.h>
#include <png.h>
#include <turbojpeg.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <stdexcept>

#include "support/tempfolder.h"

namespace test {
namespace {

// Each pixel's index among the colours in the order in which they come.
std::vector<uint32_t> Palette(const Image& image, std::vector<unsigned char>* indexes) {
    std::vector<uint32_t> palette;
    std::map<uint32_t, unsigned char> places;
    for (const uint32_t pixel : image.pixels) {
        const auto [it, added] = places.emplace(pixel, static_cast<unsigned char>(palette.size()));
        if (added) palette.push_back(pixel);
        indexes->push_back(it->second);
    }
    if (palette.size() > 256) throw std::runtime_error("too many colours");
    return palette;
}

// How the kind of PNG has its pixels: each byte of one is so many bits up in 0xAARRGGBB; a palette has none.
struct PngLayout {
    int color_type, bits;
    std::vector<int> shifts;
};

PngLayout Layout(PngKind kind) {
    switch (kind) {
        case PngKind::kGrey:
            return {PNG_COLOR_TYPE_GRAY, 8, {8}};
        case PngKind::kGreyAlpha:
            return {PNG_COLOR_TYPE_GRAY_ALPHA, 8, {8, 24}};
        case PngKind::kPalette:
        case PngKind::kPaletteAlpha:
            return {PNG_COLOR_TYPE_PALETTE, 8, {}};
        case PngKind::k16Bits:
            return {PNG_COLOR_TYPE_RGB, 16, {16, 16, 8, 8, 0, 0}};
        case PngKind::kRgba:
            return {PNG_COLOR_TYPE_RGBA, 8, {16, 8, 0, 24}};
        default:
            return {PNG_COLOR_TYPE_RGB, 8, {16, 8, 0}};
    }
}

}  // namespace

std::string Encode(const Sound& sound, int kind) {
    const TempFolder folder;
    SF_INFO info = {0, sound.rate, sound.channels, kind, 0, 0};
    SNDFILE* file = sf_open(folder.Path("sound").c_str(), SFM_WRITE, &info);
    if (!file) throw std::runtime_error(sf_strerror(nullptr));
    double quality = 1, compression = 0;
    if (kind == kOgg) sf_command(file, SFC_SET_VBR_ENCODING_QUALITY, &quality, sizeof quality);
    if (kind == kMp3) sf_command(file, SFC_SET_COMPRESSION_LEVEL, &compression, sizeof compression);
    // In pieces: one long write overflows the Vorbis encoder's stack.
    const size_t step = 4096 * static_cast<size_t>(sound.channels);
    for (size_t at = 0; at < sound.samples.size(); at += step) {
        const size_t n = std::min(step, sound.samples.size() - at);
        if (kind == kMp3) {  // of 16 bit samples the library's encoder makes noise
            std::vector<float> part;
            for (size_t i = at; i < at + n; ++i) part.push_back(static_cast<float>(sound.samples[i]) / 32768);
            sf_write_float(file, part.data(), static_cast<sf_count_t>(n));
        } else {
            sf_write_short(file, sound.samples.data() + at, static_cast<sf_count_t>(n));
        }
    }
    sf_close(file);
    return ReadFile(folder.Path("sound"));
}

Sound Decode(const std::string& file) {
    const TempFolder folder;
    SF_INFO info = {};
    SNDFILE* open = sf_open(folder.Write("sound", file).c_str(), SFM_READ, &info);
    if (!open) throw std::runtime_error(sf_strerror(nullptr));
    Sound sound = {info.samplerate, info.channels, {}};
    sound.samples.resize(static_cast<size_t>(info.frames * info.channels));
    const sf_count_t read = sf_readf_short(open, sound.samples.data(), info.frames);
    sound.samples.resize(static_cast<size_t>(std::max<sf_count_t>(read, 0) * info.channels));
    sf_close(open);
    return sound;
}

Sound Tone(int frames, int channels, int rate) {
    Sound sound = {rate, channels, {}};
    for (int i = 0; i < frames; ++i) {
        const double value = 16384 * std::sin(2 * 3.14159265358979 * 441 * i / rate);
        for (int c = 0; c < channels; ++c)
            sound.samples.push_back(static_cast<int16_t>(c % 2 ? -value : value));
    }
    return sound;
}

Image Paint(int width, int height, const std::function<uint32_t(int, int)>& color) {
    Image image = {width, height, {}};
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) image.pixels.push_back(color(x, y));
    }
    return image;
}

uint32_t Number(const std::string& bytes, size_t at, int count) {
    uint32_t n = 0;
    for (int i = count; i-- > 0;) n = n << 8 | static_cast<unsigned char>(bytes[at + static_cast<size_t>(i)]);
    return n;
}

Image ReadBmp(const std::string& file) {
    const uint32_t width = Number(file, 18, 4), height = Number(file, 22, 4), bits = Number(file, 28, 2);
    const uint32_t used = bits > 8 ? 0 : Number(file, 46, 4) ? Number(file, 46, 4) : 1u << bits;
    const size_t stride = (width * bits + 31) / 32 * 4, pixels = 54 + 4 * used;
    if (Number(file, 30, 4) != 0 || file.size() != pixels + stride * height)
        throw std::runtime_error("no plain BMP");
    return Paint(static_cast<int>(width), static_cast<int>(height), [&](int x, int y) {
        const size_t row = pixels + (height - 1 - static_cast<size_t>(y)) * stride,
                     column = static_cast<size_t>(x);
        if (bits > 8) return Number(file, row + column * bits / 8, 3);
        const uint32_t byte = Number(file, row + column * bits / 8, 1);
        const uint32_t index = bits == 8 ? byte : byte >> (8 - bits - column * bits % 8) & ((1u << bits) - 1);
        return Number(file, 54 + 4 * index, 3);
    });
}

std::string EncodePng(const Image& image, PngKind kind) {
    const PngLayout layout = Layout(kind);
    std::vector<unsigned char> indexes;
    std::vector<png_color> colors;
    std::vector<unsigned char> alphas;
    const bool palette = layout.shifts.empty();
    if (palette) {
        for (const uint32_t c : Palette(image, &indexes)) {
            colors.push_back(
                {static_cast<png_byte>(c >> 16), static_cast<png_byte>(c >> 8), static_cast<png_byte>(c)});
            alphas.push_back(static_cast<unsigned char>(c >> 24));
        }
    }
    std::vector<unsigned char> pixels = indexes;
    for (const uint32_t pixel : image.pixels) {
        for (const int shift : layout.shifts) pixels.push_back(static_cast<unsigned char>(pixel >> shift));
    }
    const size_t stride = pixels.size() / static_cast<size_t>(image.height);
    std::vector<png_bytep> rows;
    for (size_t at = 0; at < pixels.size(); at += stride) rows.push_back(&pixels[at]);
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    std::string bytes;
    png_set_write_fn(
        png, &bytes,
        [](png_structp p, png_bytep data, size_t n) {
            static_cast<std::string*>(png_get_io_ptr(p))->append(reinterpret_cast<char*>(data), n);
        },
        nullptr);
    png_set_IHDR(png, info, static_cast<png_uint_32>(image.width), static_cast<png_uint_32>(image.height),
                 layout.bits, layout.color_type,
                 kind == PngKind::kInterlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    if (palette) png_set_PLTE(png, info, colors.data(), static_cast<int>(colors.size()));
    if (kind == PngKind::kPaletteAlpha)
        png_set_tRNS(png, info, alphas.data(), static_cast<int>(alphas.size()), nullptr);
    png_set_rows(png, info, rows.data());
    png_write_png(png, info, PNG_TRANSFORM_IDENTITY, nullptr);
    png_destroy_write_struct(&png, &info);
    return bytes;
}

std::string EncodeJpeg(const Image& image) {
    tjhandle turbo = tjInitCompress();
    unsigned char* file = nullptr;
    unsigned long size = 0;
    if (tjCompress2(turbo, reinterpret_cast<const unsigned char*>(image.pixels.data()), image.width, 0,
                    image.height, TJPF_BGRX, &file, &size, TJSAMP_444, 100, TJFLAG_ACCURATEDCT) != 0)
        throw std::runtime_error(tjGetErrorStr2(turbo));
    std::string bytes(reinterpret_cast<char*>(file), size);
    tjFree(file);
    tjDestroy(turbo);
    return bytes;
}

std::string EncodeGif(const Image& image, const GifPlace& place) {
    std::vector<unsigned char> indexes;
    std::vector<GifColorType> colors;
    for (const uint32_t c : Palette(image, &indexes)) {
        colors.push_back({static_cast<GifByteType>(c >> 16), static_cast<GifByteType>(c >> 8),
                          static_cast<GifByteType>(c)});
    }
    int size = 2;
    while (static_cast<size_t>(size) < colors.size()) size *= 2;
    colors.resize(static_cast<size_t>(size));
    std::string bytes;
    GifFileType* gif = EGifOpen(
        &bytes,
        [](GifFileType* file, const GifByteType* data, int n) {
            static_cast<std::string*>(file->UserData)
                ->append(reinterpret_cast<const char*>(data), static_cast<size_t>(n));
            return n;
        },
        nullptr);
    ColorMapObject* map = GifMakeMapObject(size, colors.data());
    EGifPutScreenDesc(gif, place.screen_width ? place.screen_width : image.width,
                      place.screen_height ? place.screen_height : image.height, 8, 0, map);
    if (place.clear >= 0) {
        const unsigned char control[4] = {1, 0, 0, static_cast<unsigned char>(place.clear)};
        EGifPutExtension(gif, GRAPHICS_EXT_FUNC_CODE, 4, control);
    }
    EGifPutImageDesc(gif, place.x, place.y, image.width, image.height, place.interlaced, nullptr);
    const auto put = [&](int y) {
        EGifPutLine(gif, indexes.data() + static_cast<size_t>(y) * static_cast<size_t>(image.width),
                    image.width);
    };
    const int passes[4][2] = {{0, 8}, {4, 8}, {2, 4}, {1, 2}};
    if (place.interlaced) {
        for (const auto& pass : passes) {
            for (int y = pass[0]; y < image.height; y += pass[1]) put(y);
        }
    } else {
        for (int y = 0; y < image.height; ++y) put(y);
    }
    EGifCloseFile(gif, nullptr);
    GifFreeMapObject(map);
    return bytes;
}

}  // namespace test
