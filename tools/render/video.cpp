#include "render/video.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "common/signals.h"
#include "playback/layout.h"
#include "render/pictures.h"

extern char** environ;

namespace render {
namespace {

namespace fs = std::filesystem;

// The encoder at the other end of a pipe.
class Encoder {
public:
    ~Encoder() { Finish(); }

    bool Start(const std::string& program, const std::vector<std::string>& arguments) {
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0) return false;
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, ends[0], STDIN_FILENO);
        std::vector<char*> argv;
        for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
        argv.push_back(nullptr);
        const int error = posix_spawn(&pid_, program.c_str(), &actions, nullptr, argv.data(), environ);
        posix_spawn_file_actions_destroy(&actions);
        close(ends[0]);
        fd_ = ends[1];
        if (error) pid_ = -1;
        return !error;
    }

    bool Write(const void* bytes, size_t count) {
        const char* at = static_cast<const char*>(bytes);
        while (count > 0) {
            const ssize_t written = write(fd_, at, count);
            if (written < 0 && errno == EINTR && !tools::Stopped()) continue;
            if (written < 0) return false;
            at += written;
            count -= static_cast<size_t>(written);
        }
        return true;
    }

    bool Finish() {  // true when the encoder succeeded
        if (fd_ >= 0) close(fd_);
        fd_ = -1;
        if (pid_ < 0) return false;
        int status = 0;
        while (waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
        }
        pid_ = -1;
        return WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }

private:
    pid_t pid_ = -1;
    int fd_ = -1;
};

// Beside the file and with its suffix, from which the encoder tells the format.
std::string TemporaryName(const std::string& video) {
    const fs::path path(video);
    const std::string stem = path.stem().string() + "." + std::to_string(getpid()) + ".part";
    return (path.parent_path() / (stem + path.extension().string())).string();
}

std::vector<std::string> Arguments(const Options& o, const std::string& wav, const std::string& out) {
    const std::string size =
        std::to_string(SCREEN_WIDTH * o.size) + "x" + std::to_string(SCREEN_HEIGHT * o.size);
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
            std::to_string(o.fps),
            "-i",
            "pipe:0",
            "-i",
            "file:" + wav,
            "-pix_fmt",
            "yuv420p",
            "file:" + out};
}

// Each picture is shown until the next one.
class Video {
public:
    Video(const Options& options, Encoder* encoder) : options_(options), encoder_(encoder) {}

    bool OnFrame(const headless::Frame& frame, double seconds) {
        while (!picture_.empty() && static_cast<double>(count_) / options_.fps < seconds) {
            if (!WritePicture()) return false;
        }
        Enlarge(frame, options_.size, &picture_);
        return true;
    }

    bool WritePicture() {
        ++count_;
        if (encoder_->Write(picture_.data(), picture_.size() * sizeof(uint32_t))) return true;
        Complain(kOutput, options_.video + ": the ffmpeg program ended early");
        return false;
    }

private:
    const Options& options_;
    Encoder* encoder_;
    std::vector<uint32_t> picture_;
    int64_t count_ = 0;
};

ExitCode Fail(const Options& options, const std::string& why) {
    return Complain(kOutput, options.video + ": " + why);
}

}  // namespace

std::string FindEncoder() {
    const char* path = std::getenv("PATH");
    std::string folders = path ? path : "/usr/local/bin:/usr/bin:/bin";
    for (size_t at = 0; at <= folders.size();) {
        const size_t colon = std::min(folders.find(':', at), folders.size());
        const std::string program = folders.substr(at, colon - at) + "/ffmpeg";
        if (access(program.c_str(), X_OK) == 0) return program;
        at = colon + 1;
    }
    return {};
}

ExitCode RenderVideo(const Options& options, const std::string& wav) {
    const std::string out = TemporaryName(options.video);
    struct Remover {
        std::string name;
        ~Remover() { unlink(name.c_str()); }
    } remover{out};
    Encoder encoder;
    if (!encoder.Start(FindEncoder(), Arguments(options, wav, out)))
        return Fail(options, "the ffmpeg program cannot be started");
    Video video(options, &encoder);
    Listener listener;
    listener.ring_out = true;
    listener.frame = [&](const headless::Frame& frame, int32_t, double seconds) {
        return video.OnFrame(frame, seconds);
    };
    const ExitCode code = RunPass(options, listener);
    if (code != kGood) return code;
    if (!video.WritePicture()) return kOutput;
    if (!encoder.Finish()) return Fail(options, "the ffmpeg program failed");
    if (std::rename(out.c_str(), options.video.c_str()) != 0) return Fail(options, std::strerror(errno));
    return kGood;
}

}  // namespace render
