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
// One at a time in a process; listens from its construction on.
class TraceSink : public Sink {
public:
    explicit TraceSink(const std::string& name);
    ~TraceSink() override;
    ExitCode Begin(double seconds) override;
    ExitCode OnFrame(const Moment& moment) override;
    ExitCode Finish() override { return Result(out_.Commit()); }

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
    ExitCode Result(bool good) { return good ? kGood : Complain(kOutput, out_.error()); }
    void ReportFired(List* list);
    void Line(const char* format, ...) __attribute__((format(printf, 2, 3)));

    static TraceSink* self_;
    const std::string name_;
    tools::Output out_;
    std::string sounds_, draws_, text_;
    std::vector<List> lists_;
    int64_t frames_ = 0;
};

}  // namespace render
