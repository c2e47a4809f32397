#include "compile/sound.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>
#include <string_view>

#include "compile/file.h"
#include "compile/package.h"
#include "platform/bytes.h"
#include "platform/codec/acm.h"
#include "platform/sound/format.h"
#include "platform/sound/resampler.h"
#include "platform/substitutes/sound.h"
#include "sound/xadec.h"

namespace compile {
namespace {

constexpr size_t kMostFile = size_t{512} << 20;  // bytes of a sound file that is read whole
constexpr int kXaDataBytes = 4, kXaFrames = 8;   // offsets in the header of an XA file

struct Pcm {
    WAVEFORMATEX format = {};
    std::vector<BYTE> bytes;
};

// The first chunk of this name from `at` on. Sizes may be wrong: what the file has is taken.
std::string_view FindChunk(std::string_view file, const char* name, size_t* at) {
    while (file.size() >= 8 && *at <= file.size() - 8) {
        const std::string_view head = file.substr(*at, 8);
        const size_t size = ReadLe32(reinterpret_cast<const BYTE*>(head.data()) + 4);
        const std::string_view data = file.substr(*at + 8, size);
        *at += 8 + size + size % 2;
        if (head.substr(0, 4) == name) return data;
    }
    return {};
}

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
        return acmStreamUnprepareHeader(stream_, &header, 0) == MMSYSERR_NOERROR;
    }

private:
    HACMSTREAM stream_ = nullptr;
};

bool DecodeWav(std::string_view file, Pcm* pcm) {
    if (file.substr(0, 4) != "RIFF" || file.size() < 12 || file.substr(8, 4) != "WAVE") return false;
    size_t at = 12;
    const std::string_view format = FindChunk(file, "fmt ", &at);
    if (format.size() < 14) return false;
    const std::string_view data = FindChunk(file, "data", &at);
    // Zeros behind the block: the lengths that it declares may be wrong.
    constexpr size_t kMostFormat = 4096;
    alignas(8) BYTE block[kMostFormat + 64] = {};
    std::memcpy(block, format.data(), std::min(format.size(), kMostFormat));
    Converter converter;
    return converter.Open(reinterpret_cast<WAVEFORMATEX*>(block), pcm) && converter.Run(data, pcm);
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
    }
    xaDecodeClose(decoder);
    return good;
}

// One channel at another rate, with what the filter rings behind its end, as the player's mixer.
std::vector<float> Resample(const std::vector<float>& source, int rate) {
    const auto filter = audio::FilterFor(rate, kStemRate);
    if (!filter) return source;
    const audio::Step step = audio::MakeStep(rate, kStemRate);
    const auto end = static_cast<int64_t>(source.size()) + (source.empty() ? 0 : filter->Taps() / 2);
    const auto frames = static_cast<size_t>(audio::FramesUntil({}, step, end));
    constexpr size_t kBlock = 4096, kOverrun = audio::Filter::kOverrun;
    std::vector<float> out(frames + kBlock + 2 * kOverrun), scratch(kBlock + 2 * kOverrun), in;
    const auto count = static_cast<int64_t>(source.size());
    for (size_t done = 0; done < frames; done += kBlock) {
        const size_t wanted = std::min(kBlock, frames - done);
        const audio::Position from = audio::Advance({}, step, static_cast<int64_t>(done));
        const int64_t first = from.frame - filter->Before();
        in.assign(filter->InputLength(from.fraction, step, wanted) + kOverrun, 0.0f);
        const int64_t begin = std::max<int64_t>(first, 0),
                      last = std::min(first + static_cast<int64_t>(in.size()), count);
        if (begin < last)
            std::copy(source.begin() + begin, source.begin() + last, in.begin() + (begin - first));
        filter->Run(in.data(), from.fraction, step, wanted, out.data() + done, scratch.data());
    }
    out.resize(frames);
    return out;
}

int16_t ToSample(float value) {
    return static_cast<int16_t>(std::lrintf(std::clamp(value * 32768.0f, -32768.0f, 32767.0f)));
}

SoundPtr ToStereo(const Pcm& pcm) {
    audio::Format format;
    if (!audio::ParseFormat(pcm.format, &format)) return nullptr;
    const size_t frames = pcm.bytes.size() / static_cast<size_t>(format.frame_bytes);
    if (static_cast<double>(frames) / format.rate > kMaxSoundPcm / 4.0 / kStemRate) return nullptr;
    std::vector<float> sides[2] = {std::vector<float>(frames), {}};
    if (format.channels > 1) sides[1].resize(frames);
    audio::ReadFrames(format, pcm.bytes.data(), frames, sides[0].data(), sides[1].data());
    for (auto& side : sides) side = side.empty() ? side : Resample(side, format.rate);
    const std::vector<float>& right = format.channels > 1 ? sides[1] : sides[0];
    auto sound = std::make_shared<Sound>();
    sound->samples.resize(sides[0].size() * 2);
    for (size_t i = 0; i < sides[0].size(); ++i) {
        sound->samples[2 * i] = ToSample(sides[0][i]);
        sound->samples[2 * i + 1] = ToSample(right[i]);
    }
    return sound;
}

}  // namespace

double Sound::Ms() const {
    return static_cast<double>(Frames()) * 1000 / kStemRate;
}

SoundPtr DecodeSound(const BYTE* bytes, size_t size) {
    Pcm pcm;
    const std::string_view file(reinterpret_cast<const char*>(bytes), size);
    try {
        const bool xa = file.substr(0, 4) == "KWD1";
        return (xa ? DecodeXa(bytes, size, &pcm) : DecodeWav(file, &pcm)) ? ToStereo(pcm) : nullptr;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

SoundPtr LoadSound(const std::string& name) {
    const SharedBytes file = LoadFile(name, MediaKind::kSound, kMostFile);
    return file ? DecodeSound(file->Data(), file->Size()) : nullptr;
}

}  // namespace compile
