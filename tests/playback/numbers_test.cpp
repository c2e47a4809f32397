#include <sstream>

#include "playback/draw.h"
#include "playback/player.h"

namespace {

class Numbers : public Player {
protected:
    // The characters drawn in a row, as `x:character`.
    static std::string Row(int y) {
        std::istringstream lines(recorder::Take());
        std::string row;
        for (std::string line; std::getline(lines, line);) {
            const size_t blank = line.find(' '), comma = line.find(',');
            EXPECT_EQ(line.substr(comma + 1, 3), std::to_string(y)) << line;
            row += line.substr(blank + 1, comma - blank - 1) + ":" + line.substr(0, blank) + " ";
        }
        return row;
    }
};

TEST_F(Numbers, PlayTime) {
    const std::pair<int32_t, const char*> rows[] = {
        {0, "224:0 230:colon 236:0 242:0 "},
        {243999, "224:4 230:colon 236:0 242:3 "},
        {600000, "218:1 224:0 230:colon 236:0 242:0 "},
        {5999999, "218:9 224:9 230:colon 236:5 242:9 "},
        {6000000, "218:0 224:0 230:colon 236:0 242:0 "},  // 100 minutes show their last two digits
        {-1, "224:0 230:colon 236:0 242:0 "},
        {INT32_MIN, "224:0 230:colon 236:0 242:0 "},
        {INT32_MAX, "218:9 224:1 230:colon 236:2 242:3 "},
    };
    for (const auto& [time, row] : rows) {
        DrawPlayTime(time);
        EXPECT_EQ(Row(258), row) << time;
    }
}

TEST_F(Numbers, BarCounter) {
    const struct {
        int32_t current, total;
        const char* row;
    } rows[] = {
        {5, 7, "218:5 224:slash 230:7 "},
        {5, 12, "224:5 230:slash 236:1 242:2 "},
        {10, 12, "218:1 224:0 230:slash 236:1 242:2 "},
        {5, 120, "230:5 236:slash 242:1 248:2 254:0 "},
        {15, 120, "224:1 230:5 236:slash 242:1 248:2 254:0 "},
        {105, 120, "218:1 224:0 230:5 236:slash 242:1 248:2 254:0 "},
        {99, 100, "224:9 230:9 236:slash 242:1 248:0 254:0 "},
        {0, 105, "230:0 236:slash 242:1 248:0 254:5 "},
        {1000, 1001, "218:0 224:0 230:0 236:slash 242:0 248:0 254:1 "},
        {999, 1001, "218:9 224:9 230:9 236:slash 242:0 248:0 254:1 "},
    };
    for (const auto& row : rows) {
        DrawBarCounter(row.current, row.total);
        EXPECT_EQ(Row(269), row.row) << row.current << '/' << row.total;
    }
}

TEST_F(Numbers, Tempo) {
    const std::pair<double, const char*> rows[] = {
        {130.0, "285:1 291:3 297:0 303:point 309:0 315:0 "},
        {99.5, "285:9 291:9 297:point 303:5 309:0 "},
        {0.004, "285:0 291:point 297:0 303:0 "},
        {1000.25, "285:1 291:0 297:0 303:0 309:point 315:2 "},
        {1234567.0, "285:1 291:2 297:3 303:4 309:5 315:6 "},
        {1e308, "285:1 291:0 297:0 303:0 309:0 315:0 "},
        {147.125, "285:1 291:4 297:7 303:point 309:1 315:2 "},  // halves go to the even digit
        {147.375, "285:1 291:4 297:7 303:point 309:3 315:8 "},
    };
    for (const auto& [tempo, row] : rows) {
        DrawTempo(tempo);
        EXPECT_EQ(Row(259), row) << tempo;
    }
}

TEST_F(Numbers, BarNumber) {
    const std::pair<int32_t, const char*> rows[] = {
        {0, "13:0 "}, {42, "7:4 13:2 "}, {999, "1:9 7:9 13:9 "}, {1000, "1:1 7:0 13:0 "}};
    for (const auto& [bar, row] : rows) {
        DrawBarNumber(bar, 100);
        EXPECT_EQ(Row(100), row) << bar;
    }
}

}  // namespace
