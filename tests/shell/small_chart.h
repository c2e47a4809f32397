// A chart of a few seconds with one long sound, written for a test.
#pragma once

#include <string>

#include "support/media.h"
#include "support/tempfolder.h"

namespace test {

// At 120 BPM a measure lasts two seconds. The sound starts with measure 0, at 1000 ms of chart time, and
// lasts far longer than the chart, whose last object stands in measure 2: it ends at 7000 ms.
inline const std::string kChartText =
    Chart({"#PLAYER 1", "#GENRE genre", "#TITLE title", "#ARTIST artist", "#BPM 120", "#WAV01 long.wav",
           "#00001:01", "#00111:02", "#00211:02"});
constexpr int64_t kChartEnd = 7000;  // ms

// Writes it and its sound into the folder; gives its name as the system takes it.
inline std::string WriteChart(const TempFolder& folder, const std::string& name = "song.bms",
                              const std::string& text = kChartText) {
    folder.Write("long.wav", SquareWav(60 * 8000, 20, {1, 8000, 8}));
    return TempFolder::Backslashes(folder.Write(name, text));
}

}  // namespace test
