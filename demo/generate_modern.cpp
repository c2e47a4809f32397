// Generates a tune in the dialect of today's charts: 700 sounds, stops, long notes in both ways, LF line
// ends. Writes modern.bms with its sounds and pictures; the same bytes on every machine.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <numeric>

#include "generate.h"
#include "generate_math.h"

namespace demo {
namespace {

constexpr int kSounds = 700, kSteps = 16, kMeasures = 22;
constexpr int kVerse = 4, kChorus = 12, kEnd = 20;
constexpr int kBackground = 1, kBase = 4, kStop = 9, kLongPad = 59, kStabLane = 18, kBassLane = 21;
constexpr int kKickLane = 22, kSnareLane = 23, kScratch = 16;
constexpr int kLongEnd = 1295;  // ZZ, the number of #LNOBJ

constexpr int kChords4[4] = {kChordBm, kChordG, kChordD, kChordA};
constexpr int kChords8[8] = {kChordBm, kChordG, kChordD, kChordA, kChordBm, kChordG, kChordEm, kChordFsharp};
constexpr int kChorusChords[8] = {kChordG, kChordA, kChordFsharpMinor, kChordBm,
                                  kChordG, kChordA, kChordD,           kChordD};
constexpr int kRoots[kChords] = {31, 33, 30, 35, 38, 40, 30};

struct Note {
    int step, pitch;
};
using Phrase = std::vector<Note>;
const Phrase kVerseLead[8] = {
    {{0, 71}, {3, 74}, {6, 78}, {8, 76}, {12, 74}}, {{0, 74}, {4, 71}, {6, 74}, {8, 79}, {12, 78}},
    {{0, 78}, {3, 76}, {6, 74}, {8, 81}, {12, 78}}, {{0, 76}, {4, 73}, {8, 69}, {12, 73}},
    {{0, 71}, {3, 74}, {6, 78}, {8, 83}, {12, 81}}, {{0, 79}, {3, 78}, {6, 74}, {10, 79}, {12, 81}},
    {{0, 79}, {4, 76}, {6, 79}, {8, 83}, {12, 81}}, {{0, 82}, {4, 78}, {8, 85}, {12, 82}},
};
const Phrase kChorusLead[8] = {
    {{0, 83}, {3, 86}, {6, 83}, {8, 79}, {11, 81}, {14, 83}},
    {{0, 81}, {3, 85}, {6, 81}, {8, 76}, {11, 78}, {14, 81}},
    {{0, 78}, {3, 81}, {6, 85}, {8, 81}, {11, 78}, {14, 76}},
    {{0, 74}, {3, 78}, {6, 83}, {8, 86}, {12, 85}},
    {{0, 83}, {3, 86}, {6, 83}, {8, 79}, {11, 81}, {14, 83}},
    {{0, 85}, {3, 81}, {6, 85}, {8, 88}, {12, 85}},
    {{0, 86}, {4, 81}, {6, 78}, {8, 81}, {12, 86}},
    {{0, 90}, {3, 86}, {6, 81}, {8, 86}, {12, 81}},
};

int ChordOf(int measure) {
    if (measure < kVerse) return kChords4[measure];
    if (measure < kChorus) return kChords8[measure - kVerse];
    return measure < kEnd ? kChorusChords[measure - kChorus] : kChordD;
}

std::string Pair(int number) {
    static const char kDigits[] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    return {kDigits[number / 36], kDigits[number % 36]};
}

// One sound of its own: an instrument at one place of the tune.
struct Take {
    Voice voice;
    int measure, step;
};

class Tune {
public:
    void Put(int measure, int channel, int step, int number) {
        lines_[{measure, channel}].push_back({step, number});
    }
    // Each hit has a sound of its own, as if cut from a recording; behind the last number they begin again.
    int Sound(int measure, int channel, int step, Instrument instrument, int note = 0) {
        const Voice voice = {instrument, note};
        std::vector<int>& numbers = numbers_[voice];
        const bool fresh = static_cast<int>(takes_.size()) < kSounds;
        if (fresh) {
            takes_.push_back({voice, measure, step});
            numbers.push_back(static_cast<int>(takes_.size()));
        }
        const int number =
            fresh ? numbers.back() : numbers[static_cast<size_t>(step + measure) % numbers.size()];
        Put(measure, channel, step, number);
        return number;
    }
    const std::vector<Take>& takes() const { return takes_; }
    std::string Lines() const;

private:
    struct Object {
        int step, number;
    };
    std::map<std::pair<int, int>, std::vector<Object>> lines_;
    std::map<Voice, std::vector<int>> numbers_;
    std::vector<Take> takes_;
};

// Objects of one channel that meet stand on lines of their own.
std::string Tune::Lines() const {
    std::string out;
    for (const auto& [key, all] : lines_) {
        for (std::vector<Object> rest = all, later; !rest.empty(); rest = later, later.clear()) {
            std::string data(2 * kSteps, '0');
            for (const Object& object : rest) {
                const size_t at = 2 * static_cast<size_t>(object.step);
                if (data.compare(at, 2, "00") == 0)
                    data.replace(at, 2, Pair(object.number));
                else
                    later.push_back(object);
            }
            char head[8];
            std::snprintf(head, sizeof head, "#%03d%02d:", key.first, key.second);
            out += head + data + "\r\n";
        }
    }
    return out;
}

int LaneOf(int pitch) {
    static const int kLanes[5] = {11, 12, 13, 14, 15}, kTops[4] = {73, 77, 80, 83};
    int lane = 0;
    while (lane < 4 && pitch > kTops[lane]) ++lane;
    return kLanes[lane];
}

// The last note of a phrase is held by #LNOBJ where there is room.
void PutLead(Tune* tune, int measure, const Phrase& phrase) {
    for (const Note& note : phrase) {
        tune->Sound(measure, LaneOf(note.pitch), note.step, Instrument::kLead, note.pitch);
        if (&note == &phrase.back() && note.step <= 12)
            tune->Put(measure, LaneOf(note.pitch), note.step + 3, kLongEnd);
    }
}

// Up and down the chord in sixteenths, or in eighths.
void PutBells(Tune* tune, int measure, int every) {
    static const int kOrder[8] = {0, 1, 2, 3, 3, 2, 1, 0};
    const std::vector<int> notes = ChordNotes(ChordOf(measure));
    for (int step = 0; step < kSteps; step += every) {
        const int turn = step / every, octave = turn % 8 >= 2 && turn % 8 < 6 ? 24 : 12;
        tune->Sound(measure, kBackground, step, Instrument::kBell,
                    notes[static_cast<size_t>(kOrder[turn % 8])] + octave);
    }
}

void PutRhythm(Tune* tune, int measure, bool full) {
    const int root = kRoots[ChordOf(measure)];
    for (const int step : {0, 4, 8, 12}) tune->Sound(measure, kKickLane, step, Instrument::kKick);
    for (const int step : {4, 12}) tune->Sound(measure, kSnareLane, step, Instrument::kSnare);
    for (int step = 0; step < kSteps; step += full ? 1 : 2) {
        const bool open = step % 4 == 2;
        tune->Sound(measure, kBackground, step, open ? Instrument::kOpenHat : Instrument::kHat);
    }
    for (const int step : {0, 3, 6, 8, 11, 14})
        tune->Sound(measure, kBassLane, step, Instrument::kBass, root + (step == 6 || step == 14 ? 12 : 0));
    if (!full) return;
    for (const int step : {2, 10}) tune->Sound(measure, kStabLane, step, Instrument::kStab, ChordOf(measure));
}

// A held chord on a channel of long notes: a pair of objects, the second of which makes no sound.
void PutPad(Tune* tune, int measure) {
    const int number = tune->Sound(measure, kLongPad, 0, Instrument::kPad, ChordOf(measure));
    tune->Put(measure, kLongPad, 14, number);
}

void PutEnd(Tune* tune) {
    for (int measure = kEnd; measure < kMeasures; ++measure) PutPad(tune, measure);
    for (const int pitch : {74, 78, 81, 86}) {
        tune->Sound(kEnd, LaneOf(pitch), 0, Instrument::kLead, pitch);
        tune->Sound(kEnd + 1, LaneOf(pitch), 8, Instrument::kBell, pitch);
    }
    tune->Sound(kEnd, kScratch, 0, Instrument::kCrash);
    tune->Sound(kEnd, kKickLane, 0, Instrument::kBoom);
    tune->Sound(kEnd, kBassLane, 0, Instrument::kBass, kRoots[kChordD]);
}

void PutPictures(Tune* tune) {
    tune->Put(0, kBase, 0, kNight);
    tune->Put(kVerse, kBase, 0, kCoast);
    for (int i = 0; i < (kEnd - kChorus) * kSteps; ++i)
        tune->Put(kChorus + i / kSteps, kBase, i % kSteps, kRays + i % kRayFrames);
    tune->Put(kEnd, kBase, 0, kDay);
}

// The end and the melody come first, so that they have their sounds whatever the rest takes.
Tune Compose() {
    Tune tune;
    PutEnd(&tune);
    for (int bar = 0; bar < 8; ++bar) {
        PutLead(&tune, kVerse + bar, kVerseLead[bar]);
        PutLead(&tune, kChorus + bar, kChorusLead[bar]);
    }
    for (int measure = 0; measure < kEnd; ++measure) PutPad(&tune, measure);
    for (const int measure : {kVerse, kChorus}) tune.Sound(measure, kScratch, 0, Instrument::kCrash);
    for (int measure = 0; measure < kEnd; ++measure) {
        if (measure >= kVerse) PutRhythm(&tune, measure, measure >= kChorus);
        PutBells(&tune, measure, measure < kChorus ? 2 : 1);
    }
    for (const int step : {12, 13, 14, 15}) tune.Sound(kVerse - 1, kSnareLane, step, Instrument::kSnare);
    // The tune holds its breath before verse and chorus, and once more before its last chord.
    for (const int measure : {kVerse, kChorus}) tune.Put(measure, kStop, 0, 1);
    tune.Put(kEnd, kStop, 0, 2);
    PutPictures(&tune);
    return tune;
}

std::string NameOf(const Take& take, int number) {
    char text[24];
    std::snprintf(text, sizeof text, "-%03d.wav", number);
    const std::string name = SoundName(take.voice);
    return name.substr(0, name.rfind('.')) + text;
}

std::string Text(const Tune& tune, const std::vector<File>& pictures) {
    std::string out =
        "#PLAYER 3\r\n#GENRE Dawn Electro\r\n#TITLE Second Light\r\n#ARTIST Lumetra\r\n#BPM "
        "150\r\n#PLAYLEVEL 6\r\n"
        "#RANK 2\r\n#TOTAL 300\r\n#LNTYPE 1\r\n#LNOBJ ZZ\r\n#STOP01 48\r\n#STOP02 96\r\n\r\n";
    for (size_t i = 0; i < tune.takes().size(); ++i) {
        const int number = static_cast<int>(i) + 1;
        out += "#WAV" + Pair(number) + " " + NameOf(tune.takes()[i], number) + "\r\n";
    }
    for (size_t i = 0; i < pictures.size(); ++i)
        out += "#BMP" + Pair(static_cast<int>(i) + 1) + " " + pictures[i].name + "\r\n";
    return out + "\r\n" + tune.Lines();
}

// Brighter and louder on the beat and towards the end, so that no two sounds are equal.
Wave Touched(const Wave& plain, const Take& take) {
    Wave wave = plain;
    const double along = (take.measure + take.step / double{kSteps}) / kMeasures;
    const double open = Mix(0.45, 1, along), level = (take.step % 4 == 0 ? 0.85 : 0.7) - 0.05 * along;
    std::vector<double> low(static_cast<size_t>(wave.channels));
    for (size_t i = 0; i < wave.samples.size(); ++i) {
        double& soft = low[i % low.size()];
        soft += (wave.samples[i] - soft) * open;
        wave.samples[i] = soft * level;
    }
    return wave;
}

bool Write(const std::filesystem::path& path, const char* bytes, size_t count) {
    std::ofstream file(path, std::ios::binary);
    file.write(bytes, static_cast<std::streamsize>(count));
    file.close();
    if (!file) std::fprintf(stderr, "%s: cannot write\n", path.c_str());
    return static_cast<bool>(file);
}

bool Write(const std::filesystem::path& path, const Bytes& bytes) {
    return Write(path, reinterpret_cast<const char*>(bytes.data()), bytes.size());
}

bool WriteAll(const std::filesystem::path& folder) {
    const Tune tune = Compose();
    const std::vector<File> pictures = Pictures();
    const std::string text = Text(tune, pictures);
    bool good = Write(folder / "modern.bms", text.data(), text.size());
    for (const File& picture : pictures) good = good && Write(folder / picture.name, picture.bytes);
    std::map<Voice, Wave> waves;
    for (size_t i = 0; i < tune.takes().size() && good; ++i) {
        const Take& take = tune.takes()[i];
        const auto [wave, fresh] = waves.try_emplace(take.voice);
        if (fresh) wave->second = Play(take.voice);
        good = Write(folder / NameOf(take, static_cast<int>(i) + 1),
                     SoundFile(Touched(wave->second, take), Format::kPcm16));
    }
    return good;
}

}  // namespace
}  // namespace demo

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr,
                     "Usage: %s FOLDER\nWrites modern.bms with its sounds and pictures into the folder.\n",
                     argv[0]);
        return 1;
    }
    return demo::WriteAll(argv[1]) ? 0 : 1;
}
