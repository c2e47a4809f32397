#include "render/audio_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "render/ogg_serial.h"

namespace render {
namespace {

constexpr int64_t kBlock = 2048;        // frames; the Vorbis encoder needs stack for each
constexpr double kVorbisQuality = 0.6;  // about 190 kbit/s

int FormatOf(tools::FileKind kind, const AudioQuality& quality) {
    if (kind == tools::FileKind::kOgg) return SF_FORMAT_OGG | SF_FORMAT_VORBIS;
    const int width = quality.floats       ? SF_FORMAT_FLOAT
                      : quality.bits == 24 ? SF_FORMAT_PCM_24
                                           : SF_FORMAT_PCM_16;
    return (kind == tools::FileKind::kFlac ? SF_FORMAT_FLAC : SF_FORMAT_WAV) | width;
}

}  // namespace

bool AudioKind(const std::string& name, tools::FileKind* kind) {
    const std::string suffix = tools::SuffixOf(name);
    *kind = suffix == ".wav"    ? tools::FileKind::kWav
            : suffix == ".flac" ? tools::FileKind::kFlac
                                : tools::FileKind::kOgg;
    return suffix == ".wav" || suffix == ".flac" || suffix == ".ogg";
}

AudioFile::Medium::~Medium() {
    if (fd >= 0) close(fd);
}

SF_VIRTUAL_IO AudioFile::Medium::Calls() {
    const auto size = [](void* user) -> sf_count_t {
        struct stat info;
        return fstat(static_cast<Medium*>(user)->fd, &info) == 0 ? info.st_size : -1;
    };
    const auto seek = [](sf_count_t offset, int from, void* user) -> sf_count_t {
        auto* medium = static_cast<Medium*>(user);
        struct stat info = {};
        if (from == SEEK_END) fstat(medium->fd, &info);
        return medium->place = offset + (from == SEEK_CUR   ? medium->place
                                         : from == SEEK_END ? sf_count_t{info.st_size}
                                                            : 0);
    };
    const auto read = [](void* bytes, sf_count_t count, void* user) -> sf_count_t {
        auto* medium = static_cast<Medium*>(user);
        const ssize_t done = pread(medium->fd, bytes, static_cast<size_t>(count), medium->place);
        medium->place += std::max<ssize_t>(done, 0);
        return std::max<ssize_t>(done, 0);
    };
    const auto write = [](const void* bytes, sf_count_t count, void* user) -> sf_count_t {
        auto* medium = static_cast<Medium*>(user);
        const auto* at = static_cast<const char*>(bytes);
        sf_count_t done = 0;
        while (done < count && medium->error == 0) {
            const ssize_t n =
                pwrite(medium->fd, at + done, static_cast<size_t>(count - done), medium->place + done);
            if (n < 0 && errno != EINTR) medium->error = errno;
            done += std::max<ssize_t>(n, 0);
        }
        medium->place += done;
        return done;
    };
    const auto tell = [](void* user) -> sf_count_t { return static_cast<Medium*>(user)->place; };
    return {size, seek, read, write, tell};
}

bool AudioFile::Fail(const std::string& why) {
    error_ = name_ + ": cannot write: " + why;
    return false;
}

bool AudioFile::Open(const std::string& name, const AudioQuality& quality) {
    name_ = name;
    quality_ = quality;
    if (!out_.OpenForProgram(name)) return error_ = out_.error(), false;
    tools::FileKind kind;
    AudioKind(name, &kind);
    lossy_ = kind == tools::FileKind::kOgg;
    SF_INFO info = {};
    info.channels = 2;
    info.samplerate = 44100;
    info.format = FormatOf(kind, quality);
    medium_.fd = open(out_.path().c_str(), O_RDWR | O_CLOEXEC);
    if (medium_.fd < 0) return Fail(std::strerror(errno));
    SF_VIRTUAL_IO calls = Medium::Calls();
    file_.reset(sf_open_virtual(&calls, SFM_WRITE, &info, &medium_));
    if (!file_) return Fail(sf_strerror(nullptr));
    sf_command(file_.get(), SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);  // it holds the time of day
    double vorbis_quality = kVorbisQuality;
    sf_command(file_.get(), SFC_SET_VBR_ENCODING_QUALITY, &vorbis_quality, sizeof vorbis_quality);
    return true;
}

void AudioFile::SetTags(const std::string& title, const std::string& artist) {
    tags_ = title + '\n' + artist;
    if (!title.empty()) sf_set_string(file_.get(), SF_STR_TITLE, title.c_str());
    if (!artist.empty()) sf_set_string(file_.get(), SF_STR_ARTIST, artist.c_str());
}

// Integers are rounded here, so that 16 bits are the same in every format.
int64_t AudioFile::WriteBlock(const float* samples, int64_t frames) {
    if (lossy_ || quality_.floats) return sf_writef_float(file_.get(), samples, frames);
    const float scale = quality_.bits == 24 ? 8388608.0f : 32768.0f;
    int block[2 * kBlock];
    std::transform(samples, samples + 2 * frames, block, [scale](float f) {
        const auto value = static_cast<int64_t>(std::lrintf(std::clamp(f * scale, -scale, scale - 1)));
        return static_cast<int>(value * (int64_t{1} << 31) / static_cast<int64_t>(scale));
    });
    return sf_writef_int(file_.get(), block, frames);
}

bool AudioFile::Write(const float* samples, int64_t frames) {
    for (; frames > 0; frames -= kBlock, samples += 2 * kBlock) {
        const int64_t count = std::min(frames, kBlock);
        if (WriteBlock(samples, count) != count)
            return Fail(medium_.error ? std::strerror(medium_.error) : sf_strerror(file_.get()));
    }
    return true;
}

bool AudioFile::Commit() {
    const bool closed = sf_close(file_.release()) == 0;
    if (medium_.error) return Fail(std::strerror(medium_.error));
    if (!closed || (lossy_ && !SetOggSerial(medium_.fd, tags_)))
        return Fail("the file could not be finished");
    if (!out_.Commit()) return error_ = out_.error(), false;
    return true;
}

}  // namespace render
