#include "dialect/fraction.h"

#include <cmath>
#include <initializer_list>
#include <numeric>

namespace dialect {

// Continued fractions: of the last convergent and the last semiconvergent within the bound, the closer one.
static Fraction NearestWithin(int64_t num, int64_t den, int64_t most) {
    int64_t p0 = 0, q0 = 1, p1 = 1, q1 = 0, n = num, d = den;
    while (d != 0) {
        const int64_t a = n / d;
        if (q0 + a * q1 > most) break;
        const int64_t p2 = p0 + a * p1, q2 = q0 + a * q1, rest = n - a * d;
        p0 = p1, q0 = q1, p1 = p2, q1 = q2, n = d, d = rest;
    }
    if (d == 0) return {static_cast<int32_t>(p1), static_cast<int32_t>(q1)};
    const int64_t k = (most - q0) / q1;
    const double exact = static_cast<double>(num) / static_cast<double>(den);
    const Fraction semi{static_cast<int32_t>(p0 + k * p1), static_cast<int32_t>(q0 + k * q1)};
    const Fraction last{static_cast<int32_t>(p1), static_cast<int32_t>(q1)};
    return std::fabs(last.Value() - exact) <= std::fabs(semi.Value() - exact) ? last : semi;
}

Fraction NearestPlace(Fraction place) {
    if (place.den <= kMostPairs) return place;
    const Fraction nearest = NearestWithin(place.num, place.den, kMostPairs);
    return nearest.num < nearest.den ? nearest : Fraction{kMostPairs - 1, kMostPairs};
}

Fraction PlaceBehind(Fraction place, double limit) {
    const int32_t common = std::gcd(place.num, place.den);
    const int64_t num = place.num / common, den = place.den / common;
    for (const int64_t most : {int64_t{192}, int64_t{kMostPairs}}) {
        const int64_t fine = den <= most ? most / den : 1;
        const Fraction next{static_cast<int32_t>(num * fine + 1), static_cast<int32_t>(den * fine)};
        if (next.den <= kMostPairs && next.Value() <= limit) return next;
    }
    Fraction best{1, 1};
    for (int32_t q = 2; q <= kMostPairs; ++q) {
        const Fraction next{static_cast<int32_t>(num * q / den + 1), q};
        if (next.Value() < best.Value()) best = next;
    }
    return best;
}

}  // namespace dialect
