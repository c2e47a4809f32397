// What the channels of a chart of today mean.
#pragma once

#include <cstdint>

namespace dialect {

// The two characters of a channel as two digits of base 36, in either letter case: first * 36 + second.
constexpr int32_t Channel(int32_t first, int32_t second) {
    return first * 36 + second;
}

enum class ChannelKind : uint8_t {
    kUnknown,
    kBackground,  // 01
    kLength,      // 02
    kTempo,       // 03, two hexadecimal digits
    kPicture,     // 04, 06, 07
    kTempoRef,    // 08, the number of a #BPMxx
    kStop,        // 09, the number of a #STOPxx
    kNote,        // 11 to 19, 21 to 29
    kHidden,      // 31 to 39, 41 to 49
    kLong,        // 51 to 59, 61 to 69
    kMine,        // D1 to D9, E1 to E9
    kNoEffect,    // known to others: 0A, 97, 98, SC ...
};

constexpr int32_t kChannels = 36 * 36;
ChannelKind KindOf(int32_t channel);
// What a channel of kNoEffect does elsewhere, such as "a scroll speed"; null for the other kinds.
const char* EffectOf(int32_t channel);

}  // namespace dialect
