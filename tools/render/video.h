// Picture and sound as a video file, by the ffmpeg program.
#pragma once

#include <memory>
#include <string>

#include "common/output.h"
#include "render/pass.h"

namespace render {

// Why no video can have this name: its suffix selects no format. Empty when it can.
std::string VideoNameRefusal(const std::string& name);

class Encoder;

// sound: the rendered WAV, an open file that the encoder reads.
class VideoSink : public Sink {
public:
    VideoSink(const Options& options, int sound);
    ~VideoSink() override;
    ExitCode Begin(double seconds) override;
    ExitCode OnFrame(const Moment& moment) override;
    bool SeesFrames() const override { return true; }
    ExitCode Finish() override;
    bool RingsOut() const override { return true; }

private:
    ExitCode WritePicture();
    ExitCode EncoderFailed();
    std::vector<std::string> Arguments() const;

    const Options& options_;
    const int sound_;
    tools::Output out_;
    std::unique_ptr<Encoder> encoder_;
    std::vector<uint32_t> picture_;  // shown until the next one
    int64_t count_ = 0;              // of pictures written
};

}  // namespace render
