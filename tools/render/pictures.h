// Pictures of single moments.
#pragma once

#include "render/pass.h"

namespace render {

// Writes a PNG for each place into the folder, which it creates.
class PictureSink : public Sink {
public:
    explicit PictureSink(const Options& options) : options_(options) {}
    ExitCode Begin(double seconds) override;
    ExitCode OnFrame(const Moment& moment) override;
    bool SeesFrames() const override { return true; }
    ExitCode Finish() override;
    bool IsDone() const override { return next_ == wanted_.size(); }

private:
    struct Wanted {
        int64_t time;  // chart time in ms
        size_t index;  // in the options' places
    };

    ExitCode Save(const headless::Frame& frame, size_t index);

    const Options& options_;
    std::vector<Wanted> wanted_;  // by time
    size_t next_ = 0;
};

// The rows of a frame, enlarged: scale * width by scale * height pixels of 4 bytes, B G R X.
void Enlarge(const headless::Frame& frame, int scale, std::vector<uint32_t>* pixels);

}  // namespace render
