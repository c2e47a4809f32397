// Converts chart times and positions to integers; defined for every double.
#pragma once

#include <cstdint>

#include "platform/wintypes.h"

constexpr int32_t ClampToInt(int64_t n) {
    return n > INT32_MAX ? INT32_MAX : n < INT32_MIN ? INT32_MIN : static_cast<int32_t>(n);
}

// Truncates toward zero. Saturates; NaN gives 0.
constexpr int32_t TruncToInt(double d) {
    if (d != d) return 0;
    if (d >= 2147483647.0) return INT32_MAX;
    if (d <= -2147483648.0) return INT32_MIN;
    return static_cast<int32_t>(d);
}

// Truncates a chart time. NaN gives the largest value.
constexpr int32_t TruncTime(double dTime) {
    return dTime != dTime ? INT32_MAX : TruncToInt(dTime);
}

// Rounds a chart time to whole milliseconds, halves up.
constexpr int32_t RoundTime(double dTime) {
    const int32_t n = TruncTime(dTime);
    return n < INT32_MAX && dTime - n >= 0.5 ? n + 1 : n;
}
