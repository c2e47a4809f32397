#include "render/audio.h"

#include <algorithm>
#include <cstdio>

#include "chart/bms.h"
#include "host/headless/sound.h"
#include "platform/files/text.h"
#include "playback/playback.h"
#include "render/passage.h"
#include "render/sound.h"
#include "shell/shell.h"

namespace render {
namespace {

constexpr uint64_t kMillisecond = 1'000'000;
constexpr int64_t kFadeIn = kRate / 100;  // no click where a passage begins inside a sound

Tags ReadTags() {
    const auto text = [](const char* bytes) { return bytes ? DisplayText(bytes) : ""; };
    return {text(g_pBMS->m_pszTitle), text(g_pBMS->m_pszArtist)};
}

int64_t FramesOf(double seconds) {
    return static_cast<int64_t>(seconds * kRate);
}

ExitCode CannotKeep() {
    return Complain(kOutput, "cannot keep the sound in a temporary file");
}

// Makes the chart go on from its last measure before a time, and at once up to that time: what starts in
// between is over before anything is heard.
void StartBefore(int64_t time) {
    const int32_t measure = MeasureBefore(time);
    if (measure >= 0) {
        g_nStartMeasure = measure;
        RestartChart();
    }
    if (time > g_dwSeekTime) g_dwStartTime -= static_cast<uint32_t>(time - g_dwSeekTime);
    // 10 ms are whole frames. At a distance of so many from the whole rendering every sound starts at the
    // same fraction of a frame, and the passage sounds as it does there.
    constexpr uint32_t kWhole =
        headless::kClockOrigin / kMillisecond;  // the clock at chart time 0 of the whole
    const auto off = static_cast<int32_t>(g_dwStartTime - static_cast<uint32_t>(g_dwSeekTime) - kWhole) % 10;
    g_dwStartTime += static_cast<uint32_t>(off > 0 ? 10 - off : -off);
}

ExitCode WriteTake(const Take& take, const Treatment& treatment, const Options& options, const Tags& tags) {
    AudioFile file;
    const auto fail = [&file] { return Complain(kOutput, file.error()); };
    if (!file.Open(options.audio, options.quality)) return fail();
    file.SetTags(tags.title, tags.artist);
    TreatmentResult result;
    const auto write = [&file](float* samples, int64_t frames) { return file.Write(samples, frames); };
    if (!Treat(take, treatment, write, &result)) return file.error().empty() ? CannotKeep() : fail();
    if (!file.Commit()) return fail();
    if (result.held_by_peak) {
        char text[80];
        std::snprintf(text, sizeof text, ": %.1f LUFS; more would peak above -1 dBTP", result.loudness);
        Complain(kGood, options.audio + text);
    }
    return kGood;
}

}  // namespace

double AudioSink::MostSeconds() const {
    tools::FileKind kind;
    AudioKind(options_.audio, &kind);
    const double wav = kMostWavSeconds * 2 / (options_.quality.floats ? 4 : options_.quality.bits / 8);
    if (kind == tools::FileKind::kWav) return wav;
    return options_.loudness ? kMostWavSeconds : kDay;  // what is kept meanwhile needs room on the disk
}

ExitCode AudioSink::Begin(double) {
    tags_ = ReadTags();
    if (options_.loudness) return kGood;
    if (!file_.Open(options_.audio, options_.quality)) return Complain(kOutput, file_.error());
    file_.SetTags(tags_.title, tags_.artist);
    return kGood;
}

ExitCode AudioSink::OnSound(const float* samples, int frames) {
    if (options_.loudness) return take_.Add(samples, frames) ? kGood : CannotKeep();
    return file_.Write(samples, frames) ? kGood : Complain(kOutput, file_.error());
}

ExitCode AudioSink::Finish() {
    if (!options_.loudness) return file_.Commit() ? kGood : Complain(kOutput, file_.error());
    Treatment treatment;
    treatment.loudness = options_.loudness;
    return WriteTake(take_, treatment, options_, tags_);
}

ExitCode PreviewSink::Begin(double) {
    tags_ = ReadTags();
    const int64_t start = StartOfPassage(options_.start, static_cast<int64_t>(options_.length * 1000));
    if (start < 0) return Complain(kUsage, options_.chart + ": --from: not in the chart");
    StartBefore(EarliestHeard(start));
    const auto clock = static_cast<uint32_t>(headless::Clock() / kMillisecond);
    const auto now = static_cast<int32_t>(static_cast<uint32_t>(g_dwSeekTime) - g_dwStartTime + clock);
    first_ = headless::SoundFrame((clock + static_cast<uint64_t>(start - now)) * kMillisecond);
    wanted_ = FramesOf(options_.length);
    return kGood;
}

ExitCode PreviewSink::OnSound(const float* samples, int frames) {
    const int64_t skip = std::clamp<int64_t>(first_ - heard_, 0, frames);
    const int64_t count = std::min(frames - skip, wanted_ - take_.frames());
    heard_ += frames;
    return count <= 0 || take_.Add(samples + 2 * skip, count) ? kGood : CannotKeep();
}

ExitCode PreviewSink::Finish() {
    Treatment treatment;
    treatment.trim = options_.trim;
    treatment.fade_in = kFadeIn;
    treatment.fade_out = FramesOf(options_.fade);
    treatment.loudness = options_.loudness;
    return WriteTake(take_, treatment, options_, tags_);
}

}  // namespace render
