// Sound and picture files of the kinds that packages have, as bytes.
#pragma once

#include <sndfile.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace test {

struct Sound {
    int rate = 44100, channels = 1;
    std::vector<int16_t> samples;  // interleaved
};

enum SoundFile {
    kWav = SF_FORMAT_WAV | SF_FORMAT_PCM_16,
    kFlac = SF_FORMAT_FLAC | SF_FORMAT_PCM_16,
    kOgg = SF_FORMAT_OGG | SF_FORMAT_VORBIS,
    kOpus = SF_FORMAT_OGG | SF_FORMAT_OPUS,
    kMp3 = SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III
};

// At the best quality that the kind has, which is one of the above or of libsndfile's. Throws when the
// library cannot.
std::string Encode(const Sound& sound, int kind);

// What a libsndfile file holds, in 16 bits.
Sound Decode(const std::string& file);

// An even tone of that many frames at half of full scale.
Sound Tone(int frames, int channels = 1, int rate = 44100);

struct Image {
    int width = 0, height = 0;
    std::vector<uint32_t> pixels;  // 0xAARRGGBB, top row first

    uint32_t At(int x, int y) const {
        return pixels[static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)];
    }
};

Image Paint(int width, int height, const std::function<uint32_t(int, int)>& color);

// The number of that many bytes, the lowest first.
uint32_t Number(const std::string& bytes, size_t at, int count);

// A BMP of 4, 8 or 24 bits without compression, by a reading of its own: 0xRRGGBB.
Image ReadBmp(const std::string& file);

enum class PngKind { kRgb, kRgba, kGrey, kGreyAlpha, kPalette, kPaletteAlpha, k16Bits, kInterlaced };

// Of a palette kind: at most 256 different colours.
std::string EncodePng(const Image& image, PngKind kind);
std::string EncodeJpeg(const Image& image);

struct GifPlace {
    int x = 0, y = 0, screen_width = 0, screen_height = 0;
    int clear = -1;  // index that can be seen through
    bool interlaced = false;
};
// At most 256 colours, in the order in which they come.
std::string EncodeGif(const Image& image, const GifPlace& place = {});

}  // namespace test
