// lumetra-render: a chart as sound, video, pictures and text.
#include <memory>

#include "common/arguments.h"
#include "common/messages.h"
#include "common/output.h"
#include "common/signals.h"
#include "compile/modern.h"
#include "render/audio.h"
#include "render/batch.h"
#include "render/child.h"
#include "render/encoder.h"
#include "render/pictures.h"
#include "render/sound.h"
#include "render/strip.h"
#include "render/trace.h"
#include "render/video.h"

namespace render {
namespace {

// Renders everything but the video. sound: an open file for the video's sound, or -1.
ExitCode RenderFiles(const Options& options, int sound) {
    std::vector<std::unique_ptr<Sink>> owned;
    // Pictures can still fail when the pass is over; then nothing else appears.
    if (!options.places.empty()) owned.push_back(std::make_unique<PictureSink>(options));
    if (!options.strip.empty()) owned.push_back(std::make_unique<StripSink>(options));
    if (!options.trace.empty()) owned.push_back(std::make_unique<TraceSink>(options.trace));
    if (!options.wav.empty()) owned.push_back(std::make_unique<WavSink>(options.wav));
    if (!options.audio.empty() && options.preview)
        owned.push_back(std::make_unique<PreviewSink>(options));
    else if (!options.audio.empty())
        owned.push_back(std::make_unique<AudioSink>(options));
    if (sound >= 0) owned.push_back(std::make_unique<WavSink>(sound));
    std::vector<Sink*> sinks;
    for (const auto& sink : owned) sinks.push_back(sink.get());
    return RunPass(options, sinks, true);
}

ExitCode RenderAll(const Options& options) {
    if (!options.output_dir.empty())
        return RenderPreviews(options, [](const Options& own) { return RenderFiles(own, -1); });
    if (options.video.empty()) return RenderFiles(options, -1);
    const std::string refusal = VideoNameRefusal(options.video);
    if (!refusal.empty()) return Complain(kUsage, refusal);
    if (FindEncoder().empty())
        return Complain(kOutput, "--video needs the ffmpeg program, which is not installed (package ffmpeg)");
    const int sound = tools::OpenScratchFile();
    if (sound < 0) return Complain(kOutput, "cannot create a temporary file");
    const ExitCode code = RunInChild(
        options.chart, [&] { return RenderFiles(options, sound); }, nullptr);
    if (code != kGood) return code;
    VideoSink video(options, sound);
    return RunPass(options, {&video}, false);
}

}  // namespace
}  // namespace render

static int Main(int argc, char** argv) {
    using namespace render;
    int answered = 0;
    if (tools::AnswerHelp(argc, argv, kHelp, kOutput, &answered)) return answered;
    Options options;
    std::string why;
    if (!ParseOptions(argc, argv, &options, &why)) return tools::WrongUse(kUsage, why);
    tools::CatchSignals();
    if (options.modern) compile::PlayModern(options.choice);
    const ExitCode code = RenderAll(options);
    if (code != kStopped) return code;
    return Complain(kOutput, "stopped; no partial output is left");
}

int main(int argc, char** argv) {
    return tools::RunTool("lumetra-render", Main, argc, argv);
}
