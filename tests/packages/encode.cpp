#include "packages/encode.h"

#include <gif_lib.h>
#include <png.h>
#include <sndfile.h>
#include <turbojpeg.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <map>
#include <memory>
#include <stdexcept>

namespace test {
namespace {

struct Memory {
    std::string bytes;
    sf_count_t pos = 0;
};

sf_count_t MemoryLength(void* user) {
    return static_cast<sf_count_t>(static_cast<Memory*>(user)->bytes.size());
}

sf_count_t MemorySeek(sf_count_t offset, int whence, void* user) {
    auto* memory = static_cast<Memory*>(user);
    if (whence == SEEK_CUR) offset += memory->pos;
    if (whence == SEEK_END) offset += MemoryLength(user);
    return memory->pos = offset;
}

sf_count_t MemoryRead(void* to, sf_count_t count, void* user) {
    auto* memory = static_cast<Memory*>(user);
    const auto n = std::clamp<sf_count_t>(MemoryLength(user) - memory->pos, 0, count);
    std::memcpy(to, memory->bytes.data() + memory->pos, static_cast<size_t>(n));
    memory->pos += n;
    return n;
}

sf_count_t MemoryWrite(const void* from, sf_count_t count, void* user) {
    auto* memory = static_cast<Memory*>(user);
    const auto end = static_cast<size_t>(memory->pos + count);
    if (memory->bytes.size() < end) memory->bytes.resize(end);
    std::memcpy(memory->bytes.data() + memory->pos, from, static_cast<size_t>(count));
    memory->pos += count;
    return count;
}

sf_count_t MemoryTell(void* user) {
    return static_cast<Memory*>(user)->pos;
}

SF_VIRTUAL_IO kIo = {MemoryLength, MemorySeek, MemoryRead, MemoryWrite, MemoryTell};

int Format(SoundFile kind) {
    switch (kind) {
        case SoundFile::kFlac:
            return SF_FORMAT_FLAC | SF_FORMAT_PCM_16;
        case SoundFile::kOgg:
            return SF_FORMAT_OGG | SF_FORMAT_VORBIS;
        case SoundFile::kOpus:
            return SF_FORMAT_OGG | SF_FORMAT_OPUS;
        case SoundFile::kMp3:
            return SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III;
        default:
            return SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    }
}

struct Color {
    unsigned char b, g, r, a;
};
static_assert(sizeof(Color) == 4);

const Color* Colors(const Image& image) {
    return reinterpret_cast<const Color*>(image.pixels.data());
}

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

// One pixel of the rows that the kind of PNG has.
void AppendPngPixel(std::vector<unsigned char>* row, uint32_t pixel, PngKind kind, unsigned char index) {
    const auto part = [&](int shift) { return static_cast<unsigned char>(pixel >> shift); };
    switch (kind) {
        case PngKind::kGrey:
            row->push_back(part(8));
            break;
        case PngKind::kGreyAlpha:
            row->insert(row->end(), {part(8), part(24)});
            break;
        case PngKind::kPalette:
        case PngKind::kPaletteAlpha:
            row->push_back(index);
            break;
        case PngKind::k16Bits:
            row->insert(row->end(), {part(16), part(16), part(8), part(8), part(0), part(0)});
            break;
        case PngKind::kRgba:
            row->insert(row->end(), {part(16), part(8), part(0), part(24)});
            break;
        default:
            row->insert(row->end(), {part(16), part(8), part(0)});
    }
}

int PngColorType(PngKind kind) {
    switch (kind) {
        case PngKind::kGrey:
            return PNG_COLOR_TYPE_GRAY;
        case PngKind::kGreyAlpha:
            return PNG_COLOR_TYPE_GRAY_ALPHA;
        case PngKind::kPalette:
        case PngKind::kPaletteAlpha:
            return PNG_COLOR_TYPE_PALETTE;
        case PngKind::kRgba:
            return PNG_COLOR_TYPE_RGBA;
        default:
            return PNG_COLOR_TYPE_RGB;
    }
}

}  // namespace

std::string Encode(const Sound& sound, SoundFile kind) {
    Memory memory;
    SF_INFO info = {};
    info.samplerate = sound.rate;
    info.channels = sound.channels;
    info.format = Format(kind);
    SNDFILE* file = sf_open_virtual(&kIo, SFM_WRITE, &info, &memory);
    if (!file) throw std::runtime_error(sf_strerror(nullptr));
    double best = kind == SoundFile::kFlac ? 0.5 : 1.0;
    if (kind == SoundFile::kOgg) sf_command(file, SFC_SET_VBR_ENCODING_QUALITY, &best, sizeof best);
    if (kind == SoundFile::kMp3) {
        best = 0.0;
        sf_command(file, SFC_SET_COMPRESSION_LEVEL, &best, sizeof best);
    }
    // In pieces: one long write overflows the Vorbis encoder's stack.
    const size_t step = 4096 * static_cast<size_t>(sound.channels);
    for (size_t at = 0; at < sound.samples.size(); at += step) {
        const size_t n = std::min(step, sound.samples.size() - at);
        if (kind == SoundFile::kMp3) {  // of 16 bit samples the library's encoder makes noise
            std::vector<float> part;
            for (size_t i = at; i < at + n; ++i) part.push_back(static_cast<float>(sound.samples[i]) / 32768);
            sf_write_float(file, part.data(), static_cast<sf_count_t>(n));
        } else {
            sf_write_short(file, sound.samples.data() + at, static_cast<sf_count_t>(n));
        }
    }
    sf_close(file);
    return memory.bytes;
}

Sound Decode(const std::string& file) {
    Memory memory = {file, 0};
    SF_INFO info = {};
    SNDFILE* open = sf_open_virtual(&kIo, SFM_READ, &info, &memory);
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

std::string EncodePng(const Image& image, PngKind kind) {
    std::vector<unsigned char> indexes;
    std::vector<png_color> colors;
    std::vector<unsigned char> alphas;
    const bool palette = kind == PngKind::kPalette || kind == PngKind::kPaletteAlpha;
    if (palette) {
        for (const uint32_t c : Palette(image, &indexes)) {
            colors.push_back(
                {static_cast<png_byte>(c >> 16), static_cast<png_byte>(c >> 8), static_cast<png_byte>(c)});
            alphas.push_back(static_cast<unsigned char>(c >> 24));
        }
    }
    std::vector<std::vector<unsigned char>> rows(static_cast<size_t>(image.height));
    std::vector<png_bytep> pointers;
    for (int y = 0; y < image.height; ++y) {
        auto& row = rows[static_cast<size_t>(y)];
        for (int x = 0; x < image.width; ++x) {
            const size_t at =
                static_cast<size_t>(y) * static_cast<size_t>(image.width) + static_cast<size_t>(x);
            AppendPngPixel(&row, image.pixels[at], kind, palette ? indexes[at] : 0);
        }
        pointers.push_back(row.data());
    }
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
                 kind == PngKind::k16Bits ? 16 : 8, PngColorType(kind),
                 kind == PngKind::kInterlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    if (palette) png_set_PLTE(png, info, colors.data(), static_cast<int>(colors.size()));
    if (kind == PngKind::kPaletteAlpha)
        png_set_tRNS(png, info, alphas.data(), static_cast<int>(alphas.size()), nullptr);
    png_set_rows(png, info, pointers.data());
    png_write_png(png, info, PNG_TRANSFORM_IDENTITY, nullptr);
    png_destroy_write_struct(&png, &info);
    return bytes;
}

std::string EncodeJpeg(const Image& image, int quality) {
    tjhandle turbo = tjInitCompress();
    unsigned char* file = nullptr;
    unsigned long size = 0;
    if (tjCompress2(turbo, reinterpret_cast<const unsigned char*>(Colors(image)), image.width, 0,
                    image.height, TJPF_BGRX, &file, &size, TJSAMP_444, quality, TJFLAG_ACCURATEDCT) != 0)
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
