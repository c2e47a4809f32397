// Writes BMP files for tests, from a function that gives each pixel's value.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

namespace test {

using PixelValue = std::function<uint32_t(int x, int y)>;  // an index or a packed colour; from the top left

struct BmpSpec {
    int width = 1, height = 1;  // as they are stored: a negative height makes the rows run from the top
    int bits = 24;
    uint32_t header_size = 40;  // below 40: a core header
    uint32_t compression = 0;
    uint32_t colors_used = 0;
    std::vector<uint32_t> palette = {};  // 0xRRGGBB entries as they stand in the file, as many as there are
    std::vector<uint32_t> masks = {};    // behind the header, with compression 3
};

inline void Put(std::string* out, uint32_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) out->push_back(static_cast<char>(value >> (8 * i)));
}

inline std::string BmpHead(const BmpSpec& spec) {
    std::string out = "BM";
    Put(&out, 0xDEADBEEF, 4);  // file size, reserved words and the pixels' offset: all of them wrong
    Put(&out, 0xDEADBEEF, 4);
    Put(&out, 0x7FFFFFFF, 4);
    Put(&out, spec.header_size, 4);
    const bool core = spec.header_size < 40;
    Put(&out, static_cast<uint32_t>(spec.width), core ? 2 : 4);
    Put(&out, static_cast<uint32_t>(spec.height), core ? 2 : 4);
    Put(&out, 1, 2);
    Put(&out, static_cast<uint32_t>(spec.bits), 2);
    if (!core) {
        Put(&out, spec.compression, 4);
        for (int i = 0; i < 3; ++i) Put(&out, 0xABABABAB, 4);
        Put(&out, spec.colors_used, 4);
        Put(&out, 0xABABABAB, 4);
    }
    for (uint32_t mask : spec.masks) Put(&out, mask, 4);
    for (uint32_t color : spec.palette) {
        Put(&out, color, 3);
        if (!core) Put(&out, 0x5A, 1);
    }
    return out;
}

// A whole file without run-length coding. Bits behind the last pixel of a row are ones.
inline std::string MakeBmp(const BmpSpec& spec, const PixelValue& value) {
    std::string out = BmpHead(spec);
    const int rows = std::abs(spec.height);
    for (int i = 0; i < rows; ++i) {
        const int y = spec.height < 0 ? i : rows - 1 - i;
        std::string row;
        uint32_t pending = 0;
        int pending_bits = 0;
        for (int x = 0; x < spec.width; ++x) {
            const uint32_t pixel = value(x, y);
            if (spec.bits >= 8) {
                Put(&row, pixel, spec.bits / 8);
                continue;
            }
            pending = pending << spec.bits | pixel;
            pending_bits += spec.bits;
            if (pending_bits == 8) {
                Put(&row, pending, 1);
                pending = 0;
                pending_bits = 0;
            }
        }
        if (pending_bits) Put(&row, pending << (8 - pending_bits) | 0xFFu >> pending_bits, 1);
        while (row.size() % 4) row.push_back('\xFF');
        out += row;
    }
    return out;
}

}  // namespace test
