// load DIR: loads every .wav of DIR as a chart's sounds are loaded, and keeps them. load44 (the same source)
// also converts each to 44.1 kHz stereo with 16 bits, using the mixer's converter. The device is opened
// before timing starts.
#include <algorithm>
#include <bit>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "platform/files/files.h"
#include "platform/sound/format.h"
#include "platform/sound/resampler.h"
#include "sound/dsbuffer.h"
#include "sound/dsound.h"

namespace {

constexpr int kRate = 44100;
#ifdef LOAD_TO_44100_STEREO
constexpr bool kToStereo44 = true;
#else
constexpr bool kToStereo44 = false;
#endif

[[noreturn]] void Die(const std::string& what) {
    std::fprintf(stderr, "error: %s\n", what.c_str());
    std::exit(1);
}

double Seconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

// Rounds to even, as lrintf does, but inline and for many samples at once: a float of this size has no room
// left for a fraction, and its lowest bits are the integer.
int16_t ToSample(float f) {
    constexpr float kNoFraction = 3 << 22;
    const float clamped = std::clamp(f * 32768, -32768.0f, 32767.0f);
    return static_cast<int16_t>(std::bit_cast<int32_t>(clamped + kNoFraction));
}

// In blocks of one size, which the compiler vectorises.
void Interleave(const float* left, const float* right, size_t frames, int16_t* to) {
    constexpr size_t kBlock = 64;
    size_t i = 0;
    for (; i + kBlock <= frames; i += kBlock) {
        for (size_t k = i; k < i + kBlock; ++k)
            to[2 * k] = ToSample(left[k]), to[2 * k + 1] = ToSample(right[k]);
    }
    for (; i < frames; ++i) to[2 * i] = ToSample(left[i]), to[2 * i + 1] = ToSample(right[i]);
}

// Scratch buffers, reused for every sound.
struct Space {
    std::vector<float> side[2], out[2], scratch;
};

// Filters one side: `frames` frames in, `made` out.
void Resample(const audio::Filter& filter, audio::Step step, const std::vector<float>& in, size_t made,
              std::vector<float>* out, std::vector<float>* scratch) {
    constexpr size_t kChunk = 2048;
    scratch->resize(kChunk + 2 * audio::Filter::kOverrun);
    out->resize(made + kChunk + 2 * audio::Filter::kOverrun);
    audio::Position position;
    for (size_t at = 0; at < made; at += kChunk) {
        const size_t count = std::min(kChunk, made - at);
        filter.Run(&in[static_cast<size_t>(position.frame)], position.fraction, step, count, out->data() + at,
                   scratch->data());
        position = audio::Advance(position, step, static_cast<int64_t>(count));
    }
}

// Reads the frames of a loaded sound as floats, with silence at both ends for the filter.
void ReadSides(const BYTE* data, size_t frames, const audio::Format& format, size_t before, size_t behind,
               Space* space) {
    for (std::vector<float>& side : space->side) side.assign(before + frames + behind, 0);
    audio::ReadFrames(format, data, frames, space->side[0].data() + before, space->side[1].data() + before);
}

std::vector<int16_t> ToStereo44(const CDSBuffer& loaded, Space* space) {
    audio::Format format;
    void* data = nullptr;
    DWORD bytes = 0;
    if (!audio::ParseFormat(loaded.m_wfx, &format) ||
        loaded.m_pDSB->Lock(0, 0, &data, &bytes, nullptr, nullptr, DSBLOCK_ENTIREBUFFER) != DS_OK)
        Die("a sound without samples");
    const size_t frames = loaded.m_nPcmLen / static_cast<size_t>(format.frame_bytes);
    const auto filter = audio::FilterFor(format.rate, kRate);
    size_t made = frames, before = 0, behind = 0;
    const audio::Step step = audio::MakeStep(format.rate, kRate);
    if (filter) {
        made = static_cast<size_t>(audio::FramesUntil({}, step, static_cast<int64_t>(frames)));
        before = static_cast<size_t>(filter->Before());
        behind = static_cast<size_t>(filter->Taps()) + 4 * audio::Filter::kOverrun;
    }
    ReadSides(static_cast<const BYTE*>(data), frames, format, before, behind, space);
    const int sides = format.channels == 1 ? 1 : 2;
    const float* out[2];
    for (int c = 0; c < sides; ++c) {
        if (filter) Resample(*filter, step, space->side[c], made, &space->out[c], &space->scratch);
        out[c] = filter ? space->out[c].data() : space->side[c].data();
    }
    if (sides == 1) out[1] = out[0];
    std::vector<int16_t> stereo(2 * made);
    Interleave(out[0], out[1], made, stereo.data());
    loaded.m_pDSB->Unlock(data, bytes, nullptr, 0);
    return stereo;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) Die("usage: load DIR");
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(argv[1]))
        if (entry.path().extension() == ".wav") files.push_back(entry.path().string());
    std::sort(files.begin(), files.end());
    CDSound device;
    if (files.empty() || device.Init(nullptr, 1) != 0) Die("no files or no device");

    std::vector<std::unique_ptr<CDSBuffer>> sounds;
    std::vector<std::vector<int16_t>> converted;
    Space space;
    std::vector<const char*> names;
    for (const std::string& file : files) names.push_back(file.c_str());
    const double begin = Seconds();
    FilesExpect(FILES_SOUNDS, names.data(), static_cast<int>(names.size()));  // as a chart's reader does
    for (const std::string& file : files) {
        sounds.push_back(std::make_unique<CDSBuffer>(device.m_pDS));
        sounds.back()->SetFileName(file.c_str());
        if (sounds.back()->Load(0) != 0) Die("cannot load " + file);
        if (!kToStereo44) continue;
        converted.push_back(ToStereo44(*sounds.back(), &space));
        sounds.back().reset();
    }
    FilesExpectNoMore();
    const double end = Seconds();
    double bytes = 0;
    for (const auto& sound : sounds) bytes += sound ? sound->m_nPcmLen : 0;
    for (const auto& samples : converted) bytes += static_cast<double>(samples.size()) * 2;
    std::printf("RESULT\twall_s\t%.9f\nRESULT\tfiles\t%zu\nRESULT\tbytes\t%.0f\n", end - begin, files.size(),
                bytes);
    std::fflush(stdout);
    std::_Exit(0);  // skip the teardown
}
