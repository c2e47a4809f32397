// What no chart that the program plays can show. Everything else is in tests/charts.
#include "playback/playback.h"

#include <gtest/gtest.h>

#include <climits>
#include <numeric>

#include "platform/resources.h"
#include "playback/bga.h"
#include "playback/layout.h"
#include "support/chart_file.h"
#include "support/program.h"
#include "system/globals.h"

namespace {

TEST(Playback, WithoutDevicesOrLists) {
    test::ResetProgram();
    const auto chart = CompileChart("#BPM 3750\n#WAV01 a\n#BMP01 a\n#00011:01\n#00004:01\n#00107:01\n");
    g_pBMS = chart.get();
    InitPlayLists();
    SeekMeasure(1, &g_dwSeekTime);
    g_bPaused = 0;
    g_dwStartTime = timeGetTime() - 100;
    PlayFrame();  // goes past the end
    EXPECT_EQ(g_bPaused, 1);
    FreePlayLists();
    for (int32_t n : {g_nBgmCount, g_nBgaCount, g_nTempoCount, g_nNoteCount, g_nBarCount, g_nBgmCursor,
                      g_nBgaCursor, g_nTempoCursor, g_nNoteCursor, g_nBarCursor})
        EXPECT_EQ(n, 0);
    for (const BmsEvent* list : {g_pBgmList, g_pBgaList, g_pTempoList, g_pNoteList, g_pBarList})
        EXPECT_EQ(list, nullptr);
    PlayFrame();
    int32_t time = 5;
    EXPECT_EQ(SeekMeasure(0, &time), 1);
    EXPECT_EQ(time, 5);
    g_pBMS = nullptr;
}

TEST(Playback, SumsOfTheLargestNumbersAreExact) {
    BgaRects rects;
    EXPECT_TRUE(PlaceWholePicture(INT_MAX, INT_MAX, &rects));
    EXPECT_EQ(rects.dest.right + rects.source.right, 256 + 256);
    EXPECT_EQ(rects.source.top, INT_MAX - 256);
    EXPECT_EQ(rects.source.bottom, INT_MAX);
    EXPECT_FALSE(PlaceWholePicture(INT_MIN, 5, &rects));
    EXPECT_FALSE(PlaceWholePicture(5, 0, &rects));
    EXPECT_TRUE(PlaceDefinition({INT_MIN, INT_MIN, INT_MAX, INT_MAX, INT_MIN, INT_MIN, 1}, 300, &rects));
    for (const BgaDef& def :
         {BgaDef{INT_MAX - 9, 0, INT_MAX, 9, INT_MIN, 0, 1},
          BgaDef{INT_MAX, INT_MAX, INT_MIN, INT_MIN, 0, 0, 1}, BgaDef{0, 0, 300, 300, INT_MAX, INT_MIN, 1}})
        EXPECT_FALSE(PlaceDefinition(def, 300, &rects));
}

// The pictures that the program draws itself. Look at a changed one before its number goes here.
TEST(Playback, BitmapsAndIcon) {
    const ModuleResources& module = *GetProgramModule();
    std::vector<uint64_t> hashes;
    for (const BitmapResource& r : {module.pBitmaps[0], module.pBitmaps[1], module.pIcons[0]}) {
        std::vector<uint32_t> pixels(static_cast<size_t>(r.nWidth) * static_cast<size_t>(r.nHeight), 1);
        r.pfnDraw(pixels.data());
        hashes.push_back(std::accumulate(pixels.begin(), pixels.end(), uint64_t{static_cast<uint64_t>(r.nId)},
                                         [](uint64_t h, uint32_t n) { return (h ^ n) * 1099511628211u; }));
    }
    EXPECT_EQ(hashes,
              (std::vector<uint64_t>{10888396910924967419u, 17336032813829579u, 3132850524181942517u}));
}

}  // namespace
