// Arithmetic for the demo's generator. Uses only +, -, *, / and comparisons, never the library's sine or
// exponential, so that the files have the same bytes on every machine.
#pragma once

#include <cstdint>

namespace demo {

constexpr double kPi = 3.14159265358979323846;

inline double Floor(double x) {
    double whole = static_cast<double>(static_cast<int64_t>(x));
    return whole > x ? whole - 1 : whole;
}

// The sine of an angle in turns; accurate to 1e-9.
inline double Sine(double turns) {
    double x = turns - Floor(turns);  // 0 to 1
    double sign = 1;
    if (x >= 0.5) {
        x -= 0.5;
        sign = -1;
    }
    if (x > 0.25) x = 0.5 - x;
    double a = 2 * kPi * x, s = a * a;
    return sign * a *
           (1 -
            s / 6 *
                (1 - s / 20 * (1 - s / 42 * (1 - s / 72 * (1 - s / 110 * (1 - s / 156 * (1 - s / 210)))))));
}
inline double Cosine(double turns) {
    return Sine(turns + 0.25);
}

inline double Exp(double x) {
    double reduced = x / 1024, sum = 1 + reduced * (1 + reduced / 2 * (1 + reduced / 3 * (1 + reduced / 4)));
    if (x < -80) return 0;
    for (int i = 0; i < 10; ++i) sum *= sum;
    return sum;
}

// The frequency of a note in Hz; note 69 is A at 440 Hz.
inline double Pitch(double note) {
    return 440 * Exp((note - 69) * 0.05776226504666211);
}

inline double Clamp(double x, double low, double high) {
    return x < low ? low : x > high ? high : x;
}
inline double Mix(double a, double b, double t) {
    return a + (b - a) * t;
}
// 0 up to low, 1 from high, smooth in between.
inline double Step(double low, double high, double x) {
    double t = Clamp((x - low) / (high - low), 0, 1);
    return t * t * (3 - 2 * t);
}

class Random {
public:
    explicit Random(uint32_t seed) : state_(seed * 2654435761u + 12345u) {}
    uint32_t Next() {
        state_ ^= state_ << 13;
        state_ ^= state_ >> 17;
        state_ ^= state_ << 5;
        return state_;
    }
    double Unit() { return Next() / 4294967296.0; }  // 0 to 1
    double Noise() { return Unit() * 2 - 1; }

private:
    uint32_t state_;
};

// A value of 0 to 1 that depends only on the position.
inline double Hash(int x, int y, int seed) {
    uint32_t h = static_cast<uint32_t>(x) * 374761393u + static_cast<uint32_t>(y) * 668265263u +
                 static_cast<uint32_t>(seed) * 2246822519u;
    h = (h ^ (h >> 13)) * 1274126177u;
    h ^= h >> 16;
    return h / 4294967296.0;
}

}  // namespace demo
