// Loading a chart into a running player without asking.
#pragma once

#include <optional>
#include <string>

namespace app {

struct LoadRequest {
    std::string path;               // of this machine, absolute
    std::optional<int> measure;     // -1: the very beginning
    std::optional<int> line;        // of the file: the measure that holds it
    std::optional<int> hundredths;  // of the speed
};

// While it lives, the chart of that path is what it was at the beginning, however often it is written: what
// was probed is what is loaded.
class HeldChart {
public:
    explicit HeldChart(const std::string& path);
    HeldChart(const HeldChart&) = delete;
    HeldChart& operator=(const HeldChart&) = delete;
    ~HeldChart();
};

// What became of the chart before it is loaded: it is read and compiled without sound and picture.
struct Probe {
    std::string refusal;  // a sentence; empty: it can be played
    int last_measure = 0;
};
Probe ProbeChart(const std::string& path);

// How charts are read from now on.
void SetModern(bool modern);

// The measure to start from, and whether it was clamped to the last one.
int StartMeasure(const LoadRequest& request, const Probe& probe, bool* clamped);

// Replaces the chart by one that was probed, and plays it from that measure. On the main thread, outside
// dialogs.
void LoadAt(const std::string& path, int measure);
// The same with the window shown and the request's speed.
void Reload(const LoadRequest& request, int measure);

}  // namespace app
