#include "render/pictures.h"

#include <png.h>

#include <algorithm>
#include <cstring>
#include <filesystem>

#include "common/output.h"

namespace render {
namespace {

struct Wanted {
    int64_t time;  // chart time in ms
    size_t number;
    const PicturePlace* place;
};

// A PNG in memory, 8 bits RGB. Empty when the library fails.
std::string EncodePng(const std::vector<uint32_t>& pixels, int width, int height) {
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(width);
    image.height = static_cast<png_uint_32>(height);
    image.format = PNG_FORMAT_RGB;
    std::vector<uint8_t> rgb;
    rgb.reserve(pixels.size() * 3);
    for (uint32_t pixel : pixels) {
        for (int shift : {16, 8, 0}) rgb.push_back(static_cast<uint8_t>(pixel >> shift));
    }
    png_alloc_size_t bytes = PNG_IMAGE_PNG_SIZE_MAX(image);
    std::string png(bytes, '\0');
    if (!png_image_write_to_memory(&image, png.data(), &bytes, 0, rgb.data(), 0, nullptr)) return {};
    png.resize(bytes);
    return png;
}

std::string NameOf(const Options& options, const Wanted& wanted) {
    char number[24];
    std::snprintf(number, sizeof number, "%04zu_", wanted.number);
    return (std::filesystem::path(options.png_folder) / (number + wanted.place->text + ".png")).string();
}

bool Save(const Options& options, const headless::Frame& frame, const Wanted& wanted) {
    std::vector<uint32_t> pixels;
    Enlarge(frame, options.size, &pixels);
    const std::string png = EncodePng(pixels, frame.width * options.size, frame.height * options.size);
    const std::string name = NameOf(options, wanted);
    if (png.empty()) return Complain(kOutput, name + ": cannot be encoded"), false;
    tools::Output out;
    if (out.Open(name) && out.Write(png.data(), png.size()) && out.Commit()) return true;
    Complain(kOutput, out.error());
    return false;
}

class Pictures {
public:
    explicit Pictures(const Options& options) : options_(options) {}

    ExitCode Run() {
        std::error_code error;
        std::filesystem::create_directories(options_.png_folder, error);
        if (error) return Complain(kOutput, options_.png_folder + ": cannot create: " + error.message());
        Listener listener;
        listener.begin = [this](double) { return Begin(); };
        listener.wanted = [this] { return next_ < wanted_.size() ? wanted_[next_].time : -1; };
        listener.frame = [this](const headless::Frame& frame, int32_t now, double) {
            return OnFrame(frame, now);
        };
        ExitCode code = RunPass(options_, listener);
        if (done_) code = kGood;
        if (code == kGood && next_ < wanted_.size()) {
            return Complain(kUsage,
                            "--at " + wanted_[next_].place->text + ": after the end of what is played");
        }
        return wrong_ ? kUsage : code;
    }

private:
    bool Begin() {
        for (size_t i = 0; i < options_.places.size(); ++i) {
            const PicturePlace& place = options_.places[i];
            const int64_t time = ChartTime(place);
            if (time < 0) {
                Complain(kUsage, "--at " + place.text + ": the chart has no such measure");
                wrong_ = true;
                return false;
            }
            wanted_.push_back({time, i + 1, &place});
        }
        std::stable_sort(wanted_.begin(), wanted_.end(),
                         [](const Wanted& a, const Wanted& b) { return a.time < b.time; });
        return true;
    }

    bool OnFrame(const headless::Frame& frame, int32_t now) {
        if (now == INT32_MAX) return true;  // back at the start
        for (; next_ < wanted_.size() && now >= wanted_[next_].time; ++next_) {
            if (!Save(options_, frame, wanted_[next_])) return false;
        }
        done_ = next_ == wanted_.size();
        return !done_;
    }

    const Options& options_;
    std::vector<Wanted> wanted_;
    size_t next_ = 0;
    bool done_ = false, wrong_ = false;
};

}  // namespace

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

ExitCode RenderPictures(const Options& options) {
    return Pictures(options).Run();
}

}  // namespace render
