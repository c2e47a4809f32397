#include "render/video.h"

#include "common/output_rules.h"
#include "common/signals.h"
#include "playback/layout.h"
#include "render/encoder.h"
#include "render/pictures.h"

namespace render {
namespace {

// One file each; formats that write several files or need a pattern are left out.
constexpr struct {
    const char *suffix, *format;
} kFormats[] = {{".mp4", "mp4"},   {".m4v", "mp4"},   {".mov", "mov"}, {".mkv", "matroska"},
                {".webm", "webm"}, {".avi", "avi"},   {".flv", "flv"}, {".ts", "mpegts"},
                {".mpg", "mpeg"},  {".mpeg", "mpeg"}, {".ogv", "ogg"}, {".nut", "nut"}};

const char* FormatOf(const std::string& name) {
    const std::string suffix = tools::SuffixOf(name);
    for (const auto& format : kFormats) {
        if (suffix == format.suffix) return format.format;
    }
    return nullptr;
}

}  // namespace

std::string VideoNameRefusal(const std::string& name) {
    if (FormatOf(name)) return "";
    std::string text = name + ": the suffix of a video selects its format; use one of";
    for (const auto& format : kFormats) text += std::string(" ") + format.suffix;
    return text;
}

VideoSink::VideoSink(const Options& options, int sound) : options_(options), sound_(sound) {}

VideoSink::~VideoSink() = default;

std::vector<std::string> VideoSink::Arguments() const {
    const std::string size =
        std::to_string(SCREEN_WIDTH * options_.size) + "x" + std::to_string(SCREEN_HEIGHT * options_.size);
    return {"ffmpeg",
            "-hide_banner",
            "-loglevel",
            "error",
            "-y",
            "-f",
            "rawvideo",
            "-pixel_format",
            "bgr0",
            "-video_size",
            size,
            "-framerate",
            std::to_string(options_.fps),
            "-i",
            "pipe:0",
            "-f",
            "wav",
            "-i",
            "file:/proc/self/fd/" + std::to_string(sound_),
            "-pix_fmt",
            "yuv420p",
            "-f",
            FormatOf(options_.video),
            "file:" + out_.path()};
}

ExitCode VideoSink::Begin(double) {
    if (!out_.OpenForProgram(options_.video)) return Complain(kOutput, out_.error());
    encoder_ = std::make_unique<Encoder>();
    if (encoder_->Start(Arguments(), sound_)) return kGood;
    return Complain(kOutput, options_.video + ": the ffmpeg program cannot be started");
}

// Its message names the temporary file.
ExitCode VideoSink::EncoderFailed() {
    encoder_->Finish();
    if (tools::Stopped()) return kStopped;  // Ctrl+C ends the encoder, too
    std::string message = encoder_->Message();
    const std::string own = "file:" + out_.path();
    for (size_t at = 0; (at = message.find(own, at)) != message.npos;)
        message.replace(at, own.size(), options_.video);
    return Complain(kOutput,
                    options_.video + ": the ffmpeg program failed" + (message.empty() ? "" : ": ") + message);
}

ExitCode VideoSink::WritePicture() {
    ++count_;
    return encoder_->Write(picture_.data(), picture_.size() * sizeof(uint32_t)) ? kGood : EncoderFailed();
}

ExitCode VideoSink::OnFrame(const Moment& moment) {
    while (!picture_.empty() && static_cast<double>(count_) / options_.fps < moment.seconds) {
        const ExitCode code = WritePicture();
        if (code != kGood) return code;
    }
    Enlarge(moment.picture, options_.size, &picture_);
    return kGood;
}

ExitCode VideoSink::Finish() {
    const ExitCode code = WritePicture();
    if (code != kGood) return code;
    if (!encoder_->Finish()) return EncoderFailed();
    return out_.Commit() ? kGood : Complain(kOutput, out_.error());
}

}  // namespace render
