// Composes the demo's tune as a chart: when each sound and picture starts, and on which lane.
#include <algorithm>
#include <cstdio>
#include <map>
#include <numeric>

#include "generate.h"
#include "generate_math.h"

namespace demo {
namespace {

// The tune, in measures: intro, half a measure of fill, verse, half a measure of break, chorus, and a slowing
// end.
constexpr int kFill = 2, kVerse = 3, kBreak = 11, kChorus = 12, kSlowing = 20, kLast = 21;
constexpr int kLastSteps = 20;  // sixteenths in the last measure

// Channels, as written in the chart.
constexpr int kBackground = 1, kTempoHex = 3, kBase = 4, kPoorLayer = 6, kOverlay = 7, kTempo = 8;
constexpr int kScratch = 16, kPedal = 17, kScratch2 = 26, kPedal2 = 27;
constexpr int kBlankPicture = 1295;  // a definition that does not exist, which blanks its layer

struct Event {
    int step, steps;
    std::string pair;
};

std::string Pair(int number, int base) {
    static const char kDigits[] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    return {kDigits[number / base], kDigits[number % base]};
}

class Writer {
public:
    void Put(int measure, int channel, int step, int steps, const std::string& pair) {
        events_[{measure, channel}].push_back({step, steps, pair});
    }
    void Sound(int measure, int channel, int step, Instrument instrument, int note = 0, int steps = 16) {
        Voice voice = {instrument, note};
        auto at = std::find(voices_.begin(), voices_.end(), voice);
        if (at == voices_.end()) at = voices_.insert(at, voice);
        Put(measure, channel, step, steps, Pair(static_cast<int>(at - voices_.begin()) + 1, 36));
    }
    void Show(int measure, int channel, int step, int steps, int picture) {
        Put(measure, channel, step, steps, Pair(picture, 36));
    }
    // Shows a rectangle of a picture at a position in the layer. Equal rectangles share a number.
    void ShowPart(int measure, int channel, int step, int steps, int picture, int x, int y, int w, int h,
                  int dx, int dy) {
        char text[80];
        std::snprintf(text, sizeof text, "%s %d %d %d %d %d %d", Pair(picture, 36).c_str(), x, y, x + w,
                      y + h, dx, dy);
        auto [at, fresh] = parts_.try_emplace(text, kFirstPart + static_cast<int>(parts_.size()));
        if (fresh) part_lines_ += "#BGA" + Pair(at->second, 36) + " " + text + "\r\n";
        Show(measure, channel, step, steps, at->second);
    }
    const std::vector<Voice>& voices() const { return voices_; }
    const std::string& part_lines() const { return part_lines_; }
    std::string Lines() const {
        std::string out;
        int last = -1;
        for (const auto& [key, events] : events_) {
            if (key.first != last) out += "\r\n";
            last = key.first;
            AppendLines(&out, key.first, key.second, events);
        }
        return out;
    }

private:
    static constexpr int kFirstPart = 36;  // after the pictures' own numbers

    // Writes as many lines as a measure's events need, each with the coarsest grid that fits them.
    static void AppendLines(std::string* out, int measure, int channel, std::vector<Event> rest) {
        while (!rest.empty()) {
            std::vector<Event> line, later;
            for (const Event& e : rest) {
                bool taken = std::any_of(line.begin(), line.end(), [&e](const Event& o) {
                    return o.step * e.steps == e.step * o.steps;
                });
                (taken ? later : line).push_back(e);
            }
            int grid = 1;
            for (const Event& e : line) grid = std::lcm(grid, e.steps / std::gcd(e.steps, e.step));
            std::string data(static_cast<size_t>(grid) * 2, '0');
            for (const Event& e : line)
                data.replace(static_cast<size_t>(e.step * grid / e.steps) * 2, 2, e.pair);
            char head[16];
            std::snprintf(head, sizeof head, "#%03d%02d:", measure, channel);
            *out += head + data + "\r\n";
            rest = later;
        }
    }

    std::map<std::pair<int, int>, std::vector<Event>> events_;
    std::vector<Voice> voices_;
    std::map<std::string, int> parts_;
    std::string part_lines_;
};

struct Note {
    int step, pitch;
};
using Phrase = std::vector<Note>;

constexpr int F4 = 66, A4 = 69, As4 = 70, B4 = 71, C5 = 73, D5 = 74, E5 = 76, F5 = 78, G5 = 79, A5 = 81,
              As5 = 82, B5 = 83, C6 = 85, D6 = 86;  // C and F are sharp, as in D major

const Phrase kVerseLead[8] = {
    {{0, F4}, {2, B4}, {4, C5}, {6, D5}, {10, C5}, {12, B4}},
    {{0, B4}, {4, A4}, {6, B4}, {8, D5}, {12, B4}},
    {{0, A4}, {2, D5}, {4, E5}, {6, F5}, {10, E5}, {12, D5}},
    {{0, E5}, {6, C5}, {8, A4}, {12, B4}, {14, C5}},
    {{0, D5}, {2, F5}, {4, E5}, {6, D5}, {10, E5}, {12, F5}},
    {{0, G5}, {3, F5}, {6, D5}, {8, B4}, {12, D5}, {14, E5}},
    {{0, G5}, {4, E5}, {6, F5}, {8, G5}, {11, A5}, {14, G5}},
    {{0, F5}, {4, C5}, {8, As4}, {12, C5}, {14, E5}},
};
const Phrase kBreakLead = {{0, F4}, {1, As4}, {2, C5}, {3, E5}, {4, F5}, {5, As5}, {6, C6}};
// One motif, then the same a fourth lower; twice.
const Phrase kChorusLead[8] = {
    {{0, B5}, {3, A5}, {6, F5}, {8, A5}, {12, D5}, {14, E5}},
    {{0, F5}, {3, E5}, {6, C5}, {8, E5}, {12, A4}, {14, B4}},
    {{0, C5}, {3, E5}, {6, F5}, {8, A5}, {11, F5}, {14, E5}},
    {{0, F5}, {4, D5}, {6, E5}, {8, F5}, {12, A5}, {14, B5}},
    {{0, B5}, {3, A5}, {6, F5}, {8, A5}, {12, D5}, {14, E5}},
    {{0, F5}, {3, E5}, {6, C5}, {8, E5}, {11, F5}, {14, G5}},
    {{0, A5}, {4, F5}, {8, D5}, {10, E5}, {12, F5}, {14, A5}},
    {{0, D6}, {6, C6}, {8, B5}, {10, A5}, {12, F5}, {14, A5}},
};
const Phrase kSlowingLead = {{0, B5}, {3, A5}, {6, F5}, {8, E5}, {10, F5}, {12, A5}, {14, C6}};
const Phrase kIntroBells[2] = {
    {{0, D5}, {2, F5}, {4, B5}, {6, A5}, {8, F5}, {10, D5}, {12, E5}, {14, F5}},
    {{0, C5}, {2, E5}, {4, A5}, {6, B5}, {8, A5}, {10, E5}, {12, F5}, {14, E5}},
};
constexpr int kVerseChords[8] = {kChordBm, kChordG, kChordD,  kChordA,
                                 kChordBm, kChordG, kChordEm, kChordFsharp};
constexpr int kChorusChords[8] = {kChordG, kChordA, kChordFsharpMinor, kChordBm,
                                  kChordG, kChordA, kChordD,           kChordD};

// The bass note of each chord.
constexpr int kRoots[kChords] = {31, 33, 30, 35, 38, 40, 30};

// Keys of the first side, low to high; the melody's contour moves across them.
int MelodyLane(int pitch) {
    static const int kLanes[7] = {11, 12, 13, 14, 15, 18, 19};
    static const int kTops[7] = {A4, B4, D5, F5, A5, B5, D6};
    int lane = 0;
    while (lane < 6 && pitch > kTops[lane]) ++lane;
    return kLanes[lane];
}

// The sixteenths in a measure.
int StepsOf(int measure) {
    return measure == kFill || measure == kBreak ? 8 : measure == kLast ? kLastSteps : 16;
}

void PutLead(Writer* w, int measure, const Phrase& phrase, bool echo = true) {
    const int steps = StepsOf(measure);
    for (const Note& n : phrase) {
        w->Sound(measure, MelodyLane(n.pitch), n.step, Instrument::kLead, n.pitch, steps);
        if (!echo || (n.step != 0 && n.step != 6 && n.step != 8)) continue;
        int late = n.step + 3;  // a dotted eighth later, softly
        int in = measure + late / steps;
        w->Sound(in, kBackground, late % steps, Instrument::kBell, n.pitch, StepsOf(in));
    }
}

// Bass in threes and twos against the beat, on the low keys of the second side.
void PutBass(Writer* w, int measure, int root, int second_root) {
    static const int kSteps[6] = {0, 3, 6, 8, 11, 14};
    for (int step : kSteps) {
        bool high = step == 6 || step == 14;
        int pitch = (step < 8 ? root : second_root) + (high ? 12 : 0);
        w->Sound(measure, high ? 25 : step == 3 || step == 11 ? 24 : 23, step, Instrument::kBass, pitch);
    }
}

void PutDrums(Writer* w, int measure, bool chorus) {
    for (int step = 0; step < 16; step += 4) w->Sound(measure, 21, step, Instrument::kKick);
    if (chorus) w->Sound(measure, 21, 14, Instrument::kKick);
    for (int step : {4, 12}) {
        w->Sound(measure, 22, step, Instrument::kSnare);
        if (chorus) w->Sound(measure, kBackground, step, Instrument::kClap);
    }
    for (int step = 0; step < 16; ++step) {
        if (step % 4 == 2) {
            w->Sound(measure, kBackground, step, Instrument::kOpenHat);
        } else if (chorus || step % 2 == 0 || step % 8 == 7) {
            w->Sound(measure, kBackground, step, Instrument::kHat);
        }
    }
}

// The last beat of every fourth measure.
void PutFill(Writer* w, int measure) {
    w->Sound(measure, 22, 13, Instrument::kSnare);
    w->Sound(measure, 28, 14, Instrument::kTom, 0);
    w->Sound(measure, 29, 15, Instrument::kTom, 1);
}

void PutIntro(Writer* w) {
    for (int m = 0; m < 2; ++m) {
        w->Sound(m, kBackground, 0, Instrument::kPad, m == 0 ? kChordG : kChordA);
        w->Sound(m, kPedal, 0, Instrument::kBoom);
        for (const Note& n : kIntroBells[m])
            w->Sound(m, MelodyLane(n.pitch), n.step, Instrument::kBell, n.pitch);
    }
    for (int step : {8, 11, 14}) w->Sound(1, 21, step, Instrument::kKick);
    for (int step = 2; step < 16; step += 4) w->Sound(1, kBackground, step, Instrument::kHat);
    w->Sound(1, kPedal2, 15, Instrument::kRiser);

    w->Put(kFill, kTempoHex, 0, 8, "8A");
    w->Sound(kFill, kBackground, 0, Instrument::kPad, kChordFsharp);
    w->Sound(kFill, 28, 0, Instrument::kStab, kChordFsharp, 8);
    for (int step : {0, 4}) w->Sound(kFill, 21, step, Instrument::kKick, 0, 8);
    for (int step : {0, 3, 6, 7}) w->Sound(kFill, 22, step, Instrument::kSnare, 0, 8);
    w->Sound(kFill, 25, 2, Instrument::kTom, 0, 8);
    w->Sound(kFill, 24, 4, Instrument::kTom, 1, 8);
    w->Sound(kFill, 23, 5, Instrument::kTom, 2, 8);
}

void PutVerse(Writer* w) {
    w->Sound(kVerse, kScratch, 0, Instrument::kCrash);
    for (int bar = 0; bar < 8; ++bar) {
        int m = kVerse + bar, chord = kVerseChords[bar];
        PutLead(w, m, kVerseLead[bar]);
        PutDrums(w, m, false);
        PutBass(w, m, kRoots[chord], kRoots[chord]);
        w->Sound(m, kBackground, 0, Instrument::kPad, chord);
        if (bar % 4 == 3) PutFill(w, m);
        if (bar < 4) continue;
        w->Sound(m, 28, 6, Instrument::kStab, chord);
        if (bar < 7) w->Sound(m, 29, 14, Instrument::kStab, chord);
    }
    for (int step : {0, 2}) w->Sound(kVerse + 4, kScratch2, step, Instrument::kZap);
}

void PutBreak(Writer* w) {
    PutLead(w, kBreak, kBreakLead, false);
    w->Sound(kBreak, kBackground, 0, Instrument::kPad, kChordFsharp);
    w->Sound(kBreak, 28, 0, Instrument::kStab, kChordFsharp, 8);
    w->Sound(kBreak, kPedal2, 0, Instrument::kRiser, 0, 8);
    w->Sound(kBreak, kPedal, 0, Instrument::kKick, 0, 8);
    for (int step : {2, 4, 5, 6, 7}) w->Sound(kBreak, 22, step, Instrument::kSnare, 0, 8);
    w->Sound(kBreak, kScratch2, 4, Instrument::kZap, 0, 8);
}

void PutChorus(Writer* w) {
    for (int bar = 0; bar < 8; ++bar) {
        int m = kChorus + bar, chord = kChorusChords[bar];
        PutLead(w, m, kChorusLead[bar]);
        PutDrums(w, m, true);
        PutBass(w, m, kRoots[chord], bar == 7 ? kRoots[kChordA] : kRoots[chord]);
        w->Sound(m, kBackground, 0, Instrument::kPad, chord);
        for (int step = 2; step < 16; step += 4) {
            int stab = bar == 7 && step > 8 ? kChordA : chord;
            w->Sound(m, step % 8 == 2 ? 28 : 29, step, Instrument::kStab, stab);
        }
        if (bar % 4 == 0) w->Sound(m, kScratch, 0, Instrument::kCrash);
        if (bar % 2 == 1) w->Sound(m, kScratch2, 15, Instrument::kZap);
        if (bar == 3) PutFill(w, m);
    }
    w->Sound(kChorus, kPedal, 0, Instrument::kBoom);
}

void PutEnd(Writer* w) {
    PutLead(w, kSlowing, kSlowingLead, false);
    w->Put(kSlowing, kTempo, 6, 16, "01");
    w->Put(kSlowing, kTempo, 10, 16, "02");
    w->Put(kSlowing, kTempo, 13, 16, "03");
    w->Sound(kSlowing, kScratch, 0, Instrument::kCrash);
    for (int half = 0; half < 2; ++half) {
        int chord = half == 0 ? kChordG : kChordA;
        w->Sound(kSlowing, kBackground, half * 8, Instrument::kPad, chord);
        w->Sound(kSlowing, 28, half * 8, Instrument::kStab, chord);
        w->Sound(kSlowing, 23, half * 8, Instrument::kBass, kRoots[chord]);
        w->Sound(kSlowing, 24, half * 8 + 6, Instrument::kBass, kRoots[chord]);
        w->Sound(kSlowing, 21, half * 8, Instrument::kKick);
        w->Sound(kSlowing, 22, half * 8 + 4, Instrument::kSnare);
    }
    for (int i = 0; i < 3; ++i) w->Sound(kSlowing, 25, 13 + i, Instrument::kTom, i);

    w->Put(kLast, kTempo, 0, 1, "04");
    for (int pitch : {D5, F5, A5, D6})
        w->Sound(kLast, MelodyLane(pitch), 0, Instrument::kLead, pitch, kLastSteps);
    w->Sound(kLast, kScratch, 0, Instrument::kCrash);
    w->Sound(kLast, kPedal, 0, Instrument::kBoom);
    w->Sound(kLast, 21, 0, Instrument::kKick);
    w->Sound(kLast, 23, 0, Instrument::kBass, kRoots[kChordD]);
    w->Sound(kLast, 28, 0, Instrument::kStab, kChordD);
    w->Sound(kLast, kBackground, 0, Instrument::kPad, kChordD);
    const Phrase kSparkle = {{2, D5}, {3, F5}, {4, A5}, {5, D6}, {8, E5}, {9, A5}, {10, B5}, {12, D6}};
    for (const Note& n : kSparkle)
        w->Sound(kLast, MelodyLane(n.pitch), n.step, Instrument::kBell, n.pitch, kLastSteps);
}

// Invisible notes: keys that would sound if pressed while nothing is due there. They are neither shown nor
// played.
void PutInvisible(Writer* w) {
    for (int bar = 0; bar < 8; bar += 2) {
        w->Sound(kVerse + bar, 31 + bar / 2, 8, Instrument::kStab, kVerseChords[bar]);
        w->Sound(kChorus + bar, 41 + bar / 2, 8, Instrument::kBass, kRoots[kChorusChords[bar]]);
    }
}

void PutTitle(Writer* w, int measure, int from, int steps, int dy) {
    const int grow = 12;
    for (int i = 1; i <= grow; ++i) {
        w->ShowPart(measure, kOverlay, from + i - 1, steps, kTitle, 0, 0, kTitleWidth * i / grow,
                    kTitleHeight, 12, dy);
    }
}

void PutIntroPictures(Writer* w) {
    const int kSteps = 80;  // from the stars down to the sea
    for (int i = 0; i < kSteps; ++i) {
        int y =
            static_cast<int>((kNightHeight - 256) * Step(0, 1, static_cast<double>(i) / (kSteps - 1)) + 0.5);
        int steps = i < 64 ? 32 : 16;
        w->ShowPart(i / 32, kBase, i % 32, steps, kNight, 0, y, 256, 256, 0, 0);
    }
    w->Show(0, kPoorLayer, 0, 1, kPoor);
    PutTitle(w, 0, 8, 32, 84);
    for (int i = 1; i < 12; ++i) {  // and away to the right
        int x = kTitleWidth * i / 12;
        w->ShowPart(1, kOverlay, 16 + i, 32, kTitle, x, 0, kTitleWidth - x, kTitleHeight, 12 + x, 84);
    }
    w->Show(1, kOverlay, 28, 32, kBlankPicture);
}

void PutVersePictures(Writer* w) {
    for (int i = 0; i < 8 * 32; ++i) {
        int x = (kCoastWidth - 256) * i / (8 * 32 - 1);
        w->ShowPart(kVerse + i / 32, kBase, i % 32, 32, kCoast, x, 0, 256, 256, 0, 0);
    }
    for (int i = 0; i < 8 * 16; ++i) {  // two flights, the second one higher
        double along = (i % 64) / 63.0;
        int x = static_cast<int>(Mix(-80, 256, along));
        int y = static_cast<int>(Mix(110, i < 64 ? 60 : 10, along) + 14 * Sine(along * 1.5));
        w->ShowPart(kVerse + i / 16, kOverlay, i % 16, 16, kBirds, i % kBirdFrames * kBirdWidth, 0,
                    kBirdWidth, kBirdHeight, x, y);
    }
    w->Show(kVerse + 4, kPoorLayer, 0, 1, kNight);
}

void PutChorusPictures(Writer* w) {
    for (int i = 0; i < 12; ++i) w->Show(kBreak, kBase, i, 12, kRays + i % kRayFrames);
    w->Show(kBreak, kOverlay, 0, 1, kBlankPicture);
    for (int bar = 0; bar < 9; ++bar) {
        for (int i = 0; i < 24; ++i) {
            w->Show(kChorus + bar, kBase, i, 24, kRays + i % kRayFrames);
            if (bar < 8) w->Show(kChorus + bar, kOverlay, i, 24, kSparks + i % kSparkFrames);
        }
    }
    w->Show(kSlowing, kOverlay, 0, 1, kBlankPicture);
    w->Show(kLast, kBase, 0, 1, kDay);
    w->Show(kLast, kPoorLayer, 0, 1, kPoor);
    PutTitle(w, kLast, 6, 40, 150);
}

std::string Head(const Writer& w) {
    std::string out =
        "#PLAYER 3\r\n#GENRE Dawn Electro\r\n#TITLE First Light\r\n#ARTIST Lumetra\r\n#BPM 116\r\n#PLAYLEVEL "
        "5\r\n"
        "#RANK 2\r\n#TOTAL 300\r\n#VOLWAV 100\r\n\r\n"
        "#BPM01 126.5\r\n#BPM02 112.25\r\n#BPM03 96.75\r\n#BPM04 84\r\n\r\n";
    for (size_t i = 0; i < w.voices().size(); ++i) {
        out += "#WAV" + Pair(static_cast<int>(i) + 1, 36) + " " + SoundName(w.voices()[i]) + "\r\n";
    }
    return out + "\r\n";
}

}  // namespace

Chart WriteChart(const std::vector<File>& pictures) {
    Writer w;
    PutIntro(&w);
    PutVerse(&w);
    PutBreak(&w);
    PutChorus(&w);
    PutEnd(&w);
    PutInvisible(&w);
    PutIntroPictures(&w);
    PutVersePictures(&w);
    PutChorusPictures(&w);

    std::string text = Head(w);
    for (size_t i = 0; i < pictures.size(); ++i) {
        text += "#BMP" + Pair(static_cast<int>(i) + 1, 36) + " " + pictures[i].name + "\r\n";
    }
    text += "\r\n" + w.part_lines();
    text += "\r\n#00202:0.5\r\n#01102:0.5\r\n#02102:1.25\r\n";
    text += w.Lines();
    return {text, w.voices()};
}

}  // namespace demo
