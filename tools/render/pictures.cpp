#include "render/pictures.h"

#include <algorithm>
#include <filesystem>

#include "common/output.h"
#include "common/png.h"
#include "render/outputs.h"

namespace render {

ExitCode PictureSink::Begin(double) {
    std::error_code error;
    std::filesystem::create_directories(options_.png_folder, error);
    if (error) return Complain(kOutput, options_.png_folder + ": cannot create: " + error.message());
    for (size_t i = 0; i < options_.places.size(); ++i) wanted_.push_back({ChartTime(options_.places[i]), i});
    std::stable_sort(wanted_.begin(), wanted_.end(),
                     [](const Wanted& a, const Wanted& b) { return a.time < b.time; });
    return kGood;
}

ExitCode PictureSink::Save(const headless::Frame& frame, size_t index) {
    std::vector<uint32_t> pixels;
    Enlarge(frame, options_.size, &pixels);
    const std::string name = PictureName(options_, index);
    const std::string png =
        tools::EncodePng(pixels, frame.width * options_.size, frame.height * options_.size);
    if (png.empty()) return Complain(kOutput, name + ": cannot be encoded");
    tools::Output out;
    if (out.Open(name) && out.Write(png.data(), png.size()) && out.Commit()) return kGood;
    return Complain(kOutput, out.error());
}

ExitCode PictureSink::OnFrame(const Moment& moment) {
    for (; !moment.ended && next_ < wanted_.size() && moment.now >= wanted_[next_].time; ++next_) {
        const ExitCode code = Save(moment.picture, wanted_[next_].index);
        if (code != kGood) return code;
    }
    return kGood;
}

// The player's own frames may leave out the last milliseconds.
ExitCode PictureSink::Finish() {
    if (IsDone()) return kGood;
    const std::string& text = options_.places[wanted_[next_].index].text;
    return Complain(kUsage, "--at " + text + ": no frame comes at or after this time");
}

void Enlarge(const headless::Frame& frame, int scale, std::vector<uint32_t>* pixels) {
    const auto row = static_cast<size_t>(frame.width * scale);
    pixels->resize(row * static_cast<size_t>(frame.height * scale));
    uint32_t* to = pixels->data();
    for (int y = 0; y < frame.height; ++y, to += row * static_cast<size_t>(scale)) {
        const uint32_t* from = frame.pixels + static_cast<ptrdiff_t>(y) * frame.stride;
        if (scale == 1) {
            std::copy_n(from, frame.width, to);
            continue;
        }
        for (int x = 0; x < frame.width; ++x)
            std::fill_n(to + static_cast<ptrdiff_t>(x) * scale, scale, from[x]);
        for (int i = 1; i < scale; ++i) std::copy_n(to, row, to + row * static_cast<size_t>(i));
    }
}

}  // namespace render
