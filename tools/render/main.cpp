// lumetra-render: a chart as sound, video, pictures and text.
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "render/pictures.h"
#include "render/trace.h"
#include "render/video.h"
#include "render/wav.h"

namespace render {
namespace {

// A WAV file cannot hold more, and nobody waits for so much video.
bool FitsWav(double seconds) {
    if (seconds <= WavWriter::kMostSeconds) return true;
    const int hours = static_cast<int>(seconds / 3600), minutes = static_cast<int>(seconds / 60) % 60;
    char text[160];
    std::snprintf(
        text, sizeof text,
        "this lasts %d h %02d min, and a WAV file holds 6 h 45 min; choose measures by --from and --to",
        hours, minutes);
    Complain(kOutput, text);
    return false;
}

// Sound and trace of one run.
ExitCode RenderSound(const Options& options, const std::string& wav_name) {
    WavWriter wav;
    Trace trace;
    const bool has_wav = !wav_name.empty(), has_trace = !options.trace.empty();
    if (has_wav && !wav.Open(wav_name)) return kOutput;
    if (has_trace && !trace.Open(options.trace)) return kOutput;
    Listener listener;
    listener.ring_out = has_wav;
    listener.begin = [&](double seconds) {
        return (!has_wav || FitsWav(seconds)) && (!has_trace || trace.Begin());
    };
    if (has_wav)
        listener.sound = [&](const float* samples, int frames) { return wav.Write(samples, frames); };
    if (has_trace)
        listener.frame = [&](const headless::Frame&, int32_t now, double) { return trace.OnFrame(now); };
    const ExitCode code = RunPass(options, listener);
    if (code != kGood) return code;
    return (!has_wav || wav.Commit()) && (!has_trace || trace.Commit()) ? kGood : kOutput;
}

// A pass in a process of its own: each begins with the program as it starts.
template <class Pass>
ExitCode InChild(Pass pass) {
    std::fflush(nullptr);
    const pid_t pid = fork();
    if (pid < 0) return static_cast<ExitCode>(Complain(kOutput, "no further process can be made"));
    if (pid == 0) {
        const ExitCode code = pass();
        std::fflush(nullptr);
        _exit(code);
    }
    // Looked after now and then: a signal that comes before a wait begins would not end it.
    int status = 0;
    while (waitpid(pid, &status, WNOHANG) == 0) {
        if (Stopped()) kill(pid, SIGTERM);
        usleep(2000);
    }
    return WIFEXITED(status) ? static_cast<ExitCode>(WEXITSTATUS(status)) : kOutput;
}

// The sound that a video is made of, while it is made.
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
        return static_cast<ExitCode>(
            Complain(kOutput, "--video needs the ffmpeg program, which is not installed (package ffmpeg)"));
    }
    SoundFile sound{options.wav};
    const bool temporary = !options.video.empty() && (options.wav.empty() || options.wav == "-");
    if (temporary) {
        sound.MakeName();
        if (!sound.temporary)
            return static_cast<ExitCode>(Complain(kOutput, "no temporary file can be made"));
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
    Options options;
    std::string why;
    switch (ParseOptions(argc, argv, &options, &why)) {
        case Parse::kHelp:
            return std::fputs(kHelp, stdout) < 0 || std::fflush(stdout) ? kOutput : kGood;
        case Parse::kVersion:
            return std::puts("lumetra-render " LUMETRA_VERSION) < 0 || std::fflush(stdout) ? kOutput : kGood;
        case Parse::kWrong:
            Complain(kUsage, why);
            std::fputs("Try 'lumetra-render --help'.\n", stderr);
            return kUsage;
        case Parse::kRun:
            break;
    }
    CatchSignals();
    const ExitCode code = RenderAll(options);
    if (code != kStopped) return code;
    Complain(kOutput, "stopped; nothing half rendered is left");
    return kOutput;
}
