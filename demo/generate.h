// The parts of the demo's generator and their interfaces.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace demo {

using Bytes = std::vector<uint8_t>;

struct File {
    std::string name;
    Bytes bytes;
};

// ---- sounds ----

enum class Instrument {
    kKick,
    kSnare,
    kClap,
    kHat,
    kOpenHat,
    kTom,
    kCrash,
    kRiser,
    kBoom,
    kZap,  // note: a variant, or 0
    kBass,
    kLead,
    kBell,  // note: the pitch
    kStab,
    kPad,  // note: the chord's number
};

struct Voice {
    Instrument instrument;
    int note;
    auto operator<=>(const Voice&) const = default;
};

struct Wave {
    int rate = 44100;
    int channels = 1;
    std::vector<double> samples;  // interleaved; full scale is 1
};

enum class Format { kPcm16, kPcm8, kXaFine, kXaFast };

// The chords, numbered from 0, and the pitches of one chord, low to high.
constexpr int kChordG = 0, kChordA = 1, kChordFsharpMinor = 2, kChordBm = 3, kChordD = 4, kChordEm = 5,
              kChordFsharp = 6;
constexpr int kChords = 7;
std::vector<int> ChordNotes(int chord);

std::string SoundName(const Voice& voice);  // its file name
Wave Play(const Voice& voice);
Format FormatOf(const Voice& voice);
Bytes SoundFile(const Wave& wave, Format format);

// ---- pictures ----

struct Color {
    double r = 0, g = 0, b = 0;  // 0 to 1
};

struct Picture {
    int width = 0, height = 0;
    std::vector<Color> pixels;  // top row first
    Color& At(int x, int y) { return pixels[static_cast<size_t>(y) * width + x]; }
    const Color& At(int x, int y) const { return pixels[static_cast<size_t>(y) * width + x]; }
};

Picture Blank(int width, int height);

// Writes BMP files that share one palette. Bits is 4 or 8. With a key, black stays exactly black, and no
// other colour becomes black.
std::vector<Bytes> PaletteBmps(const std::vector<Picture>& pictures, int bits, bool key);
Bytes TrueColorBmp(const Picture& picture);

Picture Title();
Picture Birds();              // its frames side by side
std::vector<Picture> Rays();  // frames that loop, like the sparks
std::vector<Picture> Sparks();

// All pictures of the demo, in order of their numbers, starting at 1.
std::vector<File> Pictures();
constexpr int kTitleWidth = 232, kTitleHeight = 72;
constexpr int kBirdFrames = 8, kBirdWidth = 88, kBirdHeight = 64;
constexpr int kRayFrames = 6, kSparkFrames = 6;
constexpr int kNightHeight = 512, kCoastWidth = 640;
enum PictureNumber {
    kNight = 1,
    kTitle,
    kCoast,
    kBirds,
    kRays,
    kSparks = kRays + kRayFrames,
    kDay = kSparks + kSparkFrames,
    kPoor
};

// ---- chart ----

// The chart's text and the sounds that it names.
struct Chart {
    std::string text;
    std::vector<Voice> voices;
};
Chart WriteChart(const std::vector<File>& pictures);

}  // namespace demo
