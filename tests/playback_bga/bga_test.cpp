// Picture events: which pixels of the picture stand where in the layer.
#include "playback/bga.h"

#include <gtest/gtest.h>

#include <climits>

#include "display/ddraw.h"
#include "display/dib.h"
#include "playback/layout.h"
#include "playback/playback.h"
#include "shell/shell.h"
#include "support/bmp_writer.h"
#include "support/calls.h"
#include "support/program.h"
#include "support/tempfolder.h"

namespace {

// Every pixel of a picture is another: 1 + x + 1024 * y from its top left.
uint32_t PixelOf(int x, int y) {
    return static_cast<uint32_t>(1 + x + 1024 * y);
}

// What a layer shows: the rectangle nWidth by nHeight of the picture from nFromX, nFromY at nX, nY, black
// around it.
struct Shown {
    int nX, nY, nFromX, nFromY, nWidth, nHeight;
};
constexpr Shown kBlank = {0, 0, 0, 0, 0, 0};

class Bga : public testing::Test {
protected:
    void SetUp() override {
        test::ResetProgram();
        g_pDDraw = new CDDraw;
        ASSERT_EQ(g_pDDraw->Init(nullptr, 0, 0, SCREEN_WIDTH, SCREEN_HEIGHT), 0);
        for (int nLayer : {LAYER_BGA, LAYER_POOR, LAYER_OVERLAY}) {
            ASSERT_EQ(g_pDDraw->CreateParts(nLayer, LAYER_SIZE, LAYER_SIZE), 0);
            g_pDDraw->ClearParts(nLayer, 0x00C0FFEE);  // a former picture
        }
    }
    void TearDown() override { test::ResetProgram(); }

    void LoadPicture(int nWidth, int nHeight, int nSlot = 1) {
        const std::string bytes = test::MakeBmp({.width = nWidth, .height = nHeight}, PixelOf);
        const std::string path = m_folder.Write("picture.bmp", bytes);
        ASSERT_EQ(g_pDDraw->LoadDib(path.c_str(), nSlot), 0);
    }
    static void Fire(int32_t nChannel, void* pObject) {
        BmsEvent event = {};
        event.nChannel = nChannel;
        event.pObject = pObject;
        FireBga(&event);
    }
    static void FireDefinition(BgaDef def, int nLayer = LAYER_BGA) {
        Fire(BGADEF_CHANNEL_BASE + nLayer, &def);
    }

    static void ExpectLayer(const Shown& shown, int nLayer = LAYER_BGA) {
        const PixelView layer = test::Pixels(g_pDDraw->m_apParts[nLayer]);
        for (int y = 0; y < LAYER_SIZE; ++y) {
            for (int x = 0; x < LAYER_SIZE; ++x) {
                const int u = x - shown.nX, v = y - shown.nY;
                const bool bIn = u >= 0 && v >= 0 && u < shown.nWidth && v < shown.nHeight;
                ASSERT_EQ(layer.pPixels[static_cast<size_t>(y) * layer.nStride + static_cast<size_t>(x)],
                          bIn ? PixelOf(shown.nFromX + u, shown.nFromY + v) : 0u)
                    << x << " " << y;
            }
        }
    }

    test::TempFolder m_folder;
};

TEST_F(Bga, WholePictures) {
    const struct {
        int nWidth, nHeight;
        Shown shown;
    } rows[] = {
        {100, 100, {78, 0, 0, 0, 100, 100}}, {101, 50, {78, 0, 0, 0, 101, 50}},
        {256, 256, {0, 0, 0, 0, 256, 256}},  {255, 255, {1, 0, 0, 0, 255, 255}},
        {257, 257, {0, 0, 0, 0, 256, 256}},  {300, 200, {0, 0, 0, 0, 256, 200}},
        {200, 300, {28, 0, 0, 0, 200, 256}}, {1, 1, {128, 0, 0, 0, 1, 1}},
        {640, 480, {0, 0, 0, 0, 256, 256}},  {256, 1, {0, 0, 0, 0, 256, 1}},
        {2, 256, {127, 0, 0, 0, 2, 256}},    {100, -100, {78, 0, 0, 0, 100, 100}},
        {300, -480, {0, 0, 0, 0, 256, 256}}, {100, 0, kBlank},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.nWidth << " by " << row.nHeight);
        LoadPicture(row.nWidth, row.nHeight);
        Fire(LAYER_BGA, g_pDDraw->m_apDib[1]);
        ExpectLayer(row.shown);
    }
}

TEST_F(Bga, RectanglesOfAPicture) {
    const struct {
        const char* pszWhat;
        int nWidth, nHeight;  // of the picture
        BgaDef def;           // from x, y to x, y; place; picture
        Shown shown;
    } rows[] = {
        {"all of it", 256, 256, {0, 0, 256, 256, 0, 0, 1}, {0, 0, 0, 0, 256, 256}},
        {"a part", 200, 150, {10, 20, 60, 50, 30, 40, 1}, {30, 40, 10, 20, 50, 30}},
        {"cut left", 200, 150, {10, 20, 60, 50, -10, 40, 1}, {0, 40, 20, 20, 40, 30}},
        {"cut right", 200, 150, {10, 20, 60, 50, 240, 40, 1}, {240, 40, 10, 20, 16, 30}},
        {"cut above", 200, 150, {10, 20, 60, 50, 30, -7, 1}, {30, 0, 10, 27, 50, 23}},
        {"cut below", 200, 150, {10, 20, 60, 50, 30, 250, 1}, {30, 250, 10, 20, 50, 6}},
        {"cut left and right", 600, 150, {5, 0, 505, 100, -50, 3, 1}, {0, 3, 55, 0, 256, 100}},
        {"cut above and below", 200, 600, {5, 7, 105, 507, 9, -50, 1}, {9, 0, 5, 57, 100, 256}},
        {"cut at all four", 600, 600, {0, 0, 600, 600, -100, -200, 1}, {0, 0, 100, 200, 256, 256}},
        {"one pixel in the corner", 20, 20, {19, 19, 20, 20, 255, 255, 1}, {255, 255, 19, 19, 1, 1}},
        {"left of the layer", 200, 150, {10, 20, 60, 50, -50, 40, 1}, kBlank},
        {"far left of the layer", 200, 150, {10, 20, 60, 50, -90, 40, 1}, kBlank},
        {"right of the layer", 200, 150, {10, 20, 60, 50, 256, 40, 1}, kBlank},
        {"far right", 200, 150, {10, 20, 60, 50, 999, 40, 1}, kBlank},
        {"above", 200, 150, {10, 20, 60, 50, 40, -30, 1}, kBlank},
        {"below", 200, 150, {10, 20, 60, 50, 40, 300, 1}, kBlank},
        {"over its right and lower edges", 50, 40, {30, 20, 90, 90, 5, 6, 1}, {5, 6, 30, 20, 20, 20}},
        {"over its left and upper edges", 50, 40, {-5, -6, 20, 10, 100, 101, 1}, {105, 107, 0, 0, 20, 10}},
        {"outside the picture", 50, 40, {50, 0, 90, 40, 5, 6, 1}, kBlank},
        {"outside it above", 50, 40, {0, -9, 20, 0, 5, 6, 1}, kBlank},
        {"all zero", 50, 40, {0, 0, 0, 0, 0, 0, 0}, kBlank},
        {"no picture", 50, 40, {0, 0, 9, 9, 0, 0, 7}, kBlank},
        {"no such slot", 50, 40, {0, 0, 9, 9, 0, 0, 576}, kBlank},
        {"a slot below the first", 50, 40, {0, 0, 9, 9, 0, 0, -1}, kBlank},
        {"empty", 50, 40, {5, 5, 5, 9, 0, 0, 1}, kBlank},
        {"negative", 50, 40, {9, 0, 5, 9, 0, 0, 1}, kBlank},
        {"negative, made positive by no cut", 50, 40, {20, 0, 10, 9, 300, 0, 1}, kBlank},
        {"negative below", 50, 40, {0, 9, 9, 5, 0, -20, 1}, kBlank},
        {"stored from the top", 200, -150, {10, 20, 60, 50, -10, 250, 1}, {0, 250, 20, 20, 40, 6}},
        {"a large definition", 300, 300, {0, 0, INT_MAX, INT_MAX, 0, 0, 1}, {0, 0, 0, 0, 256, 256}},
        {"larger",
         300,
         300,
         {INT_MIN, INT_MIN, INT_MAX, INT_MAX, INT_MIN, INT_MIN, 1},
         {0, 0, 0, 0, 256, 256}},
        {"the largest places", 300, 300, {0, 0, 300, 300, INT_MAX, INT_MIN, 1}, kBlank},
        {"far from the picture", 300, 300, {INT_MAX - 9, 0, INT_MAX, 9, INT_MIN, 0, 1}, kBlank},
        {"negative by far", 300, 300, {INT_MAX, INT_MAX, INT_MIN, INT_MIN, 0, 0, 1}, kBlank},
        {"far above the picture", 300, 300, {0, INT_MIN, 9, INT_MIN + 9, 0, 0, 1}, kBlank},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.pszWhat);
        LoadPicture(row.nWidth, row.nHeight);
        g_pDDraw->ClearParts(LAYER_BGA, 0x00C0FFEE);
        FireDefinition(row.def);
        ExpectLayer(row.shown);
    }
}

TEST_F(Bga, EachLayerHasItsChannelAndOthersChangeNothing) {
    LoadPicture(40, 30);
    for (int nLayer : {LAYER_POOR, LAYER_OVERLAY}) {
        Fire(nLayer, g_pDDraw->m_apDib[1]);
        ExpectLayer({108, 0, 0, 0, 40, 30}, nLayer);
        FireDefinition({0, 0, 40, 30, 3, 4, 1}, nLayer);
        ExpectLayer({3, 4, 0, 0, 40, 30}, nLayer);  // the whole picture is gone
        Fire(nLayer, nullptr);
        ExpectLayer(kBlank, nLayer);
    }
    Fire(BGADEF_CHANNEL_BASE + LAYER_OVERLAY, nullptr);
    ExpectLayer(kBlank, LAYER_OVERLAY);
    for (int32_t nChannel : {0, 1, 3, 5, 8, 0x11, 3840, 3843, 3845, 3848, -1, INT32_MIN, INT32_MAX})
        Fire(nChannel, g_pDDraw->m_apDib[1]);
    EXPECT_EQ(test::PixelAt(g_pDDraw->m_apParts[LAYER_BGA], 128, 0), 0x00C0FFEEu);
}

TEST_F(Bga, FailuresLeaveABlankLayerOrNone) {
    LoadPicture(40, 30);
    test::Order(test::Call::kSurfaceDC, E_FAIL);
    Fire(LAYER_BGA, g_pDDraw->m_apDib[1]);
    ExpectLayer(kBlank);
    g_pDDraw->m_apParts[LAYER_POOR]->Release();
    g_pDDraw->m_apParts[LAYER_POOR] = nullptr;
    Fire(LAYER_POOR, g_pDDraw->m_apDib[1]);
    FireDefinition({0, 0, 9, 9, 0, 0, 1}, LAYER_POOR);
}

TEST(BgaRectangles, SumsOfTheLargestNumbersAreExact) {
    BgaRects rects;
    EXPECT_TRUE(PlaceWholePicture(INT_MAX, INT_MAX, &rects));
    EXPECT_EQ(rects.dest.right, 256);
    EXPECT_EQ(rects.source.right, 256);
    EXPECT_EQ(rects.source.top, INT_MAX - 256);
    EXPECT_EQ(rects.source.bottom, INT_MAX);
    EXPECT_FALSE(PlaceWholePicture(INT_MIN, 5, &rects));
    EXPECT_FALSE(PlaceWholePicture(5, 0, &rects));
    EXPECT_TRUE(PlaceDefinition({0, 44, 10, 60, 0, 0, 1}, 300, &rects));
    EXPECT_EQ(rects.source.top, 240);  // 300 - 44 - 16
    EXPECT_EQ(rects.source.bottom, 256);
}

}  // namespace
