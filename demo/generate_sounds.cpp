// Synthesises the demo's instruments.
#include "generate.h"
#include "generate_math.h"

namespace demo {
namespace {

Wave Empty(int rate, int channels, double seconds) {
    Wave wave = {rate, channels, {}};
    wave.samples.resize(static_cast<size_t>(seconds * rate) * channels);
    return wave;
}

int Frames(const Wave& wave) {
    return static_cast<int>(wave.samples.size()) / wave.channels;
}

constexpr double kMaster = 0.74;

// Fades both ends and normalises the sound to the peak. Levels are fixed here, because a chart has no
// volumes: with these peaks the whole tune stays below full scale.
Wave Finish(Wave wave, double peak, double fade_in, double fade_out) {
    const int frames = Frames(wave);
    double most = 1e-9;
    for (int i = 0; i < frames; ++i) {
        double t = static_cast<double>(i) / wave.rate, left = static_cast<double>(frames - 1 - i) / wave.rate;
        double gain = Clamp(t / fade_in, 0, 1) * Step(0, fade_out, left);
        for (int c = 0; c < wave.channels; ++c) {
            double& x = wave.samples[static_cast<size_t>(i) * wave.channels + c];
            x *= gain;
            most = x > most ? x : -x > most ? -x : most;
        }
    }
    for (double& x : wave.samples) x *= kMaster * peak / most;
    return wave;
}

// A small room reverb: four combs and two all-passes per channel, of different lengths on each side.
void AddRoom(Wave* wave, double wet, double feedback) {
    static const double kCombs[4] = {0.0297, 0.0371, 0.0411, 0.0437}, kPasses[2] = {0.005, 0.0017};
    const int frames = Frames(*wave);
    for (int c = 0; c < wave->channels; ++c) {
        std::vector<double> sum(frames);
        for (double seconds : kCombs) {
            int delay = static_cast<int>((seconds + 0.0011 * c) * wave->rate);
            std::vector<double> line(frames);
            double soft = 0;
            for (int i = 0; i < frames; ++i) {
                double back = i >= delay ? line[i - delay] : 0;
                soft = back + (soft - back) * 0.35;
                line[i] = wave->samples[static_cast<size_t>(i) * wave->channels + c] + soft * feedback;
                sum[i] += back * 0.25;
            }
        }
        for (double seconds : kPasses) {
            int delay = static_cast<int>(seconds * wave->rate);
            std::vector<double> line(frames);
            for (int i = 0; i < frames; ++i) {
                double back = i >= delay ? line[i - delay] : 0, in = sum[i] + 0.6 * back;
                line[i] = in;
                sum[i] = back - 0.6 * in;
            }
        }
        for (int i = 0; i < frames; ++i)
            wave->samples[static_cast<size_t>(i) * wave->channels + c] += wet * sum[i];
    }
}

// Adds the decaying partials of one string of an ensemble to one channel.
struct String {
    double frequency, gain;
    double tilt;     // partial k starts at 1 / k to this power; 1 or 2 (rounded between)
    double dulling;  // and decays this much faster than the previous one, per second
    double vibrato;  // seconds by which the phase swings
    double phase;
    int partials;
};

void AddString(Wave* wave, int channel, const String& s) {
    const int frames = Frames(*wave);
    std::vector<double> at(frames);
    for (int i = 0; i < frames; ++i) {
        double t = static_cast<double>(i) / wave->rate;
        at[i] = s.frequency * (t + s.vibrato * Step(0.12, 0.35, t) * Sine(5.6 * t)) + s.phase;
    }
    for (int k = 1; k <= s.partials && s.frequency * k < 0.45 * wave->rate; ++k) {
        double level = s.gain * Mix(1.0 / k, 1.0 / (k * k), s.tilt - 1),
               fall = Exp(-s.dulling * (k - 1) / wave->rate);
        for (int i = 0; i < frames; ++i) {
            wave->samples[static_cast<size_t>(i) * wave->channels + channel] +=
                level * Sine(at[i] * k + 0.13 * k * k);
            level *= fall;
        }
    }
}

void Decay(Wave* wave, double per_second) {
    double gain = 1, fall = Exp(-per_second / wave->rate);
    for (int i = 0; i < Frames(*wave); ++i, gain *= fall) {
        for (int c = 0; c < wave->channels; ++c)
            wave->samples[static_cast<size_t>(i) * wave->channels + c] *= gain;
    }
}

// High-passed noise; higher is sharper.
class HighNoise {
public:
    HighNoise(uint32_t seed, double sharpness) : random_(seed), sharpness_(sharpness) {}
    double Next() {
        double x = random_.Noise();
        low_ += (x - low_) * sharpness_;
        double high = x - low_;
        low2_ += (high - low2_) * sharpness_;
        return high - low2_;
    }

private:
    Random random_;
    double sharpness_, low_ = 0, low2_ = 0;
};

Wave Kick() {
    Wave wave = Empty(44100, 1, 0.32);
    Random random(1);
    double phase = 0;
    for (int i = 0; i < Frames(wave); ++i) {
        double t = static_cast<double>(i) / wave.rate;
        phase += (47 + 150 * Exp(-t * 34) + 500 * Exp(-t * 260)) / wave.rate;
        double x = 1.6 * Sine(phase) * Exp(-t * 7.5) + 0.25 * random.Noise() * Exp(-t * 500);
        wave.samples[i] = x / (1 + 0.45 * (x < 0 ? -x : x));
    }
    return Finish(wave, 0.36, 0.0005, 0.06);
}

Wave Snare() {
    Wave wave = Empty(44100, 1, 0.3);
    HighNoise noise(2, 0.09);
    for (int i = 0; i < Frames(wave); ++i) {
        double t = static_cast<double>(i) / wave.rate;
        double body =
            Sine(188 * t + 0.9 * (1 - Exp(-t * 60))) * Exp(-t * 24) + 0.6 * Sine(331 * t) * Exp(-t * 34);
        wave.samples[i] = 0.8 * body + 0.75 * noise.Next() * (Exp(-t * 17) + 0.5 * Exp(-t * 90));
    }
    AddRoom(&wave, 0.25, 0.6);
    return Finish(wave, 0.36, 0.0005, 0.1);
}

Wave Clap() {
    Wave wave = Empty(22050, 1, 0.24);
    HighNoise noise(3, 0.12);
    for (int i = 0; i < Frames(wave); ++i) {
        double t = static_cast<double>(i) / wave.rate, envelope = 0;
        for (double start : {0.0, 0.011, 0.022}) envelope += t >= start ? Exp(-(t - start) * 220) : 0;
        wave.samples[i] = noise.Next() * (envelope + (t >= 0.03 ? 0.8 * Exp(-(t - 0.03) * 26) : 0));
    }
    return Finish(wave, 0.2, 0.0003, 0.08);
}

Wave Hat(bool open) {
    Wave wave = Empty(44100, 1, open ? 0.26 : 0.07);
    HighNoise noise(open ? 4 : 5, 0.5);
    for (int i = 0; i < Frames(wave); ++i) {
        double t = static_cast<double>(i) / wave.rate;
        double metal = Sine(6133 * t) + Sine(7411 * t + Sine(5231 * t)) + Sine(9370 * t);
        wave.samples[i] = (noise.Next() + 0.05 * metal) * Exp(-t * (open ? 13 : 62));
    }
    return Finish(wave, open ? 0.12 : 0.11, 0.0003, open ? 0.12 : 0.03);
}

Wave Tom(int number) {
    Wave wave = Empty(22050, 1, 0.34);
    Random random(6);
    double phase = 0, base = number == 0 ? 165 : number == 1 ? 123 : 92;
    for (int i = 0; i < Frames(wave); ++i) {
        double t = static_cast<double>(i) / wave.rate;
        phase += base * (1 + 0.7 * Exp(-t * 30)) / wave.rate;
        wave.samples[i] = Sine(phase) * Exp(-t * 9) + 0.2 * random.Noise() * Exp(-t * 80);
    }
    return Finish(wave, 0.34, 0.0005, 0.12);
}

Wave Crash() {
    Wave wave = Empty(44100, 2, 1.9);
    for (int c = 0; c < 2; ++c) {
        HighNoise noise(7 + static_cast<uint32_t>(c), 0.3);
        for (int i = 0; i < Frames(wave); ++i) {
            double t = static_cast<double>(i) / wave.rate, metal = 0;
            for (int k = 0; k < 6; ++k)
                metal += Sine((2713 + 911 * k + 37 * k * k + 3 * c) * t + 0.3 * Sine((411 + 97 * k) * t));
            wave.samples[static_cast<size_t>(i) * 2 + c] =
                (noise.Next() + 0.02 * metal) * (Exp(-t * 2.6) + 0.6 * Exp(-t * 18));
        }
    }
    return Finish(wave, 0.2, 0.0005, 0.7);
}

Wave Riser() {
    Wave wave = Empty(44100, 1, 1.05);
    Random random(9);
    double low = 0, band = 0, phase = 0;
    for (int i = 0; i < Frames(wave); ++i) {
        double t = static_cast<double>(i) / wave.rate, along = t / 1.05;
        double tune = 2 * Sine((500 + 7000 * along * along) / (2.0 * wave.rate));
        low += tune * band;
        band += tune * (random.Noise() - low - 0.5 * band);
        phase += 370 * (1 + along) / wave.rate;
        wave.samples[i] = (0.5 * band + 0.3 * Sine(phase)) * along * along;
    }
    return Finish(wave, 0.17, 0.01, 0.02);
}

Wave Boom() {
    Wave wave = Empty(22050, 1, 1.1);
    Random random(10);
    double phase = 0, low = 0;
    for (int i = 0; i < Frames(wave); ++i) {
        double t = static_cast<double>(i) / wave.rate;
        phase += (41 + 60 * Exp(-t * 16)) / wave.rate;
        low += (random.Noise() - low) * 0.06;
        wave.samples[i] = Sine(phase) * Exp(-t * 3.2) + 1.2 * low * Exp(-t * 9);
    }
    AddRoom(&wave, 0.2, 0.75);
    return Finish(wave, 0.36, 0.001, 0.4);
}

Wave Zap() {
    Wave wave = Empty(22050, 1, 0.2);
    HighNoise noise(11, 0.3);
    double phase = 0;
    for (int i = 0; i < Frames(wave); ++i) {
        double t = static_cast<double>(i) / wave.rate;
        phase += (280 + 2600 * Exp(-t * 26) * (1 + 0.3 * Sine(31 * t))) / wave.rate;
        wave.samples[i] = (Sine(phase) + 0.5 * noise.Next()) * Exp(-t * 13);
    }
    return Finish(wave, 0.15, 0.001, 0.06);
}

Wave Bass(int note) {
    Wave wave = Empty(22050, 1, 0.36);
    double f = Pitch(note);
    AddString(&wave, 0, {f, 1.0, 1.0, 1.6, 0, 0, 40});
    AddString(&wave, 0, {f * 1.004, 0.6, 1.0, 2.4, 0, 0.3, 30});
    AddString(&wave, 0, {f, 0.9, 2.0, 0, 0, 0, 1});
    Decay(&wave, 2.6);
    return Finish(wave, 0.27, 0.003, 0.07);
}

Wave Lead(int note) {
    Wave wave = Empty(44100, 1, 0.52);
    double f = Pitch(note);
    AddString(&wave, 0, {f * 0.9972, 1.0, 1.1, 1.1, 0.00022, 0, 28});
    AddString(&wave, 0, {f * 1.0028, 1.0, 1.1, 1.1, 0.00022, 0.41, 28});
    AddString(&wave, 0, {f * 0.5, 0.35, 1.3, 4.0, 0, 0.2, 12});
    Decay(&wave, 3.4);
    AddRoom(&wave, 0.35, 0.72);
    return Finish(wave, 0.25, 0.004, 0.16);
}

Wave Bell(int note) {
    Wave wave = Empty(22050, 1, 0.5);
    double f = Pitch(note);
    for (int i = 0; i < Frames(wave); ++i) {
        double t = static_cast<double>(i) / wave.rate;
        double touch = Sine(f * 3.0 * t) * 0.22 * Exp(-t * 9);
        wave.samples[i] = Sine(f * t + touch) * Exp(-t * 5) + 0.3 * Sine(f * 2.002 * t) * Exp(-t * 11);
    }
    AddRoom(&wave, 0.4, 0.75);
    return Finish(wave, 0.12, 0.002, 0.2);
}

// The chord one octave up, short and wide.
Wave Stab(int chord) {
    Wave wave = Empty(22050, 2, 0.34);
    int number = 0;
    for (int note : ChordNotes(chord)) {
        double f = Pitch(note + 12);
        for (int c = 0; c < 2; ++c) {
            double side = c == 0 ? 1 : -1;
            AddString(&wave, c, {f * (1 + 0.0021 * side), 1.0, 1.2, 2.6, 0, 0.21 * number, 18});
            AddString(&wave, c, {f * (1 - 0.0047 * side), 0.7, 1.2, 2.6, 0, 0.57 + 0.13 * number, 18});
        }
        ++number;
    }
    Decay(&wave, 6.5);
    AddRoom(&wave, 0.35, 0.7);
    return Finish(wave, 0.19, 0.002, 0.12);
}

Wave Pad(int chord) {
    Wave wave = Empty(22050, 2, 2.15);
    int number = 0;
    for (int note : ChordNotes(chord)) {
        double f = Pitch(note);
        for (int c = 0; c < 2; ++c) {
            double side = c == 0 ? 1 : -1;
            AddString(&wave, c, {f * (1 + 0.0013 * side), 1.0, 1.7, 0.05, 0.0002, 0.31 * number, 8});
            AddString(&wave, c, {f * (1 - 0.0024 * side), 0.8, 1.7, 0.05, 0.0003, 0.11 + 0.17 * number, 8});
        }
        ++number;
    }
    return Finish(wave, 0.15, 0.16, 0.5);
}

}  // namespace

std::vector<int> ChordNotes(int chord) {
    static const std::vector<int> kNotes[kChords] = {
        {55, 59, 62, 66},  // G major seventh
        {57, 61, 64, 69},  // A
        {54, 57, 61, 64},  // F sharp minor seventh
        {54, 59, 62, 69},  // B minor seventh
        {57, 62, 64, 66},  // D with added ninth
        {52, 55, 59, 62},  // E minor seventh
        {54, 58, 61, 64},  // F sharp seventh
    };
    return kNotes[chord];
}

Wave Play(const Voice& voice) {
    switch (voice.instrument) {
        case Instrument::kKick:
            return Kick();
        case Instrument::kSnare:
            return Snare();
        case Instrument::kClap:
            return Clap();
        case Instrument::kHat:
            return Hat(false);
        case Instrument::kOpenHat:
            return Hat(true);
        case Instrument::kTom:
            return Tom(voice.note);
        case Instrument::kCrash:
            return Crash();
        case Instrument::kRiser:
            return Riser();
        case Instrument::kBoom:
            return Boom();
        case Instrument::kZap:
            return Zap();
        case Instrument::kBass:
            return Bass(voice.note);
        case Instrument::kLead:
            return Lead(voice.note);
        case Instrument::kBell:
            return Bell(voice.note);
        case Instrument::kStab:
            return Stab(voice.note);
        case Instrument::kPad:
            return Pad(voice.note);
    }
    return {};
}

// Only formats that the player decodes by itself, so the demo starts at once, without the codec library.
Format FormatOf(const Voice& voice) {
    switch (voice.instrument) {
        case Instrument::kClap:
        case Instrument::kTom:
            return Format::kPcm8;
        case Instrument::kBoom:
            return Format::kXaFine;
        case Instrument::kCrash:
        case Instrument::kRiser:
        case Instrument::kPad:
            return Format::kXaFast;
        default:
            return Format::kPcm16;
    }
}

std::string SoundName(const Voice& voice) {
    static const char* const kNames[] = {"kick", "snare", "clap", "hat",  "hatopen", "tom",  "crash", "riser",
                                         "boom", "zap",   "bass", "lead", "bell",    "stab", "pad"};
    static const char* const kPitches[] = {"c", "cs", "d", "ds", "e", "f", "fs", "g", "gs", "a", "as", "b"};
    static const char* const kChordNames[] = {"g", "a", "fsm", "bm", "d", "em", "fs"};
    std::string name = kNames[static_cast<int>(voice.instrument)];
    if (voice.instrument >= Instrument::kStab) {
        name += std::string("_") + kChordNames[voice.note];
    } else if (voice.instrument >= Instrument::kBass) {
        name += std::string("_") + kPitches[voice.note % 12] + std::to_string(voice.note / 12 - 1);
    } else if (voice.instrument == Instrument::kTom) {
        name += std::to_string(voice.note + 1);
    }
    Format format = FormatOf(voice);
    return name + (format == Format::kXaFine || format == Format::kXaFast ? ".xa" : ".wav");
}

}  // namespace demo
