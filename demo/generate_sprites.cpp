// Draws the demo's flat pictures with 16 colours each: title, bird, the turning rays and the sparks. In
// overlays, black is transparent.
#include "generate.h"
#include "generate_math.h"

namespace demo {
namespace {

Color Blend(const Color& a, const Color& b, double t) {
    return {Mix(a.r, b.r, t), Mix(a.g, b.g, t), Mix(a.b, b.b, t)};
}

double Root(double square) {
    double root = square > 1 ? square : 1;
    for (int i = 0; i < 24; ++i) root = 0.5 * (root + square / root);
    return root;
}

// The direction from 0, 0 in turns, 0 to 1; accurate to a thousandth, which is enough for rays.
double Turns(double x, double y) {
    double ax = x < 0 ? -x : x, ay = y < 0 ? -y : y, most = ax > ay ? ax : ay, least = ax > ay ? ay : ax;
    double t = most == 0 ? 0 : least / most;
    double turn = t * (0.25 * 0.6366 * 0.9986 - t * t * (0.0503 - t * t * 0.0162));
    if (ay > ax) turn = 0.25 - turn;
    if (x < 0) turn = 0.5 - turn;
    return y < 0 ? 1 - turn : turn;
}

double Grid4(int x, int y) {
    static const int kOrder[4][4] = {{0, 8, 2, 10}, {12, 4, 14, 6}, {3, 11, 1, 9}, {15, 7, 13, 5}};
    return (kOrder[y & 3][x & 3] + 0.5) / 16;
}

// Letters of 5 by 7; bit 4 is the leftmost column.
struct Letter {
    char name;
    int rows[7];
};
constexpr Letter kLetters[] = {
    {'F', {31, 16, 16, 30, 16, 16, 16}}, {'I', {14, 4, 4, 4, 4, 4, 14}},
    {'R', {30, 17, 17, 30, 20, 18, 17}}, {'S', {15, 16, 16, 14, 1, 1, 30}},
    {'T', {31, 4, 4, 4, 4, 4, 4}},       {'L', {16, 16, 16, 16, 16, 16, 31}},
    {'G', {14, 17, 16, 23, 17, 17, 14}}, {'H', {17, 17, 17, 31, 17, 17, 17}},
};

bool LetterBit(char name, int x, int y) {
    if (x < 0 || x >= 5 || y < 0 || y >= 7) return false;
    for (const Letter& letter : kLetters) {
        if (letter.name == name) return letter.rows[y] >> (4 - x) & 1;
    }
    return false;
}

// Whether the word, drawn at 0, 0 with this scale, covers the position.
bool WordAt(const char* word, int scale, int x, int y) {
    if (x < 0 || y < 0) return false;
    int number = x / (6 * scale);
    for (int i = 0; i <= number; ++i) {
        if (!word[i]) return false;
    }
    return LetterBit(word[number], x % (6 * scale) / scale, y / scale);
}

void Dot(Picture* picture, double at_x, double at_y, double radius, const Color& color) {
    for (int y = static_cast<int>(at_y - radius) - 1; y <= at_y + radius + 1; ++y) {
        for (int x = static_cast<int>(at_x - radius) - 1; x <= at_x + radius + 1; ++x) {
            if (x < 0 || y < 0 || x >= picture->width || y >= picture->height) continue;
            double dx = x + 0.5 - at_x, dy = y + 0.5 - at_y;
            if (dx * dx + dy * dy <= radius * radius) picture->At(x, y) = color;
        }
    }
}

// A wing: a bent line that tapers.
void Wing(Picture* picture, double x0, double y0, double x1, double y1, double x2, double y2, double thick,
          const Color& root, const Color& tip) {
    for (int i = 0; i <= 60; ++i) {
        double t = i / 60.0, u = 1 - t;
        double x = u * u * x0 + 2 * u * t * x1 + t * t * x2, y = u * u * y0 + 2 * u * t * y1 + t * t * y2;
        Dot(picture, x, y, Mix(thick, 0.9, t), t < 0.78 ? root : tip);
    }
}

void Bird(Picture* picture, int left, double phase) {
    const Color white = {0.98, 0.95, 0.90}, shade = {0.85, 0.72, 0.74}, grey = {0.62, 0.50, 0.60},
                dark = {0.24, 0.17, 0.28}, beak = {0.98, 0.62, 0.20};
    double flap = Sine(phase), bend = Sine(phase - 0.11);
    double x = left + 44, y = 33 + 3 * flap;
    Wing(picture, x + 4, y - 1, x + 9, y - 13 * bend, x + 1 - 5 * flap, y - 27 * flap - 2, 6.2, grey, dark);
    for (int i = 0; i <= 14; ++i) Dot(picture, x - 16 - i * 0.9, y + 1.5 - 0.1 * i, 2.6 - 0.06 * i, shade);
    for (int i = 0; i <= 40; ++i) {
        double t = i / 40.0;
        Dot(picture, x - 18 + 36 * t, y + 1.2 - 2.4 * t, 1.5 + 4.2 * Root(400 * t * (1 - t)) / 10, white);
    }
    for (int i = 0; i <= 16; ++i) Dot(picture, x - 10 + i, y + 4.6, 1.6, shade);
    Dot(picture, x + 19, y - 3, 4, white);
    Wing(picture, x + 22, y - 2.6, x + 24, y - 2.4, x + 27, y - 1.4, 1.4, beak, beak);
    Dot(picture, x + 20.5, y - 4, 0.8, dark);
    Wing(picture, x + 2, y, x - 2, y - 17 * bend, x - 19 + 3 * flap, y - 29 * flap + 1, 7.5, white, dark);
}

Color SkyRay(int x, int y, int frame) {
    static const Color kLight[3] = {{1.0, 0.93, 0.66}, {1.0, 0.78, 0.46}, {0.97, 0.56, 0.44}};
    static const Color kDeep[3] = {{1.0, 0.80, 0.45}, {0.95, 0.55, 0.42}, {0.72, 0.33, 0.52}};
    double dx = x + 0.5 - 128, dy = y + 0.5 - 150, far = Root(dx * dx + dy * dy);
    double ray = Turns(dx, dy) * 14 + static_cast<double>(frame) / kRayFrames;
    bool light = ray - Floor(ray) < 0.5;
    double zone = Clamp((far - 44) / 62, 0, 2);
    int ring = static_cast<int>(zone + Grid4(x, y));
    ring = ring > 2 ? 2 : ring;
    return light ? kLight[ring] : kDeep[ring];
}

Color Sea(int x, int y, int frame) {
    static const Color kWater[3] = {{0.78, 0.36, 0.48}, {0.50, 0.24, 0.48}, {0.28, 0.16, 0.42}};
    double depth = (y - 176) / 80.0;
    int tone = static_cast<int>(Clamp(depth * 2.2, 0, 1.99) + Grid4(x, y));
    Color c = kWater[tone > 2 ? 2 : tone];
    double sway = Sine((y - 176) * (0.16 - 0.09 * depth) + static_cast<double>(frame) / kRayFrames);
    double half = 40 - 22 * depth + 16 * sway;
    double off = x + 0.5 - 128 - 5 * Sine(y * 0.11);
    bool bright = (off < 0 ? -off : off) < half && sway > -0.35;
    return bright ? (sway > 0.5 ? Color{1.0, 0.93, 0.66} : Color{1.0, 0.78, 0.46}) : c;
}

Picture Ray(int frame) {
    Picture picture = Blank(256, 256);
    for (int y = 0; y < 256; ++y) {
        for (int x = 0; x < 256; ++x) {
            double dx = x + 0.5 - 128, dy = y + 0.5 - 150, far = Root(dx * dx + dy * dy);
            Color c = y < 176 ? SkyRay(x, y, frame) : Sea(x, y, frame);
            if (y < 176 && far < 50) {
                bool slit = y > 140 && (y - 140) % 9 < (y - 134) / 9;
                Color core = dy < -14 - 10 * Grid4(x, y) ? Color{1.0, 0.97, 0.84} : Color{1.0, 0.86, 0.50};
                if (!slit) c = core;
            }
            double left = 176 - 44 * (1 - Step(0, 100, x)) - 9 * Sine(x / 46.0) * (1 - Step(40, 110, x));
            double right = 176 - 34 * Step(150, 256, x) - 8 * Sine(x / 37.0 + 0.2) * Step(150, 200, x);
            if (y < 176 && y > left) c = {0.36, 0.17, 0.42};
            if (y < 176 && y > right) c = {0.28, 0.16, 0.42};
            picture.At(x, y) = c;
        }
    }
    return picture;
}

// Petals that stream out from the sun, one burst per beat. At the last frame each burst is where the older
// one was at the first, so the frames loop.
Picture Spark(int frame) {
    static const Color kColors[5] = {
        {1, 1, 0.94}, {1, 0.86, 0.44}, {1, 0.62, 0.56}, {0.98, 0.72, 0.86}, {0.62, 0.86, 0.98}};
    Picture picture = Blank(256, 256);
    for (int i = 0; i < 26; ++i) {
        double turn = (i + 0.7 * Hash(i, 1, 171)) / 26.0;
        for (int burst = 0; burst < 4; ++burst) {
            double age = burst + static_cast<double>(frame) / kSparkFrames,
                   push = 0.75 + 0.5 * Hash(i, 2, 171);
            double far = 54 + 44 * push * age * (1 - 0.06 * age), spin = turn + 0.012 * age;
            double x = 128 + far * Cosine(spin), y = 150 + far * Sine(spin) + 3 * age * age;
            double size = (i % 3 == 0 ? 3.6 : 2.4) * (1 - age / 4.6);
            Color color = kColors[i % 5];
            if (age > 2.6) color = Blend(color, {0.72, 0.33, 0.52}, 0.45);
            if (y > 252 - size) continue;
            double along_x = Cosine(spin), along_y = Sine(spin);
            for (int k = -2; k <= 2; ++k)
                Dot(&picture, x + along_x * k * size * 0.5, y + along_y * k * size * 0.5,
                    size * (1 - 0.2 * k * k), color);
        }
    }
    return picture;
}

}  // namespace

Picture Title() {
    Picture picture = Blank(kTitleWidth, kTitleHeight);
    const int scale = 4;
    auto covered = [](int x, int y) {
        return WordAt("FIRST", scale, x - 20, y - 4) || WordAt("LIGHT", scale, x - 88, y - 38);
    };
    for (int y = 0; y < kTitleHeight; ++y) {
        for (int x = 0; x < kTitleWidth; ++x) {
            Color& c = picture.At(x, y);
            int row = (y < 36 ? y - 4 : y - 38) / 4;
            static const Color kTop = {1.0, 0.97, 0.84}, kFoot = {1.0, 0.66, 0.42};
            if (covered(x, y)) {
                c = Blend(kTop, kFoot, Clamp(row / 6.0, 0, 1));
            } else if (covered(x - 2, y - 2)) {
                c = {0.30, 0.16, 0.40};
            }
        }
    }
    return picture;
}

Picture Birds() {
    Picture picture = Blank(kBirdWidth * kBirdFrames, kBirdHeight);
    for (int i = 0; i < kBirdFrames; ++i)
        Bird(&picture, i * kBirdWidth, static_cast<double>(i) / kBirdFrames);
    return picture;
}

std::vector<Picture> Rays() {
    std::vector<Picture> out;
    for (int i = 0; i < kRayFrames; ++i) out.push_back(Ray(i));
    return out;
}

std::vector<Picture> Sparks() {
    std::vector<Picture> out;
    for (int i = 0; i < kSparkFrames; ++i) out.push_back(Spark(i));
    return out;
}

}  // namespace demo
