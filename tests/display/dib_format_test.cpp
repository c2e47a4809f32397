// Each pixel format against a picture that this test works out by itself.
#include <vector>

#include "display/dib_support.h"
#include "support/calls.h"

namespace {

using test::BmpSpec;
using test::MakeBmp;

class DibFormat : public test::PictureTest {
protected:
    // Draws the left and upper 256 columns and rows, and compares all of the layer; black where there is no
    // picture.
    void Expect(const std::string& bytes, int nWidth, int nHeight, const test::PixelValue& color) {
        ASSERT_EQ(Load(bytes), 0);
        const int nColumns = std::min(nWidth, test::kLayerSide),
                  nRows = std::min(std::abs(nHeight), test::kLayerSide);
        ASSERT_EQ(Draw(0, 0, 0, 0, nColumns, nRows), 0);
        ExpectLayer([&](int x, int y) { return x < nColumns && y < nRows ? color(x, y) : 0u; });
    }
    void Expect(const BmpSpec& spec, const test::PixelValue& value, const test::PixelValue& color) {
        SCOPED_TRACE(testing::Message()
                     << spec.bits << " bits, header " << spec.header_size << ", " << spec.colors_used
                     << " used, " << spec.width << " by " << spec.height);
        Expect(MakeBmp(spec, value), spec.width, spec.height, color);
    }
};

struct Size {
    int nWidth, nHeight;
};
// Widths around the padding of every depth; a negative height is a picture stored from the top.
constexpr Size kSizes[] = {{1, 1},     {2, 3},      {3, 2},    {5, 7},   {7, 5},      {8, 8},     {9, -4},
                           {31, 3},    {33, -3},    {100, 50}, {255, 9}, {255, -255}, {256, 256}, {257, 4},
                           {640, 480}, {640, -480}, {1, -1},   {300, 2}, {2, 300}};

uint32_t Hash(int x, int y) {
    return static_cast<uint32_t>(x) * 2654435761u ^ static_cast<uint32_t>(y) * 40503u * 65537u;
}

TEST_F(DibFormat, IndexedWithWholeAndSmallPalettes) {
    for (int nBits : {1, 4, 8}) {
        for (uint32_t nUsed : {0u, 1u, 2u, 5u, 300u}) {
            for (const Size& size : kSizes) {
                const uint32_t nColors = 1u << nBits, nEntries = nUsed ? nUsed : nColors;
                BmpSpec spec{
                    .width = size.nWidth, .height = size.nHeight, .bits = nBits, .colors_used = nUsed};
                for (uint32_t i = 0; i < nEntries; ++i)
                    spec.palette.push_back((0x010203 + i * 0x050709) & 0xFFFFFF);
                const auto index = [=](int x, int y) { return Hash(x, y) >> 13 & (nColors - 1); };
                Expect(spec, index, [&](int x, int y) {
                    const uint32_t i = index(x, y);
                    return i < nEntries ? (0x010203 + i * 0x050709) & 0xFFFFFF : 0u;
                });
            }
        }
    }
}

TEST_F(DibFormat, CoreHeaders) {
    for (int nBits : {1, 4, 8, 24}) {
        for (uint32_t nHeader : {12u, 39u}) {
            BmpSpec spec{.width = 255, .height = 60, .bits = nBits, .header_size = nHeader};
            for (uint32_t i = 0; nBits <= 8 && i < 1u << nBits; ++i)
                spec.palette.push_back((0xFFFEFD - i * 0x030201) & 0xFFFFFF);
            const auto value = [=](int x, int y) {
                return Hash(x, y) >> 7 & (nBits == 24 ? 0xFFFFFF : (1u << nBits) - 1);
            };
            Expect(spec, value, [=](int x, int y) {
                return nBits == 24 ? value(x, y) : (0xFFFEFD - value(x, y) * 0x030201) & 0xFFFFFF;
            });
        }
    }
}

TEST_F(DibFormat, TrueColour) {
    for (int nBits : {24, 32}) {
        for (uint32_t nHeader : {40u, 56u, 124u}) {  // longer ones count as 40
            for (const Size& size : kSizes)
                Expect({.width = size.nWidth, .height = size.nHeight, .bits = nBits, .header_size = nHeader},
                       Hash, [](int x, int y) { return Hash(x, y) & 0xFFFFFF; });
        }
    }
}

constexpr uint32_t kFive[32] = {0,   8,   16,  24,  33,  41,  49,  57,  66,  74,  82,
                                90,  99,  107, 115, 123, 132, 140, 148, 156, 165, 173,
                                181, 189, 198, 206, 214, 222, 231, 239, 247, 255};

uint32_t FiveOfEach(uint32_t v) {
    return kFive[v >> 10 & 31] << 16 | kFive[v >> 5 & 31] << 8 | kFive[v & 31];
}

TEST_F(DibFormat, SixteenBitsWithoutMasksHaveFiveOfEachColour) {
    for (const Size& size : kSizes)
        Expect({.width = size.nWidth, .height = size.nHeight, .bits = 16}, Hash,
               [](int x, int y) { return FiveOfEach(Hash(x, y)); });
}

TEST_F(DibFormat, Masks) {
    const struct {
        int nBits;
        std::vector<uint32_t> masks;
        uint32_t (*pfnColor)(uint32_t v);
    } rows[] = {
        {16,
         {0xF800, 0x07E0, 0x001F},
         [](uint32_t v) {
             const uint32_t nSix = v >> 5 & 63;
             return kFive[v >> 11 & 31] << 16 | (nSix * 4 + nSix / 16) << 8 | kFive[v & 31];
         }},
        {16, {0x7C00, 0x03E0, 0x001F}, FiveOfEach},
        {16,
         {0x0F00, 0x00F0, 0x000F},
         [](uint32_t v) { return (v >> 8 & 15) * 17 << 16 | (v >> 4 & 15) * 17 << 8 | (v & 15) * 17; }},
        {16, {0x8000, 0x0003, 0}, [](uint32_t v) { return (v >> 15 & 1) * 255 << 16 | (v & 3) * 85 << 8; }},
        {32, {0xFF0000, 0x00FF00, 0x0000FF}, [](uint32_t v) { return v & 0xFFFFFF; }},
        {32,
         {0x0000FF, 0x00FF00, 0xFF0000},
         [](uint32_t v) { return (v & 255) << 16 | (v & 0xFF00) | (v >> 16 & 255); }},
        {32, {0xFF000000, 0x00FF0000, 0x0000FF00}, [](uint32_t v) { return v >> 8; }},
        {32,
         {0x3FF00000, 0x000FFC00, 0x000003FF},  // the upper 8 of 10 bits
         [](uint32_t v) { return (v >> 22 & 255) << 16 | (v >> 12 & 255) << 8 | (v >> 2 & 255); }},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << "mask " << std::hex << row.masks[0]);
        for (uint32_t nHeader : {40u, 108u})
            Expect({.width = 255,
                    .height = 99,
                    .bits = row.nBits,
                    .header_size = nHeader,
                    .compression = 3,
                    .masks = row.masks},
                   Hash, [&](int x, int y) { return row.pfnColor(Hash(x, y)); });
    }
}

// A run-length file of 16 colours whose entry i is 0x111111 * i, or of 256 whose entry i is 0x010101 * i.
std::string MakeRuns(int nBits, int nWidth, int nHeight, const std::vector<int>& codes) {
    BmpSpec spec{.width = nWidth, .height = nHeight, .bits = nBits, .compression = nBits == 8 ? 1u : 2u};
    for (uint32_t i = 0; i < 1u << nBits; ++i) spec.palette.push_back(i * (nBits == 8 ? 0x010101 : 0x111111));
    std::string out = test::BmpHead(spec);
    for (int nCode : codes) out.push_back(static_cast<char>(nCode));
    return out;
}

TEST_F(DibFormat, RunLengths) {
    // The rows of the picture from the top, a digit for each pixel; a dot is skipped and stays blank.
    const struct {
        const char* pszWhat;
        int nBits, nWidth, nHeight;
        std::vector<int> codes;
        std::vector<const char*> rows;
    } rows[] = {
        {"runs and ends of line", 8, 4, 2, {4, 5, 0, 0, 1, 1, 3, 2, 0, 1}, {"1222", "5555"}},
        {"plain pixels, an odd count is padded",
         8,
         5,
         2,
         {0, 5, 1, 2, 3, 4, 5, 99, 0, 0, 0, 4, 6, 7, 8, 9, 1, 3, 0, 1},
         {"67893", "12345"}},
        {"a delta skips", 8, 5, 3, {1, 7, 0, 2, 2, 1, 2, 8, 0, 0, 5, 1, 0, 1}, {"11111", "...88", "7...."}},
        {"an early end", 8, 4, 3, {2, 3, 0, 1, 4, 4}, {"....", "....", "33.."}},
        {"no code for the end", 8, 3, 2, {3, 1, 0, 0, 3, 2}, {"222", "111"}},
        {"runs do not wrap to the next row", 8, 3, 2, {9, 6, 2, 7, 0, 0, 1, 5}, {"5..", "666"}},
        {"rows above the picture", 8, 2, 2, {2, 1, 0, 0, 2, 2, 0, 0, 2, 3, 0, 2, 0, 200, 2, 4}, {"22", "11"}},
        {"an empty run", 8, 2, 1, {0, 3, 1, 2, 9, 0}, {"12"}},
        {"stored from the top", 8, 2, -2, {2, 1, 0, 0, 2, 2, 0, 1}, {"11", "22"}},
        {"cut inside plain pixels", 8, 6, 1, {0, 6, 1, 2, 3}, {"123..."}},
        {"cut inside a delta", 8, 2, 1, {1, 1, 0, 2, 1}, {"1."}},
        {"4 bits: runs alternate", 4, 5, 2, {5, 0x12, 0, 0, 4, 0x34, 1, 0x90, 0, 1}, {"34349", "12121"}},
        {"4 bits: plain, padded to two bytes",
         4,
         5,
         2,
         {0, 5, 0x12, 0x34, 0x50, 0, 0, 0, 0, 3, 0x67, 0x80, 2, 0x99},
         {"67899", "12345"}},
        {"4 bits: seven plain pixels", 4, 7, 1, {0, 7, 0x12, 0x34, 0x56, 0x70}, {"1234567"}},
        {"4 bits: delta", 4, 4, 2, {0, 2, 1, 1, 2, 0x56, 0, 1}, {".56.", "...."}},
        {"4 bits: cut inside plain pixels", 4, 6, 1, {0, 6, 0x12, 0x34}, {"1234.."}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.pszWhat);
        Expect(MakeRuns(row.nBits, row.nWidth, row.nHeight, row.codes), row.nWidth, row.nHeight,
               [&](int x, int y) {
                   const char c = row.rows[static_cast<size_t>(y)][x];
                   return c == '.' ? 0u
                                   : static_cast<uint32_t>(c - '0') * (row.nBits == 8 ? 0x010101 : 0x111111);
               });
    }
}

TEST_F(DibFormat, ALargeRunLengthPictureThroughWindows) {
    std::vector<int> codes;
    for (int y = 399; y >= 0; --y) {  // runs of 5, of the values x / 5 + y
        for (int x = 0; x < 500; x += 5) codes.insert(codes.end(), {5, (x / 5 + y) & 255});
        codes.insert(codes.end(), {0, 0});
    }
    ASSERT_EQ(Load(MakeRuns(8, 500, 400, codes)), 0);
    for (const auto& [nLeft, nTop] : {std::pair{0, 0}, {243, 143}, {100, 44}, {7, 399 - 255}}) {
        ASSERT_EQ(Draw(0, 0, nLeft, nTop, 256, 256), 0);
        ExpectLayer([nLeft = nLeft, nTop = nTop](int x, int y) {
            return static_cast<uint32_t>(((nLeft + x) / 5 + nTop + y) & 255) * 0x010101;
        });
    }
}

TEST_F(DibFormat, FormatsThatCannotBeDrawnStayBlank) {
    const std::pair<int, uint32_t> rows[] = {{0, 0},  {2, 0},      {3, 0},  {15, 0}, {48, 0},
                                             {64, 0}, {0xFFFF, 0}, {8, 2},  {4, 1},  {24, 3},
                                             {8, 3},  {24, 4},     {24, 5}, {32, 6}, {24, 0xFFFFFFFF}};
    for (const auto& [nBits, nCompression] : rows) {
        const BmpSpec spec{.bits = nBits, .compression = nCompression};
        ASSERT_EQ(Load(test::BmpHead(spec) + std::string(3000, 'x')), 0);
        EXPECT_EQ(Draw(0, 0, 0, 0, 1, 1), 0);
        EXPECT_EQ(At(0, 0), 0u) << nBits << " " << nCompression;
    }
}

TEST_F(DibFormat, WhatLiesOutsideDrawsNothing) {
    const BmpSpec spec{.width = 20, .height = 10};
    ASSERT_EQ(Load(MakeBmp(spec, [](int x, int y) { return static_cast<uint32_t>(1 + x + y * 256); })), 0);
    const struct {
        int x, y, nLeft, nTop, nWidth, nHeight;
    } rows[] = {{5, 6, -3, -2, 30, 20},
                {250, 250, 0, 0, 20, 10},
                {-5, -5, 0, 0, 20, 10},
                {0, 0, 19, 9, 100, 100},
                {3, 3, 7, 2, 4, 4},
                {0, 0, 20, 0, 5, 5},
                {256, 0, 0, 0, 5, 5},
                {0, 0, 0, -7, 5, 7},
                {100, 100, -2000000000, -2000000000, 2000000010, 2000000004}};
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.x << " " << row.y << " from " << row.nLeft << " " << row.nTop);
        EXPECT_EQ(Draw(row.x, row.y, row.nLeft, row.nTop, row.nWidth, row.nHeight), 0);
        ExpectLayer([&row](int x, int y) {
            const int64_t u = int64_t{x} - row.x, v = int64_t{y} - row.y;
            const int64_t nX = u + row.nLeft, nY = v + row.nTop;
            const bool bIn = u >= 0 && v >= 0 && u < row.nWidth && v < row.nHeight && nX >= 0 && nY >= 0 &&
                             nX < 20 && nY < 10;
            return bIn ? static_cast<uint32_t>(1 + nX + nY * 256) : 0u;
        });
    }
}

}  // namespace
