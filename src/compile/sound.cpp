#include "compile/sound.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <mutex>
#include <new>
#include <string_view>

#include "compile/file.h"
#include "compile/package.h"
#include "platform/bytes.h"
#include "platform/codec/acm.h"
#include "platform/codec/acm_codec.h"
#include "platform/codec/wavefile.h"
#include "platform/files/handle.h"
#include "platform/files/lookup.h"
#include "platform/sound/format.h"
#include "platform/sound/resampler.h"
#include "platform/substitutes/sound.h"
#include "sound/xadec.h"

namespace compile {
namespace {

constexpr size_t kMostFile = size_t{512} << 20;  // bytes of a sound file that is read whole
// Larger ones are decoded one at a time: each takes about three times its bytes while it is.
constexpr size_t kLarge = size_t{64} << 20;
constexpr size_t kBlock = 4096;                 // frames that are read at a time
constexpr int kXaDataBytes = 4, kXaFrames = 8;  // offsets in the header of an XA file

struct Pcm {
    WAVEFORMATEX format = {};
    std::vector<BYTE> bytes;
    std::string_view data;  // bytes, or a part of the file
};

class Converter {
public:
    ~Converter() {
        if (stream_) acmStreamClose(stream_, 0);
    }
    // format: 40 readable bytes.
    bool Open(WAVEFORMATEX* format, Pcm* pcm) {
        pcm->format.wFormatTag = WAVE_FORMAT_PCM;
        return acmFormatSuggest(nullptr, format, &pcm->format, sizeof pcm->format,
                                ACM_FORMATSUGGESTF_WFORMATTAG) == MMSYSERR_NOERROR &&
               acmStreamOpen(&stream_, nullptr, format, &pcm->format, nullptr, 0, 0,
                             ACM_STREAMOPENF_NONREALTIME) == MMSYSERR_NOERROR;
    }
    bool Run(std::string_view data, Pcm* pcm) {
        DWORD size = 0;
        if (acmStreamSize(stream_, static_cast<DWORD>(data.size()), &size, ACM_STREAMSIZEF_SOURCE) !=
                MMSYSERR_NOERROR ||
            size > kMaxSoundPcm)
            return false;
        pcm->bytes.resize(size);
        ACMSTREAMHEADER header = {};
        header.cbStruct = 84;
        header.pbSrc = reinterpret_cast<BYTE*>(const_cast<char*>(data.data()));
        header.cbSrcLength = static_cast<DWORD>(data.size());
        header.pbDst = pcm->bytes.data();
        header.cbDstLength = size;
        if (acmStreamPrepareHeader(stream_, &header, 0) != MMSYSERR_NOERROR ||
            acmStreamConvert(stream_, &header, 0) != MMSYSERR_NOERROR)
            return false;
        pcm->bytes.resize(std::min(header.cbDstLengthUsed, size));
        pcm->data = {reinterpret_cast<const char*>(pcm->bytes.data()), pcm->bytes.size()};
        return acmStreamUnprepareHeader(stream_, &header, 0) == MMSYSERR_NOERROR;
    }

private:
    HACMSTREAM stream_ = nullptr;
};

bool DecodeWav(const BYTE* file, size_t size, Pcm* pcm) {
    WaveFile wave;
    if (!ReadWaveFile(file, size, &wave)) return false;
    const std::string_view data(reinterpret_cast<const char*>(wave.pData), wave.nBytes);
    WAVEFORMATEX* const format = wave.Format();
    Converter converter;
    if (!converter.Open(format, pcm)) return false;
    if (format->wFormatTag != WAVE_FORMAT_PCM || format->wBitsPerSample != pcm->format.wBitsPerSample)
        return converter.Run(data, pcm);
    pcm->data = data;
    return data.size() <= kMaxSoundPcm;
}

bool DecodeXa(const BYTE* file, size_t size, Pcm* pcm) {
    if (size < XA_HEADER_SIZE) return false;
    void* decoder = xaDecodeOpen(file, &pcm->format);
    if (!decoder) return false;
    const DWORD coded = std::min(ReadLe32(file + kXaDataBytes),
                                 static_cast<DWORD>(std::min(size, kMostFile)) - XA_HEADER_SIZE);
    DWORD bytes = 0;
    bool good = xaDecodeSize(decoder, coded, &bytes) != 0 && bytes <= kMaxSoundPcm;
    if (good) {
        pcm->bytes.resize(bytes);
        xaDecodeEndAt(decoder, coded);
        XaConvertBlock block = {file + XA_HEADER_SIZE, coded, 0, pcm->bytes.data(), bytes, 0};
        good = xaDecodeConvert(decoder, &block) != 0;
        const uint64_t exact = uint64_t{ReadLe32(file + kXaFrames)} * pcm->format.nChannels * 2;
        pcm->bytes.resize(static_cast<size_t>(std::min<uint64_t>({block.nDstUsed, bytes, exact})));
        pcm->data = {reinterpret_cast<const char*>(pcm->bytes.data()), pcm->bytes.size()};
    }
    xaDecodeClose(decoder);
    return good;
}

// The frames of a sound as floats, silence before and after them.
class Source {
public:
    Source(const Pcm& pcm, const audio::Format& format)
        : format_(format),
          data_(reinterpret_cast<const BYTE*>(pcm.data.data())),
          frames_(static_cast<int64_t>(pcm.data.size()) / format.frame_bytes) {}

    int64_t Frames() const { return frames_; }
    int Sides() const { return format_.channels > 1 ? 2 : 1; }
    void Read(int64_t first, std::vector<float>* left, std::vector<float>* right) const {
        std::fill(left->begin(), left->end(), 0.0f);
        std::fill(right->begin(), right->end(), 0.0f);
        const int64_t begin = std::max<int64_t>(first, 0);
        const int64_t end = std::min(first + static_cast<int64_t>(left->size()), frames_);
        if (begin >= end) return;
        audio::ReadFrames(format_, data_ + begin * format_.frame_bytes, static_cast<size_t>(end - begin),
                          left->data() + (begin - first), right->data() + (begin - first));
    }

private:
    const audio::Format format_;
    const BYTE* data_;
    int64_t frames_;
};

int16_t ToSample(float value) {
    return static_cast<int16_t>(std::lrintf(std::clamp(value * 32768.0f, -32768.0f, 32767.0f)));
}

void Interleave(const std::vector<float>& left, const std::vector<float>& right, size_t frames,
                int16_t* out) {
    for (size_t i = 0; i < frames; ++i) {
        *out++ = ToSample(left[i]);
        *out++ = ToSample(right[i]);
    }
}

// At the rate of stems already.
void Copy(const Source& source, Sound* sound) {
    sound->samples.resize(static_cast<size_t>(source.Frames()) * 2);
    std::vector<float> left(kBlock), right(kBlock);
    for (size_t done = 0; done < sound->Frames(); done += kBlock) {
        source.Read(static_cast<int64_t>(done), &left, &right);
        Interleave(left, source.Sides() == 2 ? right : left, std::min(kBlock, sound->Frames() - done),
                   sound->samples.data() + 2 * done);
    }
}

// With what the filter rings behind the end, as in the player's mixer.
int64_t FramesAfter(const audio::Filter& filter, audio::Step step, int64_t frames) {
    return audio::FramesUntil({}, step, frames + (frames == 0 ? 0 : filter.Taps() / 2));
}

// At another rate.
void Resample(const Source& source, const audio::Filter& filter, audio::Step step, Sound* sound) {
    sound->samples.resize(static_cast<size_t>(FramesAfter(filter, step, source.Frames())) * 2);
    constexpr size_t kOverrun = audio::Filter::kOverrun;
    std::vector<float> in[2], out[2], scratch(kBlock + 2 * kOverrun);
    for (auto& side : out) side.resize(kBlock + 2 * kOverrun);
    for (size_t done = 0; done < sound->Frames(); done += kBlock) {
        const size_t wanted = std::min(kBlock, sound->Frames() - done);
        const audio::Position from = audio::Advance({}, step, static_cast<int64_t>(done));
        for (auto& side : in) side.resize(filter.InputLength(from.fraction, step, wanted) + kOverrun);
        source.Read(from.frame - filter.Before(), &in[0], &in[1]);
        for (int side = 0; side < source.Sides(); ++side)
            filter.Run(in[side].data(), from.fraction, step, wanted, out[side].data(), scratch.data());
        Interleave(out[0], out[source.Sides() - 1], wanted, sound->samples.data() + 2 * done);
    }
}

bool IsTooLong(int64_t frames, const audio::Format& format) {
    return static_cast<double>(frames) / format.rate > kMaxSoundPcm / 4.0 / kStemRate;
}

SoundPtr ToStereo(const Pcm& pcm) {
    audio::Format format;
    if (!audio::ParseFormat(pcm.format, &format)) return nullptr;
    const Source source(pcm, format);
    if (IsTooLong(source.Frames(), format)) return nullptr;
    auto sound = std::make_shared<Sound>();
    const auto filter = audio::FilterFor(format.rate, kStemRate);
    if (filter)
        Resample(source, *filter, audio::MakeStep(format.rate, kStemRate), sound.get());
    else
        Copy(source, sound.get());
    return sound;
}

double MsOf(int64_t frames) {
    return static_cast<double>(frames) * 1000 / kStemRate;
}

// The samples of a file that are played as they are; negative when its head does not tell.
int64_t FramesByHead(const std::string& path, audio::Format* format) {
    constexpr size_t kHead = size_t{64} << 10;
    int64_t size = 0;
    const int file = OpenRegularFile(path.c_str(), &size);
    if (file < 0) return -1;
    std::vector<BYTE> head(std::min(static_cast<size_t>(size), kHead));
    head.resize(ReadFileAt(file, head.data(), head.size(), 0));
    close(file);
    WaveFile wave;
    AcmFormat acm;
    if (static_cast<size_t>(size) > kMostFile || !ReadWaveFile(head.data(), head.size(), &wave)) return -1;
    const int64_t bytes = std::min<int64_t>(wave.nDeclared, size - (wave.pData - head.data()));
    const bool played = wave.Format()->wFormatTag == WAVE_FORMAT_PCM &&
                        DescribeAcmFormat(wave.Format(), &acm) && acm.method == AcmMethod::kCopy &&
                        audio::ParseFormat(acm.wfxPcm, format);
    if (!played || bytes == 0 || bytes > int64_t{kMaxSoundPcm}) return -1;
    return bytes / format->frame_bytes;
}

}  // namespace

double Sound::Ms() const {
    return MsOf(static_cast<int64_t>(Frames()));
}

double SoundClock::Measure(const std::string& name) {
    constexpr double kMostDecodedMs = 6.0 * 60 * 60 * 1000;
    audio::Format format;
    const int64_t frames = FramesByHead(FindNamed(name), &format);
    if (frames >= 0 && !IsTooLong(frames, format)) {
        const auto filter = audio::FilterFor(format.rate, kStemRate);
        if (!filter) return MsOf(frames);
        last_filter_ = filter;
        return MsOf(FramesAfter(*filter, audio::MakeStep(format.rate, kStemRate), frames));
    }
    const SoundPtr sound = decoded_ms_ < kMostDecodedMs ? LoadSound(name) : nullptr;
    if (!sound) return -1;
    decoded_ms_ += sound->Ms();
    return sound->Ms();
}

double SoundClock::Ms(const std::string& name) {
    const auto [known, fresh] = known_.try_emplace(name);
    if (fresh) known->second = Measure(name);
    return known->second;
}

SoundPtr DecodeSound(const BYTE* bytes, size_t size) {
    Pcm pcm;
    const std::string_view file(reinterpret_cast<const char*>(bytes), size);
    try {
        const bool xa = file.substr(0, 4) == "KWD1";
        return (xa ? DecodeXa(bytes, size, &pcm) : DecodeWav(bytes, size, &pcm)) ? ToStereo(pcm) : nullptr;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

SoundPtr LoadSound(const std::string& name) {
    static std::mutex large;
    std::unique_lock alone(large, std::defer_lock);
    const SharedBytes file = LoadFile(
        name, MediaKind::kSound, kMostFile,
        [&](size_t bytes) {
            if (bytes > kLarge && !alone.owns_lock()) alone.lock();
            return true;
        },
        nullptr);
    return file ? DecodeSound(file->Data(), file->Size()) : nullptr;
}

}  // namespace compile
