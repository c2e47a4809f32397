// The run as a file of text, in the lines of frame_lines.h.
#pragma once

#include <string>

#include "common/output.h"
#include "render/frame_lines.h"
#include "render/pass.h"

namespace render {

class TraceSink : public Sink {
public:
    explicit TraceSink(const std::string& name) : name_(name) {}
    ExitCode Begin(double seconds) override;
    ExitCode OnFrame(const Moment& moment) override;
    bool SeesFrames() const override { return true; }
    ExitCode Finish() override { return Result(out_.Commit()); }

private:
    ExitCode Result(bool good) { return good ? kGood : Complain(kOutput, out_.error()); }

    const std::string name_;
    tools::Output out_;
    FrameLines lines_;
};

}  // namespace render
