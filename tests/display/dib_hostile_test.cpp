// Files that promise more than they hold: never a read outside their bytes, and all that is there shows.
#include <climits>

#include "display/dib_support.h"

namespace {

using test::BmpSpec;
using test::MakeBmp;

class HostileDib : public test::PictureTest {};

TEST_F(HostileDib, TruncatedAtEveryLength) {
    const BmpSpec kinds[] = {{.bits = 1},
                             {.bits = 4},
                             {.bits = 8},
                             {.bits = 16},
                             {.bits = 24},
                             {.bits = 32},
                             {.bits = 24, .header_size = 12},
                             {.bits = 4, .header_size = 12},
                             {.bits = 16, .compression = 3, .masks = {0xF800, 0x07E0, 0x001F}}};
    for (BmpSpec spec : kinds) {
        spec.width = 9;
        spec.height = 6;
        for (uint32_t i = 0; spec.bits <= 8 && i < 1u << spec.bits; ++i) spec.palette.push_back(0xFFFFFF - i);
        const std::string whole =
            MakeBmp(spec, [&](int, int) { return spec.bits == 32 ? ~0u : (1u << spec.bits) - 1; });
        const size_t nHead = test::BmpHead(spec).size(), nRow = (whole.size() - nHead) / 6;
        ASSERT_EQ(Load(whole), 0);
        ASSERT_EQ(Draw(0, 0, 0, 0, 9, 6), 0);
        const uint32_t nFull = At(0, 0);
        ASSERT_NE(nFull, 0u);
        for (size_t nLength = 54; nLength <= whole.size(); ++nLength) {
            ASSERT_EQ(Load(whole.substr(0, nLength)), 0);
            ASSERT_EQ(Draw(0, 0, 0, 0, 9, 6), 0);
            for (int i = 0; i < 9 * 6; ++i) {
                const int x = i % 9, y = i / 9;
                const size_t nEnd = nHead + nRow * static_cast<size_t>(5 - y) +
                                    (static_cast<size_t>(x + 1) * static_cast<size_t>(spec.bits) + 7) / 8;
                ASSERT_EQ(At(x, y), nEnd <= nLength ? nFull : 0u)
                    << spec.bits << " bits cut at " << nLength << ": " << x << " " << y;
            }
        }
    }
}

TEST_F(HostileDib, SizesThatTheFileCannotHold) {
    const int sizes[] = {0, 1, -1, 257, 2000000000, -2000000000, INT_MAX, INT_MIN};
    for (int nBits : {1, 4, 8, 16, 24, 32}) {
        for (uint32_t nUsed : {0u, 0x3FFFFFFFu}) {
            for (int nWidth : sizes) {
                for (int nHeight : sizes) {
                    const BmpSpec spec{
                        .width = nWidth, .height = nHeight, .bits = nBits, .colors_used = nUsed};
                    ASSERT_EQ(Load(test::BmpHead(spec) + std::string(60, '\x77')), 0);
                    const RECT near = {0, 0, 256, 256};
                    const RECT far = {INT_MIN, INT_MIN, INT_MIN + 256, INT_MIN + 256};
                    const RECT end = {INT_MAX - 256, INT_MAX - 256, INT_MAX, INT_MAX};
                    const RECT all = {INT_MIN, INT_MIN, INT_MAX, INT_MAX};
                    for (const RECT& source : {near, far, end})
                        EXPECT_EQ(m_display.DrawDibSlot(1, &near, &source, 4), 0);
                    EXPECT_EQ(m_display.DrawDibSlot(1, &all, &all, 4), 0);
                    if (nWidth > 0 && nHeight != 0) continue;
                    EXPECT_EQ(m_display.DrawDibSlot(1, &near, &near, 4), 0);
                    EXPECT_EQ(At(0, 255), 0u);
                }
            }
        }
    }
}

TEST_F(HostileDib, ATallPictureOfWhichTheFileHoldsTheLastRows) {
    // Stored from the bottom, so what is there is the picture's lower end.
    const BmpSpec spec{.width = 4, .height = 2000000000, .bits = 32};
    ASSERT_EQ(Load(test::BmpHead(spec) + std::string(4 * 4 * 3, '\x11')), 0);
    const RECT rect = {0, 0, 4, 5};
    ASSERT_EQ(m_display.DrawDibSlot(1, &rect, &rect, 4), 0);
    EXPECT_EQ(At(0, 1), 0u);
    EXPECT_EQ(At(0, 2), 0x111111u);
    EXPECT_EQ(At(3, 4), 0x111111u);
}

TEST_F(HostileDib, NegativeRectanglesDrawNothing) {
    ASSERT_EQ(Load(MakeBmp(BmpSpec(), [](int, int) { return 0xFFFFFFu; })), 0);
    const RECT rects[] = {{1, 1, 0, 0}, {0, 1, 1, 0}, {1, 0, 0, 1}, {0, 0, 0, 1}, {INT_MAX, 0, INT_MIN, 1}};
    for (const RECT& rect : rects) {
        EXPECT_EQ(m_display.DrawDibSlot(1, &rect, &rect, 4), 0);
        EXPECT_EQ(At(0, 0), 0u);
    }
}

}  // namespace
