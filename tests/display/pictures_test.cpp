// Stored BMP files, whole and cut anywhere: what is read of them and what is drawn. Then each format at the
// widths around its padding and around the steps of the loops that draw it.
#include <climits>

#include <gtest/gtest.h>

#include "display/ddraw.h"
#include "display/dib.h"
#include "support/calls.h"
#include "support/media.h"
#include "support/stored.h"

namespace {

class Pictures : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(m_display.Init(nullptr, 0, 0, 452, 280), 0);
        ASSERT_EQ(m_display.CreateParts(4, 256, 256), 0);
    }
    int Load(const std::string& bytes, int nSlot = 1) {
        // A new file each time: some file systems write an overwritten one to the disk at once.
        std::filesystem::remove(m_folder.Path("picture.bmp"));
        return m_display.LoadDib(m_folder.Write("picture.bmp", bytes).c_str(), nSlot);
    }
    // The rectangle of the picture from its top left, at x, y of the layer.
    int Draw(int x, int y, int nLeft, int nTop, int nWidth, int nHeight) {
        const auto nRows = static_cast<int>(
            std::min(std::abs(int64_t{m_display.m_apDib[1]->GetHeight()}), int64_t{INT_MAX}));
        const RECT dest = {x, y, x + nWidth, y + nHeight};
        const RECT source = {nLeft, nRows - nTop - nHeight, nLeft + nWidth, nRows - nTop};
        return m_display.DrawDibSlot(1, &dest, &source, 4);
    }
    uint32_t At(int x, int y) const { return test::PixelAt(m_display.m_apParts[4], x, y); }
    // The pixels of the layer's upper left corner.
    std::string Corner(int width, int height) const {
        const PixelView layer = test::Pixels(m_display.m_apParts[4]);
        std::string bytes;
        for (int y = 0; y < height; ++y)
            bytes.append(
                reinterpret_cast<const char*>(layer.pPixels + static_cast<size_t>(y) * layer.nStride),
                static_cast<size_t>(width) * 4);
        return bytes;
    }

    // What shows in a small corner, two digits of each pixel and dots where nothing was drawn.
    std::string Shown(int width, int height) const {
        const std::string bytes = Corner(width, height);
        std::string text;
        for (size_t i = 0; i < bytes.size(); i += 4) {
            char digits[8];
            std::snprintf(digits, sizeof digits, "%02x", static_cast<unsigned char>(bytes[i]));
            text += (i / 4 % static_cast<size_t>(width) ? "" : " ") + std::string(digits);
        }
        return text;
    }

    std::string Report(const std::string& name, const std::string& file) {
        if (Load(file) != 0) return name + ": refused\n";
        const CDib& dib = *m_display.m_apDib[1];
        const int width = std::clamp(dib.GetWidth(), 0, 100),
                  height = std::min(std::abs(int64_t{dib.GetHeight()}), int64_t{40});
        const auto draw = [&] { return Draw(0, 0, 0, 0, width, height); };
        std::ostringstream text;
        text << name << ": " << dib.GetWidth() << " by " << dib.GetHeight() << ", pixels at "
             << dib.m_pBits - dib.m_pData << (dib.m_pPalette ? ", palette, " : ", ")
             << dib.m_pInfoHeader->biClrUsed << " used; drawn " << draw()
             << (width * height <= 64 ? Shown(width, height) : " " + test::Hash(Corner(width, height)));
        // Rectangles as far away as they can be.
        const RECT near = {0, 0, 256, 256}, all = {INT_MIN, INT_MIN, INT_MAX, INT_MAX};
        const RECT far = {INT_MIN, INT_MIN, INT_MIN + 256, INT_MIN + 256};
        const RECT end = {INT_MAX - 256, INT_MAX - 256, INT_MAX, INT_MAX};
        for (const RECT& source : {near, far, end}) EXPECT_EQ(m_display.DrawDibSlot(1, &near, &source, 4), 0);
        EXPECT_EQ(m_display.DrawDibSlot(1, &all, &all, 4), 0);
        std::string cuts;
        for (size_t length = 54; length < file.size(); ++length)
            cuts += Load(file.substr(0, length)) == 0 && draw() == 0 ? Corner(width, height) : "-";
        text << ", cut " << test::Hash(cuts) << '\n';
        return text.str();
    }

    test::TempFolder m_folder;
    CDDraw m_display;
};

TEST_F(Pictures, FilesAreDrawnAsStored) {
    std::string text;
    for (const char* folder : {DISPLAY_DATA "/files", FUZZ_INPUTS "/fuzz_bmp"}) {
        std::map<std::string, std::string> files;
        for (const auto& entry : std::filesystem::directory_iterator(folder))
            files[entry.path().filename()] = test::ReadFile(entry.path());
        for (const auto& [name, file] : files) text += Report(name, file);
    }
    test::ExpectStored(text, DISPLAY_DATA "/files.txt");
}

struct Format {
    int bits;
    uint32_t header = 40, used = 0;
    std::vector<uint32_t> masks = {};
};

TEST_F(Pictures, EveryWidthOfEveryFormat) {
    const Format formats[] = {{1},
                              {4},
                              {8},
                              {16},
                              {24},
                              {32},
                              {1, 12},
                              {4, 12},
                              {8, 39},
                              {24, 12},
                              {8, 40, 5},
                              {4, 40, 300},
                              {24, 124},
                              {32, 56},
                              {16, 40, 0, {0xF800, 0x07E0, 0x001F}},
                              {32, 108, 0, {0xFF, 0xFF00, 0xFF0000}}};
    constexpr std::pair<int, int> kSizes[] = {{1, 1},    {2, 3},    {3, 2},      {5, -7},
                                              {7, 5},    {9, -4},   {31, 3},     {33, -3},
                                              {100, 50}, {255, 60}, {256, -256}, {300, 20}};
    // Place in the layer, and what of the picture lies there: also beyond its edges and the layer's.
    const int windows[][6] = {{0, 0, 0, 0, 256, 256},
                              {5, 6, -3, -2, 30, 20},
                              {250, 250, 0, 0, 20, 10},
                              {-5, -5, 0, 0, 20, 10},
                              {3, 3, 7, 2, 4, 4},
                              {256, 0, 0, 0, 5, 5},
                              {9, 9, 1000000000, 1000000000, 5, 5}};
    std::ostringstream text;
    for (const Format& f : formats) {
        text << "== " << f.bits << " bits, header " << f.header << ", " << f.used << " used\n";
        int count = 0;
        for (const auto& [width, height] : kSizes) {
            test::BmpSpec spec{width,
                               f.header < 40 ? std::abs(height) : height,
                               f.bits,
                               f.header,
                               f.masks.empty() ? 0u : 3u,
                               f.used,
                               {},
                               f.masks};
            const uint32_t colors = f.bits > 8 ? 0 : f.used ? f.used : 1u << f.bits;
            for (uint32_t i = 0; i < colors; ++i)
                spec.palette.push_back((0x010203 + i * 0x050709) & 0xFFFFFF);
            const auto value = [&](int x, int y) {
                const uint32_t hash =
                    static_cast<uint32_t>(x) * 2654435761u ^ static_cast<uint32_t>(y) * 2654437889u;
                return f.bits > 8 ? hash : hash >> 13 & ((1u << f.bits) - 1);
            };
            if (Load(test::MakeBmp(spec, value)) != 0) continue;  // too small a file
            std::string shown;
            for (const auto& w : windows) {
                EXPECT_EQ(Draw(w[0], w[1], w[2], w[3], w[4], w[5]), 0);
                shown += Corner(256, 256);
            }
            text << width << " by " << height << ": " << test::Hash(shown) << (++count % 4 ? "; " : "\n");
        }
        text << '\n';
    }
    test::ExpectStored(text.str(), DISPLAY_DATA "/formats.txt");
}

TEST_F(Pictures, SlotsFillEmptyAndReplace) {
    const std::string good = test::Bmp(3, 2, 0x123456);
    EXPECT_EQ(m_display.LoadDib(m_folder.Path("missing.bmp").c_str(), 1), 1);
    for (const std::string& file : {good, std::string("BM"), good}) {
        EXPECT_EQ(Load(file), file == good ? 0 : 1);
        EXPECT_EQ(m_display.m_apDib[1] != nullptr, file == good);
    }
    EXPECT_STREQ(m_display.m_apDib[1]->m_szFile, m_folder.Path("picture.bmp").c_str());
    ASSERT_EQ(Load(good, 575), 0);
    for (int i = 0; i < 2; ++i) EXPECT_EQ(m_display.FreeDib(575), 0);
    EXPECT_EQ(m_display.m_apDib[575], nullptr);
    for (const int slot : {576, -1}) EXPECT_EQ(Load(good, slot), 1);
}

TEST_F(Pictures, DrawsReportWhatStoppedThem) {
    const RECT rect = {0, 0, 1, 1}, twice = {0, 0, 2, 2};
    EXPECT_EQ(m_display.DrawDib(nullptr, &rect, &rect, 5), 1);  // no such surface
    ASSERT_EQ(Load(test::Bmp(1, 1, 0x123456)), 0);
    EXPECT_EQ(m_display.DrawDibSlot(1, &rect, &rect, 4), 0);
    EXPECT_EQ(At(0, 0), 0x123456u);
    test::Order(test::Call::kSurfaceDC, E_FAIL);
    EXPECT_EQ(m_display.DrawDibSlot(1, &rect, &rect, 4), 1);
    EXPECT_EQ(At(0, 0), 0u);
    HDC hDC = nullptr;
    ASSERT_EQ(m_display.m_apParts[4]->GetDC(&hDC), DD_OK);
    CDib& dib = *m_display.m_apDib[1];
    EXPECT_EQ(dib.Draw(hDC, nullptr, &rect) + dib.Draw(hDC, &rect, nullptr) + dib.Draw(nullptr, &rect, &rect),
              3);
    EXPECT_EQ(dib.Draw(hDC, &twice, &rect), 1);  // nothing is stretched
    EXPECT_EQ(dib.Draw(hDC, &rect), 0);
    EXPECT_EQ(dib.Draw(hDC, 7, 8, 1, 1), 0);
    dib.Free();
    EXPECT_EQ(dib.Draw(hDC, &rect), 1);
    m_display.m_apParts[4]->ReleaseDC(hDC);
    EXPECT_EQ(At(7, 8), 0x123456u);
    EXPECT_EQ(m_display.DrawDibSlot(2, &rect, &rect, 4), 0);  // an empty slot blanks
    EXPECT_EQ(At(7, 8), 0u);
}

}  // namespace
