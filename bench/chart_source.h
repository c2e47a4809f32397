// Generates large charts, the same bytes each time.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

struct ChartSize {
    int measures = 999;
    int objects = 200;  // sounds per measure, spread over 8 background lines and both sides' lanes
};

inline std::string MakeChart(const ChartSize& size) {
    uint64_t state = 1;
    const auto below = [&](uint32_t n) {
        state = state * 6364136223846793005u + 1442695040888963407u;
        return static_cast<uint32_t>((state >> 33) % n);
    };
    const auto id = [](uint32_t n) {
        const char* digits = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";
        return std::string{digits[n / 36], digits[n % 36]};
    };
    std::string text = "#PLAYER 3\r\n#TITLE a large chart\r\n#BPM 130\r\n";
    for (uint32_t i = 1; i < 576; ++i) text += "#WAV" + id(i) + " sound" + id(i) + ".wav\r\n";
    for (uint32_t i = 1; i < 200; ++i) text += "#BPM" + id(i) + " " + std::to_string(80 + i * 0.7) + "\r\n";
    static const char* lanes[] = {"01", "01", "01", "01", "01", "01", "01", "01", "11",
                                  "12", "13", "14", "15", "16", "18", "19", "21", "22",
                                  "23", "24", "25", "26", "28", "29", "04"};
    static const uint32_t grids[] = {8, 12, 16, 24, 32, 48, 64, 96};
    constexpr int lines = sizeof lanes / sizeof *lanes;
    for (int m = 0; m < size.measures; ++m) {
        char head[32];
        const auto line = [&](const char* channel, int count, uint32_t limit) {
            const uint32_t grid = grids[2 + below(6)];
            std::string data(grid * 2, '0');
            for (int i = 0; i < count; ++i) data.replace(below(grid) * 2, 2, id(1 + below(limit)));
            std::snprintf(head, sizeof head, "#%03d%s:", m, channel);
            text += head + data + "\r\n";
        };
        if (m % 7 == 6) {
            std::snprintf(head, sizeof head, "#%03d02:0.75\r\n", m);
            text += head;
        }
        for (const char* channel : lanes) line(channel, size.objects / lines, 575);
        if (m % 3 == 1) line("08", 2, 199);
        if (m % 5 == 2) line("03", 1, 255);
    }
    return text;
}
