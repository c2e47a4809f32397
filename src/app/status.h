// What an instance tells about itself.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "app/chart_lines.h"

namespace app {

enum class State { kLoading, kIdle, kRunning, kPaused, kHeld, kEnded };

const char* StateName(State state);

// A copy, so that a thread can answer while the program is busy.
struct Status {
    State state = State::kLoading;
    bool host = false;
    int measure = -1;  // the playing one, -1 before the first
    double place = 0;  // in it, 0 to 1
    int time_ms = 0;   // chart time
    double tempo = 0, speed = 1;
    bool sounding = false;  // the device has asked for sound
    bool modal = false;     // a box, menu or dialog is open
    bool watch = false;     // the chart is loaded anew when it is written
    std::string refused;    // why it was not when it was written last
    // Of the chart; change with a load alone.
    std::string path, title;
    int missing = 0;  // sounds and pictures
    ChartLines lines;
};

// The part that changes while a chart plays; on the main thread.
void UpdatePlaying(Status* status);
// The part that changes with a load.
void UpdateChart(Status* status);

nlohmann::json ToJson(const Status& status);

std::string PathToUri(const std::string& path);   // bytes that a URI does not hold as %XX
std::string PathFromUri(const std::string& uri);  // empty when it is no file URI of this machine
std::string ToUtf8(const std::string& text);      // as titles are shown

}  // namespace app
