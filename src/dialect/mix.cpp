#include "dialect/mix.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace dialect {

namespace {

// Where an item lies in its stem, in frames.
struct Span {
    size_t begin, frames;
};

// The frames after which the item is cut; SIZE_MAX: it rings out.
size_t CutOf(const StemItem& item, double rate) {
    const double cut = item.cut_ms * rate / 1000;
    return cut < 1e15 ? static_cast<size_t>(std::llround(cut)) : SIZE_MAX;
}

Span SpanOf(const StemItem& item, const Pcm& pcm, double rate) {
    const size_t begin = static_cast<size_t>(std::llround(std::max(item.start_ms, 0.0) * rate / 1000));
    return {begin, pcm.samples ? std::min(pcm.frames, CutOf(item, rate)) : 0};
}

bool Fits(const std::vector<float>& mix, const Pcm& pcm, Span span) {
    for (size_t i = 0; i < span.frames * 2; ++i) {
        const size_t at = span.begin * 2 + i;
        if (at >= mix.size()) break;  // nothing there yet, and a sound alone fits
        if (std::fabs(mix[at] + pcm.samples[i]) > kFullScale) return false;
    }
    return true;
}

void AddTo(std::vector<float>* mix, const Pcm& pcm, Span span) {
    if (span.frames == 0) return;
    mix->resize(std::max(mix->size(), (span.begin + span.frames) * 2));
    float* to = mix->data() + span.begin * 2;
    for (size_t i = 0; i < span.frames * 2; ++i) to[i] += pcm.samples[i];
}

}  // namespace

void SplitStem(const PcmOf& pcm, double rate, int32_t most, Stem* stem) {
    std::vector<std::vector<float>> parts(1);
    stem->limited = false;
    for (StemItem& item : stem->items) {
        const Pcm sound = pcm(item.sound, CutOf(item, rate));
        const Span span = SpanOf(item, sound, rate);
        size_t part = parts.size() - std::min(parts.size(), kMostTried);
        while (part < parts.size() && !Fits(parts[part], sound, span)) ++part;
        if (part == parts.size()) {
            if (static_cast<int32_t>(parts.size()) < most) {
                parts.emplace_back();
            } else {
                --part;
                stem->limited = true;
            }
        }
        AddTo(&parts[part], sound, span);
        item.part = static_cast<int32_t>(part);
    }
    stem->parts = static_cast<int32_t>(parts.size());
}

std::vector<float> MixPart(const Stem& stem, int32_t part, const PcmOf& pcm, double rate) {
    std::vector<float> mix;
    for (const StemItem& item : stem.items) {
        if (item.part != part) continue;
        const Pcm sound = pcm(item.sound, CutOf(item, rate));
        AddTo(&mix, sound, SpanOf(item, sound, rate));
    }
    return mix;
}

int32_t SplitStems(const PcmOf& pcm, double rate, Plan* plan) {
    int32_t limited = 0;
    for (Stem& stem : plan->stems) {
        stem.parts = 1;
        for (StemItem& item : stem.items) item.part = 0;
    }
    for (Stem& stem : plan->stems) {
        SplitStem(pcm, rate, 1 + SpareParts(*plan), &stem);
        limited += stem.limited;
    }
    NumberStems(plan);
    return limited;
}

}  // namespace dialect
