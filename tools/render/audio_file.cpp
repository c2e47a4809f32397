#include "render/audio_file.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

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
    file_.reset(sf_open(out_.path().c_str(), SFM_WRITE, &info));
    if (!file_) return Fail(sf_strerror(nullptr));
    double vorbis_quality = kVorbisQuality;
    sf_command(file_.get(), SFC_SET_VBR_ENCODING_QUALITY, &vorbis_quality, sizeof vorbis_quality);
    return true;
}

void AudioFile::SetTags(const std::string& title, const std::string& artist) {
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
        if (WriteBlock(samples, count) != count) return Fail(sf_strerror(file_.get()));
    }
    return true;
}

bool AudioFile::Commit() {
    if (sf_close(file_.release()) != 0) return Fail("the file could not be finished");
    if (!out_.Commit()) return error_ = out_.error(), false;
    return true;
}

}  // namespace render
