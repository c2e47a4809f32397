// The run as text, one line for each thing that happens.
#pragma once

#include <vector>

#include "chart/bms.h"
#include "platform/watch.h"
#include "render/output.h"
#include "render/pass.h"

namespace render {

// Lines, fields separated by one blank:
//   frame N MS CHART_MS BAR TEMPO     the frame's number, clock and chart time, current bar and tempo
//   fire LIST MEASURE PLACE CHANNEL MS     a record that became due in it; bar, tempo, bgm, note or bga
//   sound SLOT FILE                    a sound started
//   draw X Y SURFACE L T R B [key]     a copy to the picture, in order
// One at a time.
class Trace {
public:
    ~Trace();
    bool Open(const std::string& name);
    void Listen();  // what Open does, without a file
    bool Begin();  // the chart is there
    bool OnFrame(int32_t now);
    const std::string& TakeFrame(int32_t now);  // the lines of this frame; valid until the next
    bool Commit() { return out_.Commit(); }

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
    void TellFired(List* list);
    void Line(const char* format, ...) __attribute__((format(printf, 2, 3)));

    static Trace* self_;
    Output out_;
    std::string sounds_, draws_, text_;
    std::vector<List> lists_;
    int64_t frames_ = 0;
};

}  // namespace render
