// The sound of a pass as a WAV, FLAC or Ogg file, whole or as a preview.
#pragma once

#include <string>

#include "render/audio_file.h"
#include "render/pass.h"
#include "render/take.h"

namespace render {

struct Tags {
    std::string title, artist;  // UTF-8; may be empty
};

// Keeps the sound until the pass is over where its level is wanted; otherwise writes it as it comes.
class AudioSink : public Sink {
public:
    explicit AudioSink(const Options& options) : options_(options) {}
    ExitCode Begin(double seconds) override;
    ExitCode OnSound(const float* samples, int frames) override;
    ExitCode Finish() override;
    double MostSeconds() const override;
    bool RingsOut() const override { return true; }

private:
    const Options& options_;
    Tags tags_;
    AudioFile file_;
    Take take_;
};

// A passage of the chart, by default the densest that begins on a measure. Starts the chart only as long
// before it as its longest sound lasts.
class PreviewSink : public Sink {
public:
    explicit PreviewSink(const Options& options) : options_(options) {}
    ExitCode Begin(double seconds) override;
    ExitCode OnSound(const float* samples, int frames) override;
    ExitCode Finish() override;
    bool RingsOut() const override { return true; }
    double MostSeconds() const override { return kAnyLength; }
    bool IsDone() const override { return wanted_ > 0 && take_.frames() >= wanted_; }

private:
    const Options& options_;
    Tags tags_;
    Take take_;
    int64_t heard_ = 0, first_ = 0, wanted_ = 0;  // frames: so far, where the passage begins, its length
};

}  // namespace render
