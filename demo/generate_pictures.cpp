// Draws the demo's pictures: a night over the sea, a coast before dawn, the sunrise, the day.
#include "generate.h"
#include "generate_math.h"

namespace demo {
namespace {

Color Mix3(const Color& a, const Color& b, double t) {
    return {Mix(a.r, b.r, t), Mix(a.g, b.g, t), Mix(a.b, b.b, t)};
}
Color Lit(const Color& c, const Color& light, double by) {
    return {c.r + light.r * by, c.g + light.g * by, c.b + light.b * by};
}

struct Stop {
    double at;
    Color color;
};

// The colour at a position in a gradient.
template <int COUNT>
Color Ramp(const Stop (&stops)[COUNT], double at) {
    for (int i = 1; i < COUNT; ++i) {
        if (at < stops[i].at)
            return Mix3(stops[i - 1].color, stops[i].color, Step(stops[i - 1].at, stops[i].at, at));
    }
    return stops[COUNT - 1].color;
}

double ValueNoise(double x, double y, int seed) {
    int ix = static_cast<int>(Floor(x)), iy = static_cast<int>(Floor(y));
    double fx = Step(0, 1, x - ix), fy = Step(0, 1, y - iy);
    double top = Mix(Hash(ix, iy, seed), Hash(ix + 1, iy, seed), fx);
    return Mix(top, Mix(Hash(ix, iy + 1, seed), Hash(ix + 1, iy + 1, seed), fx), fy);
}

double Clouds(double x, double y, int seed) {
    double sum = 0, gain = 0.5;
    for (int octave = 0; octave < 5; ++octave, gain *= 0.5, x *= 2.03, y *= 2.03)
        sum += gain * ValueNoise(x, y, seed + octave);
    return sum;  // 0 to 0.97
}

// The height of a range of hills at x, 0 to 1.
double Ridge(double x, int seed) {
    double sum = 0, gain = 0.55;
    for (int octave = 0; octave < 5; ++octave, gain *= 0.48, x *= 2.1)
        sum += gain * ValueNoise(x, 0.5, seed + octave);
    return sum;
}

double Distance(double x, double y, double to_x, double to_y) {
    double square = (x - to_x) * (x - to_x) + (y - to_y) * (y - to_y), root = square > 1 ? square : 1;
    for (int i = 0; i < 24; ++i) root = 0.5 * (root + square / root);
    return root;
}

Picture Night() {
    static const Stop kSky[] = {{0, {0.012, 0.016, 0.06}}, {200, {0.05, 0.05, 0.17}},
                                {330, {0.16, 0.11, 0.33}}, {410, {0.42, 0.22, 0.43}},
                                {446, {0.83, 0.42, 0.42}}, {462, {0.98, 0.66, 0.45}}};
    const int horizon = 456;
    Picture picture = Blank(256, kNightHeight);
    for (int y = 0; y < kNightHeight; ++y) {
        for (int x = 0; x < 256; ++x) {
            double from = y < horizon ? y : horizon - (y - horizon) * 2.2;
            Color c = Ramp(kSky, from);
            if (y < horizon) {
                double across =
                    (x - 128 - (y - 170) * 0.55) / 62;  // a river of stars, down from the upper left
                double river = Exp(-across * across) * (0.25 + 1.2 * Clouds(x / 40.0, y / 40.0, 3)) *
                               (1 - Step(160, 380, y));
                c = Lit(c, {0.17, 0.16, 0.30}, river);
                double star = Hash(x, y, 21), bright = Hash(x, y, 22);
                double rare = 0.9972 - 0.004 * river;
                if (star > rare)
                    c = Lit(c, {0.8, 0.85, 1.0}, (0.25 + 0.75 * bright * bright) * (1 - Step(300, 430, y)));
                double haze = Clouds(x / 60.0, y / 13.0, 31);
                c = Lit(c, {0.30, 0.10, 0.10}, Step(0.52, 0.8, haze) * Step(360, 430, y));
                double hill =
                    452 - 30 * Ridge(x / 70.0, 41) * (0.35 + 0.65 * Step(0, 120, Distance(x, 0, 150, 0)));
                if (y > hill) c = {0.10, 0.07, 0.20};
            } else {
                double wave = ValueNoise(x / 14.0, (y - horizon) * 0.9, 51);
                c = Mix3(c, {0.07, 0.06, 0.20}, 0.45 + 0.25 * wave + 0.2 * Step(horizon, kNightHeight, y));
            }
            picture.At(x, y) = c;
        }
    }
    return picture;
}

// A tower with a lamp, on the left third of the coast.
void PutLighthouse(Picture* picture, int at, int foot) {
    for (int y = foot - 58; y < foot; ++y) {
        double half = 3.2 + 2.6 * (y - foot + 58) / 58.0;
        for (int x = at - 8; x <= at + 8; ++x) {
            double side = x + 0.5 - at;
            bool lamp = y < foot - 49;
            if ((side < 0 ? -side : side) > (lamp ? 2.6 : half)) continue;
            Color wall = (y - foot + 64) / 12 % 2 ? Color{0.86, 0.80, 0.82} : Color{0.70, 0.25, 0.30};
            if (lamp) wall = y < foot - 55 ? Color{0.30, 0.14, 0.20} : Color{1.0, 0.93, 0.65};
            picture->At(x, y) = Mix3(wall, {0.17, 0.11, 0.28}, lamp ? 0 : 0.35 - 0.09 * side);
        }
    }
    for (int y = foot - 90; y < foot - 16; ++y) {
        for (int x = at - 40; x <= at + 40; ++x) {
            double d = Distance(x, y, at, foot - 52);
            picture->At(x, y) = Lit(picture->At(x, y), {0.55, 0.42, 0.22}, Exp(-d / 9));
        }
    }
}

Color CoastSky(double x, double y) {
    static const Stop kSky[] = {{0, {0.14, 0.12, 0.34}},
                                {55, {0.33, 0.20, 0.47}},
                                {105, {0.72, 0.36, 0.50}},
                                {145, {0.97, 0.58, 0.42}},
                                {172, {1.0, 0.82, 0.52}}};
    Color c = Ramp(kSky, y);
    double glow = Distance(x, y * 1.7, 520, 172 * 1.7);
    c = Lit(c, {0.34, 0.22, 0.05}, Exp(-glow / 95));
    double cloud = Step(0.5, 0.72, Clouds(x / 95.0, y / 17.0, 61)) * Step(8, 60, y) * (1 - Step(120, 165, y));
    double lit = Step(0, 0.2, Clouds(x / 95.0, y / 17.0, 61) - Clouds(x / 95.0 + 0.03, (y + 5) / 17.0, 61));
    return Mix3(c, Mix3({0.42, 0.22, 0.42}, {1.0, 0.66, 0.52}, lit), 0.75 * cloud);
}

Picture Coast() {
    const int horizon = 172;
    Picture picture = Blank(kCoastWidth, 256);
    for (int y = 0; y < 256; ++y) {
        for (int x = 0; x < kCoastWidth; ++x) {
            Color c;
            if (y < horizon) {
                c = CoastSky(x, y);
                if (y > horizon - 4 - 46 * Ridge(x / 120.0, 71))
                    c = Mix3({0.62, 0.36, 0.52}, {0.80, 0.50, 0.52}, Step(100, horizon, y));
                if (y > horizon + 6 - 52 * Ridge(x / 80.0 + 9, 81) * (1 - 0.7 * Step(330, 500, x)))
                    c = {0.40, 0.23, 0.43};
            } else {
                double depth = (y - horizon) / 84.0,
                       wave = ValueNoise(x / (10 + 30 * depth), (y - horizon) * (0.9 - 0.45 * depth), 91);
                c = Mix3(CoastSky(x + 8 * wave - 4, horizon - (y - horizon) * 1.6), {0.15, 0.12, 0.34},
                         0.3 + 0.35 * depth + 0.18 * wave);
                double path = (x - 520) / (10 + 46 * depth);
                if (wave > 0.56) c = Lit(c, {0.75, 0.52, 0.20}, Exp(-path * path) * (1.1 - 0.5 * depth));
            }
            double near = 250 - 66 * Ridge(x / 130.0 + 4, 101) * (1 - Step(200, 390, x)) -
                          12 * Ridge(x / 18.0, 111) * (1 - Step(240, 400, x));
            if (y > near + 44 * Step(230, 400, x))
                c = Mix3({0.19, 0.11, 0.28}, {0.09, 0.06, 0.17}, Step(near, 256, y));
            picture.At(x, y) = c;
        }
    }
    PutLighthouse(&picture, 168, 214);
    return picture;
}

Picture Day() {
    static const Stop kSky[] = {{0, {0.22, 0.50, 0.86}},
                                {80, {0.48, 0.74, 0.95}},
                                {140, {0.85, 0.90, 0.90}},
                                {176, {1.0, 0.93, 0.76}}};
    const int horizon = 176;
    Picture picture = Blank(256, 256);
    for (int y = 0; y < 256; ++y) {
        for (int x = 0; x < 256; ++x) {
            double from = y < horizon ? y : horizon - (y - horizon) * 1.9;
            Color c = Ramp(kSky, from);
            double sun = Distance(x, from, 176, 66);
            c = Lit(c, {0.6, 0.5, 0.25}, Exp(-sun / 42));
            double cloud = Clouds(x / 58.0, from / 24.0, 121),
                   under = Clouds(x / 58.0, (from - 7) / 24.0, 121);
            Color body = Mix3({1.0, 0.99, 0.96}, {0.80, 0.80, 0.88}, Step(-0.02, 0.14, under - cloud + 0.06));
            c = Mix3(c, body,
                     0.9 * Step(0.50, 0.66, cloud) * Step(30, 70, from) * (1 - Step(130, 172, from)));
            if (y < horizon && sun < 17) c = {1.0, 0.98, 0.86};
            if (y < horizon) {
                if (y > horizon - 6 - 40 * Ridge(x / 75.0, 131))
                    c = Mix3({0.48, 0.62, 0.72}, {0.66, 0.76, 0.78}, Step(130, horizon, y));
                if (y > horizon + 8 - 46 * Ridge(x / 50.0 + 3, 141) * (1 - 0.8 * Step(90, 190, x)))
                    c = {0.26, 0.46, 0.48};
            } else {
                double depth = (y - horizon) / 80.0,
                       wave = ValueNoise(x / (7 + 16 * depth), (y - horizon) * (1 - 0.5 * depth), 151);
                c = Mix3(c, {0.05, 0.34, 0.55}, 0.35 + 0.35 * depth + 0.2 * wave);
                double path = (x - 176) / (8 + 34 * depth);
                if (wave > 0.62) c = Lit(c, {0.5, 0.45, 0.3}, Exp(-path * path));
            }
            picture.At(x, y) = c;
        }
    }
    return picture;
}

// A dim shore for the layer that is never shown.
Picture Poor() {
    Picture picture = Blank(128, 96);
    for (int y = 0; y < 96; ++y) {
        for (int x = 0; x < 128; ++x) {
            double rain = Hash((x + y / 3) / 2, y / 9, 161) > 0.95 ? 0.15 : 0;
            picture.At(x, y) = {0.10 + rain + 0.001 * y, 0.11 + rain + 0.001 * y, 0.16 + rain + 0.002 * y};
        }
    }
    return picture;
}

}  // namespace

std::vector<File> Pictures() {
    std::vector<File> out;
    auto add = [&out](const char* name, const std::vector<Bytes>& files) {
        for (size_t i = 0; i < files.size(); ++i) {
            out.push_back(
                {std::string(name) + (files.size() > 1 ? std::to_string(i + 1) : "") + ".bmp", files[i]});
        }
    };
    add("night", PaletteBmps({Night()}, 8, false));
    add("title", PaletteBmps({Title()}, 4, true));
    add("coast", PaletteBmps({Coast()}, 8, false));
    add("birds", PaletteBmps({Birds()}, 4, true));
    add("rays", PaletteBmps(Rays(), 4, false));
    add("sparks", PaletteBmps(Sparks(), 4, true));
    add("day", {TrueColorBmp(Day())});
    add("poor", PaletteBmps({Poor()}, 8, false));
    return out;
}

}  // namespace demo
