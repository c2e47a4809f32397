// One run of the whole program on a chart, as a transcript: what is done, and what comes of it.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "platform/watch.h"
#include "render/frame_lines.h"

// Lines that begin with `> ` are inputs, the others what comes of them:
//   > lumetra LINE         the command line, with @ for the chart; always the first
//   > at MS ACTION         at that time of the run (see ActionOf); all other inputs are done in the first
//   frame: > frame T              composes a frame at chart time T > key CODE             to the window; >
//   send MESSAGE WPARAM likewise > run N                so many turns of the main loop, the last of which is
//   shown
// The chart as it was read and compiled comes with its first frame. The lines of a frame are those of
// lumetra-render's --trace, then layers that have changed, `state` and the lists. A frame that is not shown
// leaves what it fired. Numbers with a point are exact. The folder shows as `.`, a byte outside ASCII as
// \xHH.
class Session {
public:
    explicit Session(const std::filesystem::path& chart);
    std::string Play(const std::string& trace);  // of which it takes the inputs

private:
    void Put(std::string line);
    void Say(const std::string& line);  // behind what the host has captured since
    void SayChart();
    void SayBars();
    void SayObjects(const char* name, BmsObject* const* list, int count, const BmsEvent* events);
    std::string NameOf(const BmsObject& object) const;
    void SayLayers();
    void SayFrame(const std::string& lines);
    void SayList(const char* name, const BmsEvent* list, int count, int cursor);
    void OnFrame();
    void Do(const std::string& input);
    void Schedule(const std::string& input);

    std::string folder_, chart_, text_;
    std::map<int, std::string> shown_;  // of each layer
    std::vector<std::string> inputs_;
    size_t loads_ = 0, next_ = 0, titles_ = 0, boxes_ = 0, dialogs_ = 0, posted_ = 0, logged_ = 0;
    int turns_ = 0;
    bool timed_ = false;
    render::FrameLines trace_;
};
