// The mix of a chart before the limiter.
#include <algorithm>
#include <cmath>

#include "check/listen.h"
#include "platform/sound/kernels.h"

namespace check {
namespace {

constexpr int kRate = 44100;                             // of the mix
constexpr int64_t kWindow = kRate;                       // frames: a second
constexpr double kMostVoiceSeconds = 3.0 * 60.0 * 60.0;  // some seconds of one core

struct Voice {
    int32_t number;
    int64_t begin, end;  // frames of the mix
};

int64_t FrameAt(double ms) {
    return std::llround(ms * kRate / 1000.0);
}

// Each start with its end, which the next start of the number cuts. In order of start.
std::vector<Voice> VoicesOf(const std::vector<Fire>& fires, const std::vector<Samples>& samples) {
    std::vector<Voice> voices;
    std::vector<int64_t> next(samples.size(), INT64_MAX);
    for (size_t i = fires.size(); i-- > 0;) {
        const auto number = static_cast<size_t>(fires[i].number);
        const int64_t begin = FrameAt(fires[i].ms);
        const int64_t end = std::min(begin + FrameAt(samples[number].Ms()), next[number]);
        next[number] = begin;
        if (samples[number].data && end > begin) voices.push_back({fires[i].number, begin, end});
    }
    std::reverse(voices.begin(), voices.end());
    return voices;
}

class Mix {
public:
    Mix(const std::vector<Samples>& samples, const std::vector<Envelope>& envelopes)
        : samples_(samples), envelopes_(envelopes), window_(kWindow * 2) {}
    bool Run(const std::vector<Voice>& voices, Loudest* loudest);

private:
    bool MayPass(int64_t first) const;
    void Add(const Voice& voice, int64_t first);
    void AddOther(const Samples& sound, int64_t at, int64_t count, float* to);

    const std::vector<Samples>& samples_;
    const std::vector<Envelope>& envelopes_;
    std::vector<float> window_, left_, right_;
    std::vector<Voice> active_;
};

// Whether the peaks of the active voices together can pass full scale in a window.
bool Mix::MayPass(int64_t first) const {
    constexpr int64_t kPieces = Envelope::kPieces;
    float sums[kPieces + 1] = {};
    for (const Voice& voice : active_) {
        const std::vector<float>& peaks = envelopes_[static_cast<size_t>(voice.number)].peaks;
        const int64_t begin = std::max(voice.begin, first), end = std::min(voice.end, first + kWindow);
        // A piece of the sound lies in up to two of the window, and those at the ends in a part of one.
        for (int64_t at = (begin - first) * kPieces / kWindow; at <= (end - first) * kPieces / kWindow;
             ++at) {
            const int64_t from = (first + at * kWindow / kPieces - voice.begin) * kPieces / kRate;
            float peak = 0;
            for (int64_t k = std::max<int64_t>(from - 1, 0);
                 k <= from + 2 && k < static_cast<int64_t>(peaks.size()); ++k)
                peak = std::max(peak, peaks[static_cast<size_t>(k)]);
            sums[at] += peak;
        }
    }
    return *std::max_element(sums, sums + kPieces + 1) > 1.0f;
}

// A sound of another rate or format than the mix. at: its first frame, in frames of the mix.
void Mix::AddOther(const Samples& sound, int64_t at, int64_t count, float* to) {
    const double step = static_cast<double>(sound.format.rate) / kRate;
    const auto from = static_cast<int64_t>(static_cast<double>(at) * step);
    const auto most =
        std::min(static_cast<int64_t>(static_cast<double>(at + count) * step) + 2, sound.frames) - from;
    if (most <= 0) return;
    left_.assign(static_cast<size_t>(most) + 1, 0.0f);
    right_.assign(left_.size(), 0.0f);
    audio::ReadFrames(sound.format, sound.data + from * sound.format.frame_bytes, static_cast<size_t>(most),
                      left_.data(), right_.data());
    const std::vector<float>& right = sound.format.channels == 1 ? left_ : right_;
    for (int64_t i = 0; i < count; ++i) {
        const double place = static_cast<double>(at + i) * step - static_cast<double>(from);
        const auto whole = static_cast<size_t>(place);
        if (whole + 1 >= left_.size()) break;
        const auto part = static_cast<float>(place - static_cast<double>(whole));
        to[2 * i] += left_[whole] + part * (left_[whole + 1] - left_[whole]);
        to[2 * i + 1] += right[whole] + part * (right[whole + 1] - right[whole]);
    }
}

void Mix::Add(const Voice& voice, int64_t first) {
    const Samples& sound = samples_[static_cast<size_t>(voice.number)];
    const int64_t begin = std::max(voice.begin, first), end = std::min(voice.end, first + kWindow);
    float* to = window_.data() + 2 * (begin - first);
    const int64_t at = begin - voice.begin;
    const audio::Format& format = sound.format;
    if (format.rate != kRate || format.kind != audio::SampleKind::kS16 || format.channels > 2)
        return AddOther(sound, at, end - begin, to);
    const auto count = static_cast<size_t>(std::clamp<int64_t>(sound.frames - at, 0, end - begin));
    const auto& kernels = audio::BestKernels();
    (format.channels == 2 ? kernels.add_stereo16 : kernels.add_mono16)(sound.data + at * format.frame_bytes,
                                                                       to, count, 1.0f / 32768.0f);
}

bool Mix::Run(const std::vector<Voice>& voices, Loudest* loudest) {
    double left = kMostVoiceSeconds;
    auto next = voices.begin();
    for (int64_t first = 0; next != voices.end() || !active_.empty(); first += kWindow) {
        if (active_.empty()) first = next->begin / kWindow * kWindow;
        for (; next != voices.end() && next->begin < first + kWindow; ++next) active_.push_back(*next);
        // A voice costs a part of a second at least.
        left -= static_cast<double>(active_.size()) * 0.1;
        if (left < 0) return false;
        if (MayPass(first)) {
            std::fill(window_.begin(), window_.end(), 0.0f);
            for (const Voice& voice : active_) {
                Add(voice, first);
                left -= static_cast<double>(std::min(voice.end - first, kWindow)) / kRate;
            }
            const auto magnitude = [](float a, float b) { return std::fabs(a) < std::fabs(b); };
            const auto most = std::max_element(window_.begin(), window_.end(), magnitude);
            const double peak = std::fabs(static_cast<double>(*most));
            loudest->seconds += peak > 1.0;
            if (peak > loudest->peak) {
                loudest->peak = peak;
                loudest->ms = static_cast<double>(first + (most - window_.begin()) / 2) * 1000.0 / kRate;
            }
        }
        std::erase_if(active_, [&](const Voice& voice) { return voice.end <= first + kWindow; });
    }
    return true;
}

}  // namespace

bool MixChart(const std::vector<Fire>& fires, const std::vector<Samples>& samples,
              const std::vector<Envelope>& envelopes, Loudest* loudest) {
    return Mix(samples, envelopes).Run(VoicesOf(fires, samples), loudest);
}

}  // namespace check
