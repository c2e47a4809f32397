// lumetra-render: a chart as sound, video, pictures and text.
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <memory>

#include "common/arguments.h"
#include "common/messages.h"
#include "common/output.h"
#include "common/signals.h"
#include "render/encoder.h"
#include "render/pictures.h"
#include "render/sound.h"
#include "render/trace.h"
#include "render/video.h"

namespace render {
namespace {

// Renders everything but the video. sound: an open file for the video's sound, or -1.
ExitCode RenderFiles(const Options& options, int sound) {
    std::vector<std::unique_ptr<Sink>> owned;
    // Pictures can still fail when the pass is over; then nothing else appears.
    if (!options.places.empty()) owned.push_back(std::make_unique<PictureSink>(options));
    if (!options.trace.empty()) owned.push_back(std::make_unique<TraceSink>(options.trace));
    if (!options.wav.empty()) owned.push_back(std::make_unique<WavSink>(options.wav));
    if (sound >= 0) owned.push_back(std::make_unique<WavSink>(sound));
    std::vector<Sink*> sinks;
    for (const auto& sink : owned) sinks.push_back(sink.get());
    return RunPass(options, sinks, true);
}

// In a process of its own, because each pass needs a fresh program. The process ends with this one.
template <class Pass>
ExitCode InChild(Pass pass) {
    std::fflush(nullptr);
    const pid_t parent = getpid(), pid = fork();
    if (pid < 0) return Complain(kOutput, "cannot create a process");
    if (pid == 0) {
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        const ExitCode code = getppid() == parent ? pass() : kStopped;
        std::fflush(nullptr);
        _exit(code);
    }
    // Polls, because a signal that comes just before a blocking wait would not end it.
    int status = 0;
    while (waitpid(pid, &status, WNOHANG) == 0) {
        if (tools::Stopped()) kill(pid, SIGTERM);
        usleep(2000);
    }
    return WIFEXITED(status) ? static_cast<ExitCode>(WEXITSTATUS(status)) : kOutput;
}

ExitCode RenderAll(const Options& options) {
    if (options.video.empty()) return RenderFiles(options, -1);
    const std::string refusal = VideoNameRefusal(options.video);
    if (!refusal.empty()) return Complain(kUsage, refusal);
    if (FindEncoder().empty())
        return Complain(kOutput, "--video needs the ffmpeg program, which is not installed (package ffmpeg)");
    const int sound = tools::OpenScratchFile();
    if (sound < 0) return Complain(kOutput, "cannot create a temporary file");
    const ExitCode code = InChild([&] { return RenderFiles(options, sound); });
    if (code != kGood) return code;
    VideoSink video(options, sound);
    return RunPass(options, {&video}, false);
}

}  // namespace
}  // namespace render

int main(int argc, char** argv) {
    using namespace render;
    tools::SetProgram("lumetra-render");
    int answered = 0;
    if (tools::AnswerHelp(argc, argv, kHelp, kOutput, &answered)) return answered;
    Options options;
    std::string why;
    if (!ParseOptions(argc, argv, &options, &why)) return tools::WrongUse(kUsage, why);
    tools::CatchSignals();
    const ExitCode code = RenderAll(options);
    if (code != kStopped) return code;
    return Complain(kOutput, "stopped; no partial output is left");
}
