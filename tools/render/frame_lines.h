// What happens between two frames, as text.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "chart/bms.h"
#include "platform/watch.h"

namespace render {

// Lines, with fields separated by one blank:
//   frame N MS CHART_MS BAR TEMPO          number of the frame, clock and chart time, current bar and tempo
//   fire LIST MEASURE PLACE CHANNEL MS     a record that became due in this frame
//                                          (LIST: bar, tempo, bgm, note or bga)
//   sound SLOT FILE                        a sound started
//   draw X Y SURFACE L T R B [key]         a copy to the picture, in order
// One at a time in a process; listens from its construction on.
class FrameLines {
public:
    FrameLines();
    ~FrameLines();
    FrameLines(const FrameLines&) = delete;
    FrameLines& operator=(const FrameLines&) = delete;

    void Begin();  // once the chart is loaded, or starts again at the start measure
    // The lines since the call before, valid until the next. now: the frame's chart time. fired: whether
    // records are told of at all.
    const std::string& Take(int32_t now, bool fired);

private:
    struct List {
        const char* name;
        BmsEvent** records;
        int32_t* count;
        std::vector<char> done;
    };

    static bool OnCall(const CallFacts& call, int64_t* result);
    void OnCopied(const CallFacts& copy);
    void OnStarted(const void* buffer);
    void ReportFired(List* list);
    void Line(const char* format, ...) __attribute__((format(printf, 2, 3)));

    static FrameLines* self_;
    const CallHook previous_;  // is still asked
    std::string sounds_, draws_, text_;
    std::vector<List> lists_;
    int64_t frames_ = 0;
};

}  // namespace render
