// Charts made to be slow or large: each ends soon, with a text of bounded size that the player can read.
#include <gtest/gtest.h>

#include <chrono>
#include <functional>

#include "dialect/dialect.h"
#include "support/chart_file.h"

namespace {

std::string Times(int count, const std::function<std::string(int)>& fn) {
    std::string text;
    for (int i = 0; i < count; ++i) text += fn(i);
    return text;
}
std::string Times(int count, const std::string& text) {
    return Times(count, [&](int) { return text; });
}
std::string Pad(int n, size_t width) {
    const std::string digits = std::to_string(n);
    return std::string(width - std::min(width, digits.size()), '0') + digits;
}
std::string Pair62(int n) {
    const char* digits = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    return {digits[n / 62], digits[n % 62]};
}

struct Row {
    const char* what;
    std::string text;
};

const std::string kNotes = "#WAV01 a.wav\n#00011:01\n#00111:01\n";

const Row kRows[] = {
    {"nested #RANDOM, closed by strangers",
     kNotes + Times(10000, "#RANDOM 2\n#IF 1\n") + "#00211:01\n" + Times(100000, "#ENDSW\n#CASE 1\n#SKIP\n")},
    {"nested #SWITCH", kNotes + Times(100000, "#SWITCH 1\n#CASE 1\n") + Times(100000, "#SKIP\n#ENDIF\n")},
    {"a million stops",
     kNotes + "#STOP01 1\n" +
         Times(1000, [](int m) { return "#" + Pad(m, 3) + "09:" + Times(1000, "01") + "\n"; })},
    {"a hundred thousand #STP on one place", kNotes + Times(100000, "#STP 001.001 1\n")},
    {"measure 999 alone", "#WAV01 a.wav\n#99911:01\n"},
    {"3,843 sounds of base 62 on every measure",
     "#BASE 62\n" + Times(3843,
                          [](int n) {
                              return "#WAV" + Pair62(n + 1) + " " + std::to_string(n) + ".wav\n#" +
                                     Pad(n % 1000, 3) + "11:" + Pair62(n + 1) + "\n";
                          })},
    {"fast and slow beyond reason", kNotes + "#BPM01 1e300\n#BPM02 1e-300\n#BPM03 1e999\n#STOP01 "
                                             "1e300\n#00108:01020301\n#00109:01\n#00211:01\n"},
    {"long and short beyond reason",
     kNotes + "#00102:1e300\n#00202:1e-300\n#00302:4e-324\n#00411:01\n#00511:01\n"},
    {"a line of a megabyte", kNotes + "#00111:" + Times(500000, "01") + "\n"},
    {"a grid of its own for each of half a million objects",
     kNotes + Times(1000, [](int m) { return "#" + Pad(m, 3) + "01:" + Times(509, "01") + "\n"; })},
    {"one place, ten thousand lines", kNotes + Times(10000, "#00101:" + std::string(1006, '0') + "01\n")},
    {"ten thousand numbers of one file", Times(1295,
                                               [](int n) {
                                                   return "#WAV" + Pair62(n + 62) + " same.wav\n#001" +
                                                          (n % 2 ? "11" : "01") + ":" + Pair62(n + 62) + "\n";
                                               })},
    {"films at a hundred thousand places of three channels",
     kNotes +
         Times(1295,
               [](int n) {
                   return "#BMP" + Pair62(n / 36 * 62 + n % 36 + 1) + " " + std::to_string(n % 70) + ".mpg\n";
               }) +
         Times(999,
               [](int m) {
                   std::string lines = "#" + Pad(m, 3) + "02:1000\n";
                   for (const char* channel : {"04", "06", "07"})
                       lines += "#" + Pad(m, 3) + channel + ":" + Times(33, "010203") + "\n";
                   return lines;
               })},
};
TEST(Hostile, EndsSoon) {
    for (const auto& row : kRows) {
        const auto start = std::chrono::steady_clock::now();
        dialect::Options options;
        options.sound_ms = [](std::string_view) { return 1.0; };
        options.film = [](std::string_view name) {
            return name.ends_with(".mpg") ? dialect::FilmLook{1e8, 1e8} : dialect::FilmLook();
        };
        const dialect::Plan plan = dialect::MakePlan(row.text, options);
        std::string text = plan.unchanged ? "" : dialect::WriteText(plan);
        if (text.empty()) text = Lines(row.text);
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
        EXPECT_LT(taken.count(), 20) << row.what;  // under a sanitizer on a busy machine
        EXPECT_LT(text.size(), 16 * row.text.size() + 100000) << row.what;
        EXPECT_LT(plan.findings.size(), 1000u) << row.what;
        const auto chart = LoadChart(text);
        ASSERT_TRUE(chart && chart->Compile() == 0) << row.what;
        for (const auto& event : plan.events) EXPECT_TRUE(event.ms >= 1000) << row.what;
    }
}

}  // namespace
