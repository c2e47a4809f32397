// Places in a measure as fractions, and what the player's grid makes of them.
#pragma once

#include <cstdint>

namespace dialect {

// A place in a measure, 0 <= num / den < 1. Not necessarily in lowest terms.
struct Fraction {
    int32_t num = 0;
    int32_t den = 1;

    // The double that the player computes for it. Two places with denominators below 2^25 give the same
    // double only when they are equal.
    double Value() const { return static_cast<double>(num) / static_cast<double>(den); }
};

// The most pairs that a line of the player holds: 1,023 bytes less the seven of `#mmmcc:`.
constexpr int32_t kMostPairs = 508;

// The place itself when its denominator is at most kMostPairs, else the nearest that has one, below 1.
Fraction NearestPlace(Fraction place);

// A place behind the given one and at most at `limit` (1 at most), close behind it; 1/1 when there is no
// other. Takes a coarse grid where that serves, since a line has as many pairs as the grid.
Fraction PlaceBehind(Fraction place, double limit);

}  // namespace dialect
