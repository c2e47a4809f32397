#include "compile/stems.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <new>

#include "dialect/mix.h"
#include "platform/sound/limiter.h"

namespace compile {
namespace {

// Bounds that no chart made to be played comes near.
constexpr double kMostStemMs = 10 * 60 * 1000.0;
constexpr double kMostMixedMs = 48.0 * 60 * 60 * 1000;  // of all items together: some minutes of one core
constexpr uint64_t kMostSplitting = uint64_t{512}
                                    << 20;              // bytes of parts while stems are split, on all cores
constexpr double kBytesPerMs = kStemRate * 4 / 1000.0;  // of WAV

// Lends sounds to the mixer, one at a time.
class Lender {
public:
    explicit Lender(const StemSource& source) : source_(source) {}

    dialect::Pcm operator()(int32_t number, size_t most_frames) {
        const SoundPtr sound = source_.shelf.Find(source_.names[static_cast<size_t>(number)]);
        if (!sound || (source_.stopped && source_.stopped())) return {};
        const size_t frames = std::min(sound->Frames(), most_frames);
        samples_.resize(std::max<size_t>(samples_.size(), frames * 2 + 1));
        for (size_t i = 0; i < frames * 2; ++i)
            samples_[i] = static_cast<float>(sound->samples[i]) * (1.0f / 32768.0f);
        return {samples_.data(), frames};
    }

private:
    const StemSource& source_;
    std::vector<float> samples_;
};

double SoundingMs(const StemSource& source, const dialect::StemItem& item) {
    const SoundPtr sound = source.shelf.Find(source.names[static_cast<size_t>(item.sound)]);
    return sound ? std::min(item.cut_ms, sound->Ms()) : 0.0;
}

double LengthOf(const StemSource& source, const dialect::Stem& stem) {
    double length = 0;
    for (const dialect::StemItem& item : stem.items)
        length = std::max(length, item.start_ms + SoundingMs(source, item));
    return length;
}

// Drops what is beyond the bounds.
void BoundItems(const StemSource& source, dialect::Plan* plan) {
    double left = kMostMixedMs;
    int64_t dropped = 0;
    dialect::Place first;
    for (dialect::Stem& stem : plan->stems) {
        const auto beyond = [&](const dialect::StemItem& item) {
            const double ms = SoundingMs(source, item);
            if (item.start_ms + ms <= kMostStemMs && ms <= left) {
                left -= ms;
                return false;
            }
            if (dropped++ == 0) first = item.source;
            return true;
        };
        std::erase_if(stem.items, beyond);
    }
    if (dropped == 0) return;
    plan->findings.push_back({dialect::Severity::kError, "mix-too-long", first,
                              std::to_string(dropped) + " mixed sounds are too long or too far behind the "
                                                        "begin of their measure, they are missing"});
}

// Stems behind kMostStemBytes are emptied.
void BoundBytes(const StemSource& source, dialect::Plan* plan) {
    uint64_t bytes = 0;
    int64_t emptied = 0;
    dialect::Place first;
    for (dialect::Stem& stem : plan->stems) {
        const auto more =
            static_cast<uint64_t>(LengthOf(source, stem) * kBytesPerMs) * static_cast<uint64_t>(stem.parts);
        if (bytes + more <= kMostStemBytes) {
            bytes += more;
            continue;
        }
        if (emptied++ == 0 && !stem.items.empty()) first = stem.items[0].source;
        stem.items.clear();
        stem.parts = 1;
        stem.limited = false;
    }
    if (emptied == 0) return;
    plan->findings.push_back(
        {dialect::Severity::kError, "stems-too-large", first,
         std::to_string(emptied) + " stems are left out, since all of them take too much"});
}

int32_t MostParts(const StemSource& source, const dialect::Stem& stem, uint64_t room, int32_t spare) {
    const uint64_t bytes = static_cast<uint64_t>(LengthOf(source, stem) * kBytesPerMs) * 2 + 1;
    return static_cast<int32_t>(std::clamp<uint64_t>(room / bytes, 1, uint64_t(spare) + 1));
}

void SplitAlone(const StemSource& source, int32_t spare, dialect::Stem* stem) {
    dialect::SplitStem(Lender(source), kStemRate, MostParts(source, *stem, kMostSplitting, spare), stem);
}

// On all cores, each with its share of the room. A stem that would take more is split anew, alone, so that
// the result does not depend on the cores.
void SplitAll(const StemSource& source, int32_t spare, std::vector<dialect::Stem>* stems) {
    const uint64_t share = kMostSplitting / Cores();
    OnAllCores(stems->size(), [&](size_t i) {
        dialect::Stem* stem = &(*stems)[i];
        dialect::SplitStem(Lender(source), kStemRate, MostParts(source, *stem, share, spare), stem);
    });
    for (dialect::Stem& stem : *stems) {
        if (stem.limited && stem.parts < MostParts(source, stem, kMostSplitting, spare))
            SplitAlone(source, spare, &stem);
    }
}

// 1.5 * 2^23 leaves the nearest integer in the low bits of the float, as SoundToWav rounds.
void ToSamples(const std::vector<float>& mix, BYTE* to) {
    for (size_t i = 0; i < mix.size(); ++i) {
        const float value = std::clamp(mix[i] * 32768.0f, -32768.0f, 32767.0f);
        const auto sample = static_cast<uint16_t>(std::bit_cast<uint32_t>(value + 12582912.0f));
        to[2 * i] = static_cast<BYTE>(sample);
        to[2 * i + 1] = static_cast<BYTE>(sample >> 8);
    }
}

void WriteHead(uint32_t data, BYTE* to) {
    const auto text = [&to](const char* four) { std::memcpy(to, four, 4), to += 4; };
    const auto number = [&to](uint32_t value, int bytes) {
        for (int i = 0; i < bytes; ++i) *to++ = static_cast<BYTE>(value >> (8 * i));
    };
    text("RIFF"), number(data + 36, 4), text("WAVE");
    text("fmt "), number(16, 4), number(1, 2), number(2, 2);
    number(kStemRate, 4), number(kStemRate * 4, 4), number(4, 2), number(16, 2);
    text("data"), number(data, 4);
}

bool MakeStem(const StemSource& source, const dialect::Stem& stem, int32_t part, const MayHold& may_hold,
              ByteBlock* wav) {
    constexpr size_t kHead = 44, kLeast = 441 * 2;  // samples: an empty stem is a hundredth of a second
    const auto samples = static_cast<size_t>(LengthOf(source, stem) * kStemRate / 1000 + 1) * 2;
    if (may_hold && !may_hold(samples * 6 + kHead)) return false;
    std::vector<float> mix = dialect::MixPart(stem, part, Lender(source), kStemRate);
    mix.resize(std::max(mix.size(), kLeast));
    if (stem.limited) {
        audio::Limiter limiter;
        limiter.SetRate(kStemRate);
        limiter.Run(mix.data(), mix.size() / 2);
    }
    if (!wav->Resize(kHead + mix.size() * 2)) return false;
    WriteHead(static_cast<uint32_t>(mix.size() * 2), wav->Data());
    ToSamples(mix, wav->Data() + kHead);
    return true;
}

}  // namespace

void FitStems(const StemSource& source, dialect::Plan* plan) {
    BoundItems(source, plan);
    for (dialect::Stem& stem : plan->stems) {
        stem.parts = 1;
        for (dialect::StemItem& item : stem.items) item.part = 0;
    }
    const int32_t spare = dialect::SpareParts(*plan);
    SplitAll(source, spare, &plan->stems);
    int32_t left = spare, limited = 0;
    dialect::Place first;
    for (dialect::Stem& stem : plan->stems) {
        if (stem.parts - 1 > left) SplitAlone(source, left, &stem);
        left -= stem.parts - 1;
        if (stem.limited && limited++ == 0) first = stem.items[0].source;
    }
    if (limited > 0)
        plan->findings.push_back({dialect::Severity::kWarning, "limited", first,
                                  std::to_string(limited) + " stems are louder than their numbers can hold, "
                                                            "they pass a limiter"});
    BoundBytes(source, plan);
    dialect::NumberStems(plan);
}

FileMaker StemMaker(std::shared_ptr<const StemSource> source, const dialect::Stem& stem, int32_t part) {
    return [source = std::move(source), stem, part](const MayHold& may_hold, ByteBlock* wav) {
        try {
            return MakeStem(*source, stem, part, may_hold, wav);
        } catch (const std::bad_alloc&) {
            return false;
        }
    };
}

}  // namespace compile
