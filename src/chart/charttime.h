// Chart times and places as whole numbers, defined for every double.
#pragma once

#include <cstdint>

#include "platform/wintypes.h"

constexpr int32_t INT_MOST = 0x7FFFFFFF, INT_LEAST = -INT_MOST - 1;

constexpr int32_t ClampToInt(int64_t n) {
    return n > INT_MOST ? INT_MOST : n < INT_LEAST ? INT_LEAST : static_cast<int32_t>(n);
}

// Truncates toward zero and saturates; NaN gives 0.
constexpr int32_t TruncToInt(double d) {
    if (d != d) return 0;
    if (d >= 2147483647.0) return INT_MOST;
    if (d <= -2147483648.0) return INT_LEAST;
    return static_cast<int32_t>(d);
}

// A chart time, truncated; NaN gives the far end.
constexpr int32_t TruncTime(double dTime) {
    return dTime != dTime ? INT_MOST : TruncToInt(dTime);
}

// A chart time in whole milliseconds, halves rounded up.
constexpr int32_t RoundTime(double dTime) {
    const int32_t n = TruncTime(dTime);
    return n < INT_MOST && dTime - n >= 0.5 ? n + 1 : n;
}
