#include "display/present.h"

#include <gtest/gtest.h>

#include <string>

#include "display/ddraw.h"
#include "host/headless/headless.h"

namespace {

bool Same(const RECT& a, const RECT& b) {
    return a.left == b.left && a.top == b.top && a.right == b.right && a.bottom == b.bottom;
}

std::string Text(const RECT& r) {
    return std::to_string(r.left) + " " + std::to_string(r.top) + " " + std::to_string(r.right) + " " +
           std::to_string(r.bottom);
}

TEST(Present, WhatShowsOfAWindowAtTheDesktopsEdges) {
    const struct {
        const char* pszWhere;
        RECT area, clamped, source;  // on a desktop of 1024 by 768, back surface of 452 by 280
    } rows[] = {
        {"inside", {300, 200, 752, 480}, {300, 200, 752, 480}, {0, 0, 452, 280}},
        {"over the left edge", {-100, 200, 352, 480}, {0, 200, 352, 480}, {100, 0, 452, 280}},
        {"over the upper edge", {300, -50, 752, 230}, {300, 0, 752, 230}, {0, 50, 452, 280}},
        {"over the right edge", {672, 200, 1124, 480}, {672, 200, 1024, 480}, {0, 0, 352, 280}},
        {"over the lower edge", {300, 600, 752, 880}, {300, 600, 752, 768}, {0, 0, 452, 168}},
        {"over two edges", {-10, -20, 442, 260}, {0, 0, 442, 260}, {10, 20, 452, 280}},
        {"over the other two", {1000, 700, 1452, 980}, {1000, 700, 1024, 768}, {0, 0, 24, 68}},
        {"in the corner", {0, 0, 452, 280}, {0, 0, 452, 280}, {0, 0, 452, 280}},
        {"in the far corner", {572, 488, 1024, 768}, {572, 488, 1024, 768}, {0, 0, 452, 280}},
    };
    for (const auto& row : rows) {
        const RECT clamped = ClampToDesktop(row.area, 1024, 768);
        EXPECT_TRUE(Same(clamped, row.clamped)) << row.pszWhere << ": " << Text(clamped);
        const RECT source = SourceOfArea(clamped, 1024, 768, 452, 280);
        EXPECT_TRUE(Same(source, row.source)) << row.pszWhere << ": " << Text(source);
    }
    const RECT narrow = SourceOfArea(ClampToDesktop({-30, 0, 422, 280}, 400, 300), 400, 300, 452, 280);
    EXPECT_TRUE(Same(narrow, {52, 0, 452, 280})) << Text(narrow);  // the left edge's rule comes first
}

TEST(Present, NothingOfAWindowOffTheDesktop) {
    const RECT areas[] = {{1024, 0, 1476, 280}, {5000, 0, 5452, 280}, {-452, 0, 0, 280},
                          {-999, 0, -547, 280}, {0, 768, 452, 1048},  {0, -280, 452, 0}};
    for (const RECT& area : areas) {
        const RECT clamped = ClampToDesktop(area, 1024, 768);
        EXPECT_TRUE(clamped.left >= clamped.right || clamped.top >= clamped.bottom)
            << Text(area) << " -> " << Text(clamped);
    }
}

}  // namespace
