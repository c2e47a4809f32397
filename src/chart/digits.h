// Digit values of characters, as tables, because the reader looks at every pair of a chart twice.
#pragma once

#include <array>
#include <cstdint>

// Values 0 to nBase - 1 for 0-9, A-Z and a-z; nOther for every other byte.
constexpr std::array<uint8_t, 256> MakeDigitTable(int nBase, uint8_t nOther) {
    std::array<uint8_t, 256> aTable{};
    for (auto& n : aTable) n = nOther;
    for (int i = 0; i < nBase; ++i) {
        if (i < 10) {
            aTable['0' + i] = static_cast<uint8_t>(i);
        } else {
            aTable['A' + i - 10] = aTable['a' + i - 10] = static_cast<uint8_t>(i);
        }
    }
    return aTable;
}

constexpr uint8_t NO_DIGIT = 255;
inline constexpr std::array<uint8_t, 256> DIGIT_36 = MakeDigitTable(36, 0);
inline constexpr std::array<uint8_t, 256> DIGIT_16 =
    MakeDigitTable(16, 0);  // first digit of a sound or image number
inline constexpr std::array<uint8_t, 256> DIGIT_HEX = MakeDigitTable(16, NO_DIGIT);

// The value of a pair. Both characters must exist.
inline int32_t PairToBase36(const char* p) {
    return DIGIT_36[static_cast<uint8_t>(p[0])] * 36 + DIGIT_36[static_cast<uint8_t>(p[1])];
}

inline int32_t PairToObjNo(const char* p) {
    return DIGIT_16[static_cast<uint8_t>(p[0])] * 36 + DIGIT_36[static_cast<uint8_t>(p[1])];
}

inline int32_t PairToHex(const char* p) {
    const int32_t nHigh = DIGIT_HEX[static_cast<uint8_t>(p[0])];
    const int32_t nLow = DIGIT_HEX[static_cast<uint8_t>(p[1])];
    if (nHigh == NO_DIGIT) return 0;
    return nLow == NO_DIGIT ? nHigh : nHigh * 16 + nLow;
}
