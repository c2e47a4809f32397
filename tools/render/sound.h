// The sound of a pass as a file.
#pragma once

#include <string>

#include "common/wav.h"
#include "render/pass.h"

namespace render {

constexpr int kRate = 44100;

constexpr double kMostWavSeconds = 24300;  // 16 bits; 4 GiB hold a little more

class WavSink : public Sink {
public:
    explicit WavSink(const std::string& name) : name_(name) {}
    explicit WavSink(int fd) : fd_(fd) {}  // an open file, which stays the caller's
    ExitCode Begin(double seconds) override;
    ExitCode OnSound(const float* samples, int frames) override;
    ExitCode Finish() override;
    double MostSeconds() const override { return kMostWavSeconds; }
    bool RingsOut() const override { return true; }

private:
    ExitCode Result(bool good) { return good ? kGood : Complain(kOutput, wav_.error()); }

    const std::string name_;
    const int fd_ = -1;
    tools::WavWriter wav_;
};

}  // namespace render
