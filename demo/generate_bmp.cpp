// Writes BMP files: median-cut palettes, ordered dithering, and true colour.
#include <algorithm>
#include <map>

#include "generate.h"
#include "generate_math.h"

namespace demo {
namespace {

struct Pixel {
    int r, g, b;
    auto operator<=>(const Pixel&) const = default;
};

int ToByte(double x) {
    return static_cast<int>(Clamp(Floor(x * 255 + 0.5), 0, 255));
}
Pixel ToPixel(const Color& c) {
    return {ToByte(c.r), ToByte(c.g), ToByte(c.b)};
}

int Part(const Pixel& p, int axis) {
    return axis == 0 ? p.r : axis == 1 ? p.g : p.b;
}

struct Count {
    Pixel pixel;
    int64_t count;
};
using Box = std::vector<Count>;

// The longest axis of a box and its length.
std::pair<int, int> Longest(const Box& box) {
    std::pair<int, int> best = {0, -1};
    for (int axis = 0; axis < 3; ++axis) {
        auto [low, high] = std::minmax_element(
            box.begin(), box.end(),
            [axis](const Count& a, const Count& b) { return Part(a.pixel, axis) < Part(b.pixel, axis); });
        int length = Part(high->pixel, axis) - Part(low->pixel, axis);
        if (length > best.second) best = {axis, length};
    }
    return best;
}

Box SplitOff(Box* box, int axis) {
    std::sort(box->begin(), box->end(), [axis](const Count& a, const Count& b) {
        int x = Part(a.pixel, axis), y = Part(b.pixel, axis);
        return x != y ? x < y : a.pixel < b.pixel;
    });
    int64_t total = 0, half = 0;
    for (const Count& c : *box) total += c.count;
    size_t at = 0;
    while (at + 1 < box->size() && (at == 0 || half * 2 < total)) half += (*box)[at++].count;
    Box rest(box->begin() + static_cast<long>(at), box->end());
    box->resize(at);
    return rest;
}

Pixel Mean(const Box& box) {
    int64_t sums[4] = {};
    for (const Count& c : box) {
        for (int axis = 0; axis < 3; ++axis) sums[axis] += Part(c.pixel, axis) * c.count;
        sums[3] += c.count;
    }
    return {static_cast<int>(sums[0] / sums[3]), static_cast<int>(sums[1] / sums[3]),
            static_cast<int>(sums[2] / sums[3])};
}

std::vector<Pixel> Palette(const std::vector<Picture>& pictures, size_t most, bool key) {
    std::map<Pixel, int64_t> counts;
    for (const Picture& picture : pictures) {
        for (const Color& c : picture.pixels) ++counts[ToPixel(c)];
    }
    std::vector<Pixel> palette;
    if (key) {
        counts.erase({0, 0, 0});
        palette.push_back({0, 0, 0});
    }
    std::vector<Box> boxes(1);
    for (const auto& [pixel, count] : counts) boxes[0].push_back({pixel, count});
    while (boxes.size() + palette.size() < most) {
        auto widest = std::max_element(boxes.begin(), boxes.end(), [](const Box& a, const Box& b) {
            return Longest(a).second < Longest(b).second;
        });
        auto [axis, length] = Longest(*widest);
        if (length <= 0) break;
        Box rest = SplitOff(&*widest, axis);
        boxes.push_back(rest);
    }
    for (const Box& box : boxes) palette.push_back(Mean(box));
    return palette;
}

class Matcher {
public:
    Matcher(const std::vector<Pixel>& palette, bool key) : palette_(palette), key_(key) {}
    uint8_t Nearest(const Pixel& p) {
        auto [at, fresh] = cache_.try_emplace(p, uint8_t{0});
        if (fresh) at->second = Search(p);
        return at->second;
    }

private:
    uint8_t Search(const Pixel& p) const {
        size_t best = key_ ? 1 : 0;
        int least = 1 << 30;
        for (size_t i = best; i < palette_.size(); ++i) {
            int r = p.r - palette_[i].r, g = p.g - palette_[i].g, b = p.b - palette_[i].b;
            int distance = 3 * r * r + 5 * g * g + 2 * b * b;
            if (distance < least) {
                least = distance;
                best = i;
            }
        }
        return static_cast<uint8_t>(best);
    }

    const std::vector<Pixel>& palette_;
    bool key_;
    std::map<Pixel, uint8_t> cache_;
};

// -0.5 to 0.5 on an 8 by 8 grid; each level occurs once.
double Bayer(int x, int y) {
    int value = 0;
    for (int bit = 0; bit < 3; ++bit) {
        int a = (x >> bit) & 1, b = (y >> bit) & 1;
        value = value * 4 + ((a ^ b) << 1 | b);
    }
    return value / 64.0 - 0.4921875;
}

void Put(Bytes* out, uint32_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) out->push_back(static_cast<uint8_t>(value >> (8 * i)));
}

Bytes Head(int width, int height, int bits, size_t colors, size_t row) {
    Bytes out = {'B', 'M'};
    uint32_t at = static_cast<uint32_t>(54 + 4 * colors);
    Put(&out, at + static_cast<uint32_t>(row) * height, 4);
    Put(&out, 0, 4);
    Put(&out, at, 4);
    Put(&out, 40, 4);
    Put(&out, static_cast<uint32_t>(width), 4);
    Put(&out, static_cast<uint32_t>(height), 4);
    Put(&out, 1, 2);
    Put(&out, static_cast<uint32_t>(bits), 2);
    Put(&out, 0, 4);
    Put(&out, static_cast<uint32_t>(row) * height, 4);
    Put(&out, 2835, 4);
    Put(&out, 2835, 4);
    Put(&out, static_cast<uint32_t>(colors), 4);
    Put(&out, 0, 4);
    return out;
}

Bytes PaletteBmp(const Picture& picture, const std::vector<Pixel>& palette, Matcher* matcher, int bits,
                 bool key) {
    const size_t row = (static_cast<size_t>(picture.width) * bits + 31) / 32 * 4;
    Bytes out = Head(picture.width, picture.height, bits, palette.size(), row);
    for (const Pixel& p : palette) Put(&out, static_cast<uint32_t>(p.b | p.g << 8 | p.r << 16), 4);
    const double dither = bits == 8 ? 5.0 / 255 : 0;
    for (int y = picture.height - 1; y >= 0; --y) {
        Bytes line(row);
        for (int x = 0; x < picture.width; ++x) {
            const Color& c = picture.At(x, y);
            double d = dither * Bayer(x & 7, y & 7);
            bool hole = key && ToPixel(c) == Pixel{0, 0, 0};
            uint8_t index = hole ? 0 : matcher->Nearest(ToPixel({c.r + d, c.g + d, c.b + d}));
            if (bits == 8) line[x] = index;
            if (bits == 4) line[x / 2] |= static_cast<uint8_t>(x % 2 ? index : index << 4);
        }
        out.insert(out.end(), line.begin(), line.end());
    }
    return out;
}

}  // namespace

Picture Blank(int width, int height) {
    Picture picture = {width, height, {}};
    picture.pixels.resize(static_cast<size_t>(width) * height);
    return picture;
}

std::vector<Bytes> PaletteBmps(const std::vector<Picture>& pictures, int bits, bool key) {
    std::vector<Pixel> palette = Palette(pictures, size_t{1} << bits, key);
    Matcher matcher(palette, key);
    std::vector<Bytes> out;
    for (const Picture& picture : pictures) out.push_back(PaletteBmp(picture, palette, &matcher, bits, key));
    return out;
}

Bytes TrueColorBmp(const Picture& picture) {
    const size_t row = (static_cast<size_t>(picture.width) * 3 + 3) / 4 * 4;
    Bytes out = Head(picture.width, picture.height, 24, 0, row);
    for (int y = picture.height - 1; y >= 0; --y) {
        Bytes line;
        for (int x = 0; x < picture.width; ++x) {
            Color c = picture.At(x, y);
            double d = Bayer(x & 7, y & 7) / 255;
            Pixel p = ToPixel({c.r + d, c.g + d, c.b + d});
            Put(&line, static_cast<uint32_t>(p.b | p.g << 8 | p.r << 16), 3);
        }
        line.resize(row);
        out.insert(out.end(), line.begin(), line.end());
    }
    return out;
}

}  // namespace demo
