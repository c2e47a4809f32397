#include "check/listen.h"

#include <algorithm>
#include <cmath>

#include "platform/sound/kernels.h"
#include "sound/dsbuffer.h"

namespace check {
namespace {

constexpr float kHeard = 0.01f;  // of its peak: 40 dB below, what comes before is masked
constexpr float kStruck =
    0.25f;  // of its peak, within so many pieces: otherwise it swells, and has no attack
constexpr ptrdiff_t kAttack = 5;
constexpr double kLateMs = 20.0;  // a player of the game notices it; encoders of MP3 and Ogg delay by 0 to 26
constexpr double kLateWarnMs = 50.0;
constexpr double kLongMs = 1000.0;         // shorter sounds are meant to be struck again
constexpr float kMissed = 0.1f;            // of its peak, 20 dB below: a cut there is heard
constexpr double kLateStartMs = 11'000.0;  // measure 0 starts at 1000
constexpr double kLoud = 2.0;              // 6 dB above full scale

std::string Decibels(double ratio) {
    char text[40];
    std::snprintf(text, sizeof text, "%.1f dB", 20.0 * std::log10(ratio));
    return text;
}

std::string Milliseconds(double ms) {
    return std::to_string(std::llround(ms)) + " ms";
}

std::vector<bool> NumbersOnKeys(const Subject& subject) {
    std::vector<bool> numbers(BMS_SLOTS);
    const ObjectList notes = NotesOf(subject);
    for (int32_t i = 0; i < notes.count; ++i) {
        const Source* source = notes.SourceOf(notes.sorted[i]);
        if (source && IsVisible(notes.sorted[i]->nChannel))
            numbers[static_cast<size_t>(source->number)] = true;
    }
    return numbers;
}

void CheckAttacks(const std::vector<Envelope>& envelopes, Subject* subject) {
    const std::vector<bool> on_keys = NumbersOnKeys(*subject);
    for (size_t i = 0; i < envelopes.size(); ++i) {
        const double late = envelopes[i].attack_ms;
        const Definition& definition = subject->tables.sounds[i];
        if (!on_keys[i] || late < kLateMs || definition.made) continue;
        subject->findings.Add(definition.NamePlace(), "late-attack", late < kLateWarnMs ? kNote : kWarning,
                              [&] {
                                  return Quote(definition.name) + " begins with " + Milliseconds(late) +
                                         " of silence, so its notes are heard late; cut it off";
                              });
    }
}

// Long sounds that their next start cuts while they are heard.
void CheckRestarts(const std::vector<Fire>& fires, const std::vector<Samples>& samples,
                   const std::vector<Envelope>& envelopes, Subject* subject) {
    struct Cut {
        const Fire* last = nullptr;
        Place first;
        int64_t cuts = 0;
        double shortest = 0.0;
    };
    std::vector<Cut> cuts(samples.size());
    for (const Fire& fire : fires) {
        const auto i = static_cast<size_t>(fire.number);
        Cut& cut = cuts[i];
        const double gap = cut.last ? static_cast<double>(fire.ms) - cut.last->ms : 0.0;
        cut.last = &fire;
        if (gap <= 0.0 || samples[i].Ms() <= kLongMs || gap >= samples[i].Ms()) continue;
        const auto piece = static_cast<size_t>(gap * Envelope::kPieces / 1000.0);
        const std::vector<float>& rest = envelopes[i].rest;
        if (piece >= rest.size() || rest[piece] < kMissed * rest[0] || rest[piece] == 0.0f) continue;
        if (cut.cuts++ == 0) cut.first = fire.place;
        cut.shortest = cut.shortest > 0.0 ? std::min(cut.shortest, gap) : gap;
    }
    for (size_t i = 0; i < cuts.size(); ++i) {
        const Cut& cut = cuts[i];
        if (cut.cuts == 0) continue;
        subject->findings.Add(cut.first, "sound-restarted", [&] {
            return Quote(subject->tables.sounds[i].name) + " lasts " + Milliseconds(samples[i].Ms()) +
                   " and is started again after " + Milliseconds(cut.shortest) + " or more, " +
                   CountOf(cut.cuts, "time") +
                   " in all, which cuts it off; to let it ring, define the file twice";
        });
    }
}

void CheckClipping(const std::vector<Fire>& fires, const std::vector<Samples>& samples,
                   const std::vector<Envelope>& envelopes, Subject* subject) {
    const std::vector<Definition>& sounds = subject->tables.sounds;
    // What the compiler mixes is not loaded.
    if (std::any_of(sounds.begin(), sounds.end(), [](const Definition& sound) { return sound.made; })) return;
    Loudest loudest;
    if (!MixChart(fires, samples, envelopes, &loudest) || loudest.peak <= 1.0) return;
    const auto after = std::upper_bound(fires.begin(), fires.end(), loudest.ms,
                                        [](double ms, const Fire& fire) { return ms < fire.ms; });
    subject->findings.Add(after == fires.begin() ? Place{1, 1} : after[-1].place, "clipping",
                          loudest.peak < kLoud ? kNote : kWarning, [&] {
                              return "the mix passes full scale by up to " + Decibels(loudest.peak) +
                                     ", at " + TimeOf(loudest.ms) + ", and in " +
                                     CountOf(loudest.seconds, "second") +
                                     " in all; the player turns it down there, others clip";
                          });
}

// Of sounds that are heard: those that are loaded, or made by the compiler.
void CheckStart(const std::vector<Fire>& fires, const std::vector<Samples>& samples, Subject* subject) {
    Figures& figures = subject->figures;
    const auto heard = [&](const Fire& fire) {
        const auto number = static_cast<size_t>(fire.number);
        return samples[number].frames > 0 || subject->tables.sounds[number].made;
    };
    const auto first = std::find_if(fires.begin(), fires.end(), heard);
    if (first == fires.end()) return;
    figures.first_sound_ms = first->ms;
    figures.last_sound_ms = std::find_if(fires.rbegin(), fires.rend(), heard)->ms;
    if (first->ms < kLateStartMs) return;
    subject->findings.Add(first->place, "late-start", [&] {
        return "the first sound comes at " + TimeOf(first->ms) + "; nothing is heard before";
    });
}

}  // namespace

Samples SamplesOf(const Subject& subject, int32_t number) {
    Samples samples;
    const CDSBuffer* sound = subject.sound.m_pSlot[number];
    void* data = nullptr;
    DWORD bytes = 0;
    if (!sound || !sound->m_pDSB || sound->m_hAcm || !audio::ParseFormat(sound->m_wfx, &samples.format) ||
        sound->m_pDSB->Lock(0, 0, &data, &bytes, nullptr, nullptr, DSBLOCK_ENTIREBUFFER) != DS_OK)
        return {};
    sound->m_pDSB->Unlock(data, bytes, nullptr, 0);
    samples.data = static_cast<const unsigned char*>(data);
    samples.frames = std::min(bytes, sound->m_nPcmLen) / static_cast<DWORD>(samples.format.frame_bytes);
    return samples;
}

Envelope EnvelopeOf(const Samples& samples) {
    Envelope envelope;
    if (!samples.data) return envelope;
    const audio::Format& format = samples.format;
    std::vector<float> left(static_cast<size_t>(format.rate / Envelope::kPieces + 1)), right(left.size());
    const auto first_of = [&](size_t piece) {
        return std::min(static_cast<int64_t>(piece) * format.rate / Envelope::kPieces, samples.frames);
    };
    const auto read = [&](size_t piece) {
        const int64_t first = first_of(piece);
        const auto count = static_cast<size_t>(first_of(piece + 1) - first);
        audio::ReadFrames(format, samples.data + first * format.frame_bytes, count, left.data(),
                          right.data());
        return count;
    };
    const auto& kernels = audio::BestKernels();
    for (size_t i = 0; first_of(i) < samples.frames; ++i) {
        const size_t count = read(i);
        const float right_peak = format.channels > 1 ? kernels.peak(right.data(), count) : 0.0f;
        envelope.peaks.push_back(std::max(kernels.peak(left.data(), count), right_peak));
    }
    envelope.rest = envelope.peaks;
    for (size_t i = envelope.rest.size(); i-- > 1;)
        envelope.rest[i - 1] = std::max(envelope.rest[i - 1], envelope.rest[i]);
    const float heard = kHeard * envelope.Peak();
    size_t piece = 0;
    while (piece < envelope.peaks.size() && envelope.peaks[piece] < heard) ++piece;
    const auto from = envelope.peaks.begin() + static_cast<ptrdiff_t>(piece);
    const bool swells = std::none_of(from, from + std::min<ptrdiff_t>(kAttack, envelope.peaks.end() - from),
                                     [&](float peak) { return peak >= kStruck * envelope.Peak(); });
    if (heard == 0.0f || swells) return envelope;
    const size_t count = read(piece);
    size_t at = 0;
    while (at + 1 < count && std::max(std::fabs(left[at]), std::fabs(right[at])) < heard) ++at;
    envelope.attack_ms =
        static_cast<double>(first_of(piece) + static_cast<int64_t>(at)) * 1000.0 / format.rate;
    return envelope;
}

void CheckHearing(Subject* subject) {
    std::vector<Fire> fires = FiresOf(*subject);
    std::erase_if(fires, [](const Fire& fire) { return fire.ms == INT32_MAX; });  // they never come
    std::vector<Samples> samples(BMS_SLOTS);
    std::vector<Envelope> envelopes(BMS_SLOTS);
    for (int32_t i = 0; i < BMS_SLOTS; ++i) {
        const auto at = static_cast<size_t>(i);
        samples[at] = SamplesOf(*subject, i);
        envelopes[at] = EnvelopeOf(samples[at]);
    }
    CheckStart(fires, samples, subject);
    CheckAttacks(envelopes, subject);
    CheckRestarts(fires, samples, envelopes, subject);
    CheckClipping(fires, samples, envelopes, subject);
}

}  // namespace check
