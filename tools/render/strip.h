// The whole chart as columns of lanes, with its density over time above.
#pragma once

#include <string>
#include <vector>

#include "render/pass.h"

namespace render {

// FILE.png, and FILE-2.png and so on when the chart needs more pages. For the chart that is loaded.
std::vector<std::string> StripNames(const Options& options);

class StripSink : public Sink {
public:
    explicit StripSink(const Options& options) : options_(options) {}
    ExitCode Begin(double seconds) override;
    ExitCode Finish() override;
    double MostSeconds() const override { return kAnyLength; }
    bool IsDone() const override { return true; }

private:
    const Options& options_;
    std::vector<std::string> names_, pages_;  // pages_: PNG files
};

}  // namespace render
