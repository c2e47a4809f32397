// The run as text, one line per event.
#pragma once

#include <vector>

#include "chart/bms.h"
#include "common/output.h"
#include "platform/watch.h"
#include "render/pass.h"

namespace render {

// Lines, with fields separated by one blank:
//   frame N MS CHART_MS BAR TEMPO          number of the frame, clock and chart time, current bar and tempo
//   fire LIST MEASURE PLACE CHANNEL MS     a record that became due in this frame
//                                          (LIST: bar, tempo, bgm, note or bga)
//   sound SLOT FILE                        a sound started
//   draw X Y SURFACE L T R B [key]         a copy to the picture, in order
// One at a time in a process. Returning false means that error() says why.
class Trace {
public:
    ~Trace();
    bool Open(const std::string& name);
    bool Begin();  // once the chart is loaded
    bool OnFrame(int32_t now);
    bool Commit() { return out_.Commit(); }
    const std::string& error() const { return out_.error(); }

private:
    struct List {
        const char* name;
        BmsEvent** records;
        int32_t* count;
        std::vector<char> done;
    };

    static void OnCopied(const IDirectDrawSurface7* to, int x, int y, const IDirectDrawSurface7* from,
                         const RECT& rect, bool keyed);
    static void OnStarted(const IDirectSoundBuffer* buffer, bool looping);
    void ReportFired(List* list);
    void Line(const char* format, ...) __attribute__((format(printf, 2, 3)));

    static Trace* self_;
    tools::Output out_;
    std::string sounds_, draws_, text_;
    std::vector<List> lists_;
    int64_t frames_ = 0;
};

}  // namespace render
