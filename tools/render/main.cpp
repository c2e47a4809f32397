// lumetra-render: a chart as sound, video, pictures and text.
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>

#include "common/arguments.h"
#include "common/messages.h"
#include "common/signals.h"
#include "common/wav.h"
#include "render/pictures.h"
#include "render/trace.h"
#include "render/video.h"

namespace render {
namespace {

constexpr int kRate = 44100;
constexpr double kMostWavSeconds = 24300;  // 4 GiB hold a little more

// A WAV file cannot hold more, and nobody waits for so much video.
bool FitsWav(double seconds) {
    if (seconds <= kMostWavSeconds) return true;
    const int hours = static_cast<int>(seconds / 3600), minutes = static_cast<int>(seconds / 60) % 60;
    char text[160];
    std::snprintf(
        text, sizeof text,
        "the chart lasts %d h %02d min, and a WAV file holds 6 h 45 min; select measures with --from "
        "and --to",
        hours, minutes);
    Complain(kOutput, text);
    return false;
}

// Full scale is 1.
bool WriteSamples(tools::WavWriter* wav, const float* samples, int frames) {
    int16_t block[2048];
    for (size_t left = 2 * static_cast<size_t>(frames); left > 0;) {
        const size_t count = std::min(left, std::size(block));
        std::transform(samples, samples + count, block, [](float f) {
            return static_cast<int16_t>(std::lrintf(std::clamp(f * 32768.0f, -32768.0f, 32767.0f)));
        });
        if (!wav->Write(block, count)) return false;
        samples += count;
        left -= count;
    }
    return true;
}

// Renders sound and trace in one run.
ExitCode RenderSound(const Options& options, const std::string& wav_name) {
    tools::WavWriter wav;
    Trace trace;
    const bool has_wav = !wav_name.empty(), has_trace = !options.trace.empty();
    const auto wav_good = [&wav](bool good) { return good || (Complain(kOutput, wav.error()), false); };
    const auto trace_good = [&trace](bool good) { return good || (Complain(kOutput, trace.error()), false); };
    if (has_wav && !wav_good(wav.Open(wav_name, 2, kRate))) return kOutput;
    if (has_trace && !trace_good(trace.Open(options.trace))) return kOutput;
    Listener listener;
    listener.ring_out = has_wav;
    listener.begin = [&](double seconds) {
        return (!has_wav || FitsWav(seconds)) && (!has_trace || trace.Begin());
    };
    if (has_wav)
        listener.sound = [&](const float* samples, int frames) {
            return wav_good(WriteSamples(&wav, samples, frames));
        };
    if (has_trace)
        listener.frame = [&](const headless::Frame&, int32_t now, double) {
            return trace_good(trace.OnFrame(now));
        };
    const ExitCode code = RunPass(options, listener);
    if (code != kGood) return code;
    const bool good = (!has_wav || wav_good(wav.Commit())) && (!has_trace || trace_good(trace.Commit()));
    return good ? kGood : kOutput;
}

// Runs a pass in a process of its own, because each needs a fresh program.
template <class Pass>
ExitCode InChild(Pass pass) {
    std::fflush(nullptr);
    const pid_t pid = fork();
    if (pid < 0) return Complain(kOutput, "cannot create a process");
    if (pid == 0) {
        const ExitCode code = pass();
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

// The sound file from which the video is made.
struct SoundFile {
    std::string name;
    bool temporary = false;
    ~SoundFile() {
        if (temporary) unlink(name.c_str());
    }
    void MakeName() {
        char path[] = "/tmp/lumetra-render-XXXXXX";
        const char* folder = std::getenv("TMPDIR");
        std::string pattern = folder ? std::string(folder) + "/lumetra-render-XXXXXX" : path;
        const int fd = mkstemp(pattern.data());
        if (fd < 0) return;
        close(fd);
        name = pattern;
        temporary = true;
    }
};

ExitCode RenderAll(const Options& options) {
    if (!options.video.empty() && FindEncoder().empty()) {
        return Complain(kOutput, "--video needs the ffmpeg program, which is not installed (package ffmpeg)");
    }
    SoundFile sound{options.wav};
    const bool temporary = !options.video.empty() && (options.wav.empty() || options.wav == "-");
    if (temporary) {
        sound.MakeName();
        if (!sound.temporary) return Complain(kOutput, "cannot create a temporary file");
    }
    ExitCode code = kGood;
    if (options.wav == "-" && temporary) code = InChild([&] { return RenderSound(options, "-"); });
    Options quiet = options;
    if (options.wav == "-" && temporary) quiet.trace.clear();
    if (code == kGood && (!sound.name.empty() || !quiet.trace.empty()))
        code = InChild([&] { return RenderSound(quiet, sound.name); });
    if (code == kGood && !options.png_folder.empty()) code = InChild([&] { return RenderPictures(options); });
    if (code == kGood && !options.video.empty())
        code = InChild([&] { return RenderVideo(options, sound.name); });
    return code;
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
