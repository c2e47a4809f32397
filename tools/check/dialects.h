// Commands and channels of other players that this one ignores.
#pragma once

#include <string_view>

#include "check/finding.h"

namespace check {

struct Foreign {
    Code code;
    Severity severity;
    const char* effect;  // what the player does instead, and what the author can do
};

// The meaning of a command by its word: the letters and digits after the `#`, with or without a two-digit
// number at the end. Null if no player knows it. *name: the command without the number.
const Foreign* FindForeignCommand(std::string_view word, const char** name);

// The meaning of a channel that makes no object, by its two characters; null if no player knows it.
const Foreign* FindForeignChannel(std::string_view channel);

}  // namespace check
